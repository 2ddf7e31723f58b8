#include "tests/e2e/wayland/wayland_rig.h"

#include <fcntl.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "tools/rig/screenshot.h"

namespace skavlo {

namespace {

Result<Bitmap> readPixmap(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string kind;
    Bitmap result{{0, 0}, {}};
    int most = 0;
    file >> kind >> result.size.width >> result.size.height >> most;
    file.get();
    if (!file || kind != "P6" || most != 255) return Error{"grim wrote no picture"};
    result.pixels.resize(static_cast<std::size_t>(result.size.width) *
                         static_cast<std::size_t>(result.size.height));
    for (std::uint32_t& pixel : result.pixels) {
        unsigned char bytes[3];
        file.read(reinterpret_cast<char*>(bytes), sizeof bytes);
        pixel = 0xff000000U | static_cast<unsigned>(bytes[0]) << 16U |
                static_cast<unsigned>(bytes[1]) << 8U | bytes[2];
    }
    if (!file) return Error{"grim's picture ends early"};
    return result;
}

struct Bounds {
    int left = INT32_MAX;
    int top = INT32_MAX;
    int right = -1;
    int bottom = -1;
};

Bounds boundsOfMarker(const Bitmap& picture) {
    Bounds bounds;
    const std::uint32_t background = picture.pixels.back();
    for (int y = 0; y < picture.size.height; ++y) {
        for (int x = 0; x < picture.size.width; ++x) {
            if (rig::pixelAt(picture, {x, y}) == background) continue;
            bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x),
                      std::max(bounds.bottom, y)};
        }
    }
    return bounds;
}

// Whether there is a notification's socket whose name begins like this.
bool registered(const std::string& beginning) {
    std::error_code none;
    const std::filesystem::directory_iterator sockets(SKAVLO_RUN_DIRECTORY "/notify", none);
    return std::any_of(begin(sockets), end(sockets), [&](const auto& entry) {
        return entry.path().filename().string().starts_with(beginning + ".");
    });
}

}  // namespace

void WaylandRig::startSession(const WaylandSessionOptions& options) {
    if (const auto reason = whyNotRunnable(options.command.front())) GTEST_SKIP() << *reason;
    auto session = WaylandSession::start(options);
    ASSERT_TRUE(session) << session.error().message;
    session_ = std::move(*session);
}

void WaylandRig::startDemandingSession(const std::string& program,
                                       const WaylandSessionOptions& options) {
    if (const auto reason = whyNotRunnable(program)) GTEST_SKIP() << *reason;
    auto session = WaylandSession::start(options);
    if (!session) GTEST_SKIP() << session.error().message;
    session_ = std::move(*session);
}

void WaylandRig::startClient() {
    auto client = WaylandClient::connect(session_->socket());
    ASSERT_TRUE(client) << client.error().message;
    client_ = std::move(*client);
    ASSERT_TRUE(client_->showFullScreen(kBackground, rig::Deadline(kPatience)));
}

void WaylandRig::mockDevices() {
    bed_ = std::make_unique<test::MockBed>();
    ASSERT_TRUE(umockdev_in_mock_environment()) << "runs under umockdev-wrapper only";
}

void WaylandRig::plugTouchscreen(const std::vector<std::string>& properties) {
    ASSERT_NO_FATAL_FAILURE(mockDevices());
    test::MockDescription description = test::touchscreen(1);
    description.properties.insert(description.properties.end(), properties.begin(),
                                  properties.end());
    screen_ = std::make_unique<test::MockDevice>(*bed_, description);
}

std::vector<std::string> WaylandRig::rootEnvironment(
    const std::vector<std::string>& environment) const {
    auto all = session_->environment();
    if (bed_) {
        const char* preloaded = std::getenv("LD_PRELOAD");
        all.push_back(std::string("LD_PRELOAD=") + SKAVLO_MOCK_HOOKS + ":" +
                      (preloaded ? preloaded : ""));
    }
    for (const std::string& variable : environment) {
        const std::string name = variable.substr(0, variable.find('='));
        std::erase_if(all, [&](const std::string& other) {
            return other.substr(0, other.find('=')) == name;
        });
        all.push_back(variable);
    }
    return all;
}

