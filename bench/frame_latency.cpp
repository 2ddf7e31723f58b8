// From the entry of the input callback to the frame handed to the window server: ten fingers at
// 240 Hz with trails, on a real X server of 1920 by 1080.
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cmath>
#include <numbers>

#include "bench/bench_rig.h"
#include "bench/samples.h"
#include "overlay/hid_input.h"
#include "overlay/overlay_app_delegate.h"
#include "platform/digitizer/contact_tracker.h"
#include "platform/headless/headless_display.h"
#include "platform/headless/headless_system.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "platform/linux/x11/x11_window_server.h"

namespace skavlo::bench {
namespace {

constexpr int kFingers = 10;
constexpr double kRate = 240;
constexpr double kSeconds = 8;
constexpr double kSpeed = 500;  // points a second, a brisk swipe

class NoPictures final : public Rasterizer {
  public:
    void rasterizeImageFile(const std::string& /*path*/, int /*box*/, Completion done) override {
        done(nullptr);
    }
    void rasterizeText(const std::string& /*text*/, int /*box*/, double /*font*/,
                       Completion done) override {
        done(nullptr);
    }
};

// The real window, with a note of when a frame was handed over.
class TimedWindow final : public Window {
  public:
    TimedWindow(std::unique_ptr<Window> window, std::function<void()> committed)
        : window_(std::move(window)), committed_(std::move(committed)) {}
    [[nodiscard]] std::uint32_t contextId() const override { return window_->contextId(); }
    void setHidden(bool hidden) override { window_->setHidden(hidden); }
    void makeKeyAndVisible() override { window_->makeKeyAndVisible(); }
    [[nodiscard]] bool readyForFrame() const override { return window_->readyForFrame(); }
    Frame beginFrame() override { return window_->beginFrame(); }
    void commitFrame(std::span<const PixelRect> damage) override {
        window_->commitFrame(damage);
        committed_();
    }
    void requestRefresh() override { window_->requestRefresh(); }
    void setFrameHandlers(FrameHandlers handlers) override {
        window_->setFrameHandlers(std::move(handlers));
    }

  private:
    std::unique_ptr<Window> window_;
    std::function<void()> committed_;
};

class TimedServer final : public WindowServer {
  public:
    TimedServer(WindowServer& server, std::function<void()> committed)
        : server_(server), committed_(std::move(committed)) {}
    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override {
        return std::make_unique<TimedWindow>(server_.createWindow(frame, traits), committed_);
    }
    void registerWindowWithContextID(std::uint32_t contextId, double level) override {
        server_.registerWindowWithContextID(contextId, level);
    }

  private:
    WindowServer& server_;
    std::function<void()> committed_;
};

class Measurement {
  public:
    Measurement()
        : server_(orDie(X11WindowServer::connect(loop_))),
          timed_(*server_, [this] { committed(); }),
          hid_(clock_),
          tracker_([this] { return server_->screen().bounds().size; },
                   [this](const HidEvent& event) {
                       waiting_.push_back(clock_.mach_absolute_time());
                       hid_.deliver(event);
                   }),
          timer_(loop_.context()) {
        g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(
            OverlayServices{loop_, clock_, files_, lists_, notifications_, server_->screen(),
                            capture_, pictures_, SettingsDirectory("/")},
            timed_);
        g_skv_hidClient = &hid_;
        skv_enable_hid_callback();
        g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
    }
    ~Measurement() {
        skv_disable_hid_callback();
        g_skv_hidClient = nullptr;
        g_skv_overlayAppDelegate.reset();
    }
    Measurement(const Measurement&) = delete;
    Measurement& operator=(const Measurement&) = delete;

    Samples run() {
        next_ = std::chrono::steady_clock::now();
        schedule();
        loop_.run();
        return samples_;
    }

  private:
    void schedule() {
        next_ += std::chrono::nanoseconds(static_cast<long>(1e9 / kRate));
        timer_.expires_at(next_);
        timer_.async_wait([this](const asio::error_code& error) {
            if (!error) step();
        });
    }

    void step() {
        const double time = step_++ / kRate;
        if (time > kSeconds) {
            loop_.stop(0);
            return;
        }
        constexpr double kRadius = 70;
        for (int finger = 0; finger < kFingers; ++finger) {
            const double angle = kSpeed * time / kRadius + finger;
            const Point centre{200.0 + 380 * (finger % 5), finger < 5 ? 300.0 : 780.0};
            tracker_.motion({1, finger}, {centre.x + kRadius * std::cos(angle),
                                          centre.y + kRadius * std::sin(angle)});
        }
        tracker_.frame(clock_.mach_absolute_time());
        schedule();
    }

    // A frame shows every event that was delivered before it.
    void committed() {
        const MachTime now = clock_.mach_absolute_time();
        for (const MachTime entry : waiting_) samples_.add(static_cast<double>(now - entry) / 1e6);
        waiting_.clear();
    }

    AsioRunLoop loop_;
    MonotonicClock clock_;
    HeadlessFiles files_;
    PlistPropertyLists lists_;
    HeadlessNotifications notifications_{loop_};
    HeadlessCaptureState capture_;
    NoPictures pictures_;
    std::unique_ptr<X11WindowServer> server_;
    TimedServer timed_;
    HeadlessHidClient hid_;
    std::vector<MachTime> waiting_;
    ContactTracker tracker_;
    asio::steady_timer timer_;
    std::chrono::steady_clock::time_point next_;
    int step_ = 0;
    Samples samples_;
};

void measure(bool composited) {
    const rig::XServer server = startServer();
    server.enterEnvironment();
    std::optional<rig::Compositor> compositor;
    if (composited) compositor = orDie(rig::Compositor::start(server));
    Samples samples;
    {
        Measurement measurement;
        samples = measurement.run();
    }
    const std::string what = std::string("callback to frame, 10 fingers at 240 Hz, ") +
                             (composited ? "composited" : "no compositor");
    printRow(what + ", median", samples.median(), 0.2, "ms");
    printRow(what + ", p99", samples.quantile(0.99), 1.0, "ms");
    std::printf("  %zu events, minimum %.3f ms\n", samples.count(), samples.minimum());
}

}  // namespace
}  // namespace skavlo::bench

int main() {
    skavlo::bench::measure(true);
    skavlo::bench::measure(false);
}
