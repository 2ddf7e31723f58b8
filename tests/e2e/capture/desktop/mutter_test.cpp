// A real compositor's cast of its screen.
#include <csignal>

#include "tests/e2e/capture/cast_rig.h"

namespace skavlo {
namespace {

class MutterCast : public CastRig {
  protected:
    void SetUp() override {
        if (auto mutter = rig::Child::start({{"mutter", "--version"}, {}, {}, -1}); !mutter)
            GTEST_SKIP() << mutter.error().message;
        ASSERT_NO_FATAL_FAILURE(CastRig::SetUp());
        ASSERT_NO_FATAL_FAILURE(startBus());
        startServer();
        openSource();
        ASSERT_TRUE(runUntil([&] { return source->connected(); })) << "no PipeWire";
        startSessionManager();
        compositor = startInSession(
            {"mutter", "--headless", "--virtual-monitor", "1280x800", "--wayland", "--no-x11"});
        ASSERT_NO_FATAL_FAILURE(waitForFile(directory / "wayland-0"));
    }
    void TearDown() override {
        recorder.reset();
        compositor.reset();
        if (!directory.empty()) CastRig::TearDown();
    }

    std::optional<rig::Child> compositor;
    std::optional<rig::Child> recorder;
};

TEST_F(MutterCast, CapturesWhileARecorderReceivesIt) {
    auto [cast, node] = startAndRead({SKAVLO_MUTTER_CAST});
    ASSERT_FALSE(node.empty());
    runPosted();
    EXPECT_FALSE(source->captures());
    recorder = startInSession({SKAVLO_CAST_PEER, "consume", node});
    EXPECT_TRUE(waitFor(true));
    recorder->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
}

TEST_F(MutterCast, EndsWithTheCompositor) {
    auto [cast, node] = startAndRead({SKAVLO_MUTTER_CAST});
    recorder = startInSession({SKAVLO_CAST_PEER, "consume", node});
    EXPECT_TRUE(waitFor(true));
    compositor->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
}

}  // namespace
}  // namespace skavlo