void WaylandRig::startOverlay(const std::vector<std::string>& environment) {
    const rig::FileDescriptor output(
        open(session_->file("overlay").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    auto overlay = rig::Child::start(
        {{SKAVLO_EXECUTABLE, "-hud"}, rootEnvironment(environment), {}, output.get()});
    ASSERT_TRUE(overlay) << overlay.error().message;
    overlay_ = std::move(*overlay);
    // The last thing before its loop, and so after its touchscreen was opened.
    const std::string registration = "com.oxbrel.skavlo.reload." + std::to_string(overlay_->pid());
    constexpr std::chrono::milliseconds kLookAgain(5);
    const rig::Deadline deadline(kPatience);
    while (!registered(registration)) {
        ASSERT_FALSE(deadline.passed()) << "the overlay does not start\n" << complaints();
        const auto ended =
            rig::waitReadable({overlay_->endDescriptor()}, rig::Deadline(kLookAgain));
        ASSERT_FALSE(ended) << "the overlay ended\n" << complaints();
    }
}

std::string WaylandRig::complaints() const {
    return contents(session_->file("overlay")).value_or("");
}

void WaylandRig::waitUntilOverlayIs(char state) {
    const std::string file = "/proc/" + std::to_string(overlay_->pid()) + "/stat";
    const std::string wanted{')', ' ', state, ' '};
    const rig::Deadline deadline(kPatience);
    while (contents(file).value_or("").find(wanted) == std::string::npos) {
        ASSERT_FALSE(deadline.passed()) << "the overlay is never in state " << state;
    }
}

void WaylandRig::waitUntilOverlayHeard(WaylandClient& other) {
    // A compositor writes to one client after the other, so behind the second answer all of them
    // have what came before the first.
    other.roundTrip();
    other.roundTrip();
    ASSERT_NO_FATAL_FAILURE(waitUntilOverlayIs('S'));
}

void WaylandRig::waitUntilOverlayHeardOf(std::size_t outputs, WaylandClient& other) {
    ASSERT_TRUE(
        other.waitUntil([&] { return other.outputs() == outputs; }, rig::Deadline(kPatience)))
        << "there are " << other.outputs() << " outputs instead of " << outputs;
    ASSERT_NO_FATAL_FAILURE(waitUntilOverlayHeard(other));
}

// The kernel hands out whole events only. The terminal that stands in for it passes bytes on piece
// by piece, so the overlay stands still until all have arrived.
void WaylandRig::sync() {
    overlay_->signal(SIGSTOP);
    ASSERT_NO_FATAL_FAILURE(waitUntilOverlayIs('T'));
    screen_->sync();
    overlay_->signal(SIGCONT);
}

void WaylandRig::touchAt(double x, double y, int slot) {
    screen_->down(slot, static_cast<int>(std::lround(x * 1000)),
                  static_cast<int>(std::lround(y * 500)));
    sync();
}

void WaylandRig::moveTo(double x, double y, int slot) {
    screen_->move(slot, static_cast<int>(std::lround(x * 1000)),
                  static_cast<int>(std::lround(y * 500)));
    sync();
}

void WaylandRig::lift(int slot) {
    screen_->up(slot);
    sync();
}

void WaylandRig::moveToAndFro() {
    there_ = !there_;
    moveTo(there_ ? 0.26 : 0.25, 0.5);
}

void WaylandRig::moveUntilShown(bool shown, const std::function<bool()>& shows) {
    const rig::Deadline deadline(kPatience);
    while (shows() != shown) {
        ASSERT_FALSE(deadline.passed())
            << (shown ? "no marker is shown\n" : "the marker stays\n") << complaints();
        moveToAndFro();
    }
}

void WaylandRig::expectHidden(const std::function<bool()>& shows) {
    // A marker would be there within the first of these.
    constexpr int kPictures = 20;
    for (int i = 0; i < kPictures; ++i) {
        moveToAndFro();
        ASSERT_FALSE(shows()) << "a marker is shown";
    }
}

Bitmap WaylandRig::capture(const std::string& output) {
    const std::string path = session_->file("picture");
    std::vector<std::string> command{"grim", "-t", "ppm"};
    if (!output.empty()) command.insert(command.end(), {"-o", output});
    command.push_back(path);
    if (const auto done = session_->run(command); !done) {
        // An output that comes or goes while grim looks at it is no picture.
        return {{1, 1}, {0}};
    }
    auto picture = readPixmap(path);
    if (!picture) {
        ADD_FAILURE() << picture.error().message;
        return {{1, 1}, {0}};
    }
    return std::move(*picture);
}

Bitmap WaylandRig::captureUntil(const std::function<bool(const Bitmap&)>& wanted, const char* what,
                                const std::string& output) {
    const rig::Deadline deadline(kPatience);
    while (true) {
        if (client_) client_->roundTrip();
        Bitmap picture = capture(output);
        if (wanted(picture)) return picture;
        if (deadline.passed() || !overlay_->running()) {
            ADD_FAILURE() << "never seen: " << what << "; the last picture had "
                          << picture.size.width << " x " << picture.size.height
                          << " pixels with a marker at " << centreOfMarker(picture).x << ","
                          << centreOfMarker(picture).y << ", " << widthOfMarker(picture)
                          << " wide\n"
                          << complaints();
            return picture;
        }
    }
}

int WaylandRig::endStatus() {
    const auto status = overlay_->wait(rig::Deadline(kPatience));
    EXPECT_TRUE(status) << "the overlay did not end";
    return status.value_or(-1);
}

std::uint32_t WaylandRig::at(const Bitmap& picture, int x, int y) {
    return rig::pixelAt(picture, {x, y});
}

bool WaylandRig::isClean(const Bitmap& picture) {
    return boundsOfMarker(picture).right < 0;
}

Point WaylandRig::centreOfMarker(const Bitmap& picture) {
    const Bounds bounds = boundsOfMarker(picture);
    if (bounds.right < 0) return {-1, -1};
    return {(bounds.left + bounds.right + 1) / 2.0, (bounds.top + bounds.bottom + 1) / 2.0};
}

int WaylandRig::widthOfMarker(const Bitmap& picture) {
    const Bounds bounds = boundsOfMarker(picture);
    return bounds.right < 0 ? 0 : bounds.right - bounds.left + 1;
}

std::function<bool(const Bitmap&)> WaylandRig::markerAt(Point place, int width) {
    return [=](const Bitmap& picture) {
        // A pixel at either edge may be covered too little to be told from the background, or a
        // little at all because the middle lies between two.
        constexpr double kTolerance = 1;
        const Point centre = centreOfMarker(picture);
        return std::abs(centre.x - place.x) <= kTolerance &&
               std::abs(centre.y - place.y) <= kTolerance &&
               std::abs(widthOfMarker(picture) - width) <= 2 * kTolerance;
    };
}

}  // namespace skavlo
