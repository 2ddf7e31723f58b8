// The doctor in real sessions.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <fstream>
#include <sstream>

#include "tests/e2e/capture/cast_rig.h"
#include "tools/rig/x_server.h"

namespace skavlo {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Doctor : public CastRig {
  protected:
    struct Visit {
        int status = -1;
        std::string output;
    };
    // With this environment over one without a session.
    Visit visit(const std::vector<std::string>& arguments,
                const std::vector<std::string>& environment = {}) {
        std::vector<std::string> all{"DISPLAY",         "XAUTHORITY", "WAYLAND_DISPLAY",
                                     "XDG_RUNTIME_DIR", "LC_ALL=C",   "PIPEWIRE_RUNTIME_DIR",
                                     "PIPEWIRE_REMOTE"};
        for (const std::string& variable : environment) {
            std::erase_if(all, [&](const std::string& other) {
                return other.substr(0, other.find('=')) == variable.substr(0, variable.find('='));
            });
            all.push_back(variable);
        }
        const std::filesystem::path path = directory / "visit";
        const UniqueDescriptor file(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        std::vector<std::string> command{SKAVLO_DOCTOR};
        command.insert(command.end(), arguments.begin(), arguments.end());
        auto child = rig::Child::start({command, all, {}, file.get()});
        EXPECT_TRUE(child) << child.error().message;
        const auto status = child->wait(rig::Deadline(std::chrono::seconds(40)));
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return {status && WIFEXITED(*status) ? WEXITSTATUS(*status) : -1, text.str()};
    }
    void run(const std::string& command, const rig::XServer& x) const {
        auto child = rig::Child::start({{"sh", "-c", command}, x.environment(), {}, -1});
        ASSERT_TRUE(child) << child.error().message;
        ASSERT_EQ(child->wait(rig::Deadline(kPatience)), 0) << command;
    }
    void startCompositor(const std::vector<std::string>& arguments, const std::string& socket) {
        if (auto found = rig::Child::start({{arguments[0], "--version"}, {}, {}, -1}); !found)
            GTEST_SKIP() << found.error().message;
        ASSERT_NO_FATAL_FAILURE(startBus());
        std::vector<std::string> command{"env", "WLR_BACKENDS=headless",
                                         "WLR_LIBINPUT_NO_DEVICES=1", "WLR_RENDERER=pixman"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        compositor = startInSession(command);
        ASSERT_NO_FATAL_FAILURE(waitForFile(directory / socket));
    }
    void TearDown() override {
        compositor.reset();
        CastRig::TearDown();
    }
    std::optional<rig::Child> compositor;
};

TEST_F(Doctor, WithoutADisplayFails) {
    const Visit here = visit({});
    EXPECT_EQ(here.status, 1);
    EXPECT_THAT(here.output, StartsWith("fail  display   no display server can be used → "));
}

// The tests' packages have a loader for each.
TEST_F(Doctor, TriesEveryKindOfImage) {
    const Visit here = visit({});
    for (const char* kind : {"PNG", "JPEG", "GIF", "BMP", "TIFF", "WebP", "SVG", "AVIF", "HEIC"}) {
        EXPECT_THAT(here.output,
                    HasSubstr(std::string("\nok    images    ") + kind + " can be shown\n"));
    }
}

TEST_F(Doctor, SpeaksChinese) {
    const Visit here = visit({}, {"LC_ALL=zh_CN.UTF-8"});
    EXPECT_EQ(here.status, 1);
    EXPECT_THAT(here.output, StartsWith("fail  display   找不到可用的显示服务器 → "));
}

TEST_F(Doctor, OnX11EverythingIsThere) {
    auto x = rig::XServer::start({.sizes = {{640, 480}}});
    ASSERT_TRUE(x) << x.error().message;
    const Visit here = visit({}, x->environment());
    EXPECT_THAT(here.output, StartsWith("ok    display   X11 session"));
    EXPECT_THAT(here.output, Not(HasSubstr("layers")));
    EXPECT_THAT(here.output, HasSubstr("\nok    source    "));
    EXPECT_THAT(here.output,
                HasSubstr("\nok    capture   programs that read the screen from the X server"));
    EXPECT_THAT(here.output, HasSubstr("\nwarn  capture   PipeWire cannot be reached"));
}

TEST_F(Doctor, OnX11WithoutRecordSaysWhatIsMissing) {
    auto x = rig::XServer::start({.sizes = {{640, 480}}, .withoutExtensions = {"RECORD"}});
    ASSERT_TRUE(x) << x.error().message;
    EXPECT_THAT(visit({}, x->environment()).output,
                HasSubstr("\nwarn  capture   programs that read the screen from the X server go "
                          "unnoticed: the X server does not offer the extension RECORD → "));
}

TEST_F(Doctor, OnX11TellsOfMirroredOutputs) {
    auto x = rig::XServer::start({.sizes = {{640, 480}}});
    ASSERT_TRUE(x) << x.error().message;
    EXPECT_THAT(visit({}, x->environment()).output, Not(HasSubstr("mirrored")));
    ASSERT_NO_FATAL_FAILURE(run("xrandr --addmode DUMMY1 640x480", *x));
    ASSERT_NO_FATAL_FAILURE(run("xrandr --output DUMMY1 --mode 640x480 --same-as DUMMY0", *x));
    EXPECT_THAT(visit({}, x->environment()).output,
                HasSubstr("\nok    capture   outputs are mirrored, which counts as a capture"));
}

// As the overlay chooses it.
TEST_F(Doctor, OnX11TellsTheOutputThatTheTouchscreenIsMappedTo) {
    auto x = rig::XServer::start({.sizes = {{640, 480}}});
    ASSERT_TRUE(x) << x.error().message;
    ASSERT_NO_FATAL_FAILURE(run("xrandr --addmode DUMMY1 640x480", *x));
    ASSERT_NO_FATAL_FAILURE(run(
        "xrandr --output DUMMY1 --mode 640x480 --right-of DUMMY0 --output DUMMY0 --primary", *x));
    const std::string line = "\nok    output    the markers lie on the output ";
    EXPECT_THAT(visit({}, x->environment()).output, HasSubstr(line + "DUMMY0\n"));
    ASSERT_NO_FATAL_FAILURE(run("xinput map-to-output touch DUMMY1", *x));
    EXPECT_THAT(visit({}, x->environment()).output, HasSubstr(line + "DUMMY1\n"));
}

TEST_F(Doctor, SeesPipeWire) {
    startServer();
    ASSERT_NO_FATAL_FAILURE(waitForFile(socketPath()));
    openSource();
    ASSERT_TRUE(runUntil([&] { return source->connected(); }));
    EXPECT_THAT(visit({}, {"XDG_RUNTIME_DIR=" + directory.string()}).output,
                HasSubstr("\nok    capture   casts of the screen through PipeWire"));
}

TEST_F(Doctor, SeesLayerShellOnSway) {
    const std::filesystem::path configuration = directory / "sway.conf";
    std::ofstream(configuration) << "xwayland disable\n";
    startCompositor({"sway", "-c", configuration}, "wayland-1");
    if (IsSkipped() || HasFatalFailure()) return;
    const Visit here =
        visit({}, {"XDG_RUNTIME_DIR=" + directory.string(), "WAYLAND_DISPLAY=wayland-1"});
    EXPECT_THAT(here.output, StartsWith("ok    display   Wayland session: the markers lie in layer "
                                        "shell's overlay layer\n"
                                        "ok    layers    the compositor offers layer shell\n"
                                        "ok    quirks    the compositor sway has no known"));
}

TEST_F(Doctor, SeesThatMutterHasNone) {
    startCompositor(
        {"mutter", "--headless", "--virtual-monitor", "640x480", "--wayland", "--no-x11"},
        "wayland-0");
    if (IsSkipped() || HasFatalFailure()) return;
    const Visit here =
        visit({}, {"XDG_RUNTIME_DIR=" + directory.string(), "WAYLAND_DISPLAY=wayland-0"});
    EXPECT_EQ(here.status, 1);
    EXPECT_THAT(here.output, HasSubstr("enable XWayland (DISPLAY)"));
    EXPECT_THAT(here.output, HasSubstr("\nwarn  layers    the compositor offers no layer shell"));
    EXPECT_THAT(here.output, HasSubstr("quirks    "));
}

TEST_F(Doctor, JsonIsOneValidObject) {
    const std::filesystem::path path = directory / "report.json";
    std::ofstream(path) << visit({"--json"}).output;
    auto python = rig::Child::start(
        {{"python3", "-c",
          "import json, sys; d = json.load(open(sys.argv[1])); assert d['status'] == 'fail'; "
          "assert {f['check'] for f in d['findings']} >= {'display', 'touch', 'source', 'folder', "
          "'helper', 'capture', 'fonts', 'images'}; "
          "assert all(f['level'] in ('ok', 'warn', 'fail') and f['text'] for f in d['findings'])",
          path},
         {},
         {},
         -1});
    ASSERT_TRUE(python) << python.error().message;
    EXPECT_EQ(python->wait(rig::Deadline(kPatience)), 0);
}

TEST_F(Doctor, WrongArgumentsAreRefused) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--xml"}, {"--json", "--json"}, {"json"}, {""}}) {
        const Visit here = visit(arguments);
        EXPECT_EQ(here.status, 2) << arguments[0];
        EXPECT_THAT(here.output, StartsWith("Usage: "));
    }
    EXPECT_EQ(visit({"--help"}).status, 0);
    EXPECT_EQ(visit({"--version"}).status, 0);
}

}  // namespace
}  // namespace skavlo
