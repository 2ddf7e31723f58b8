#include <gmock/gmock.h>

#include "overlay_fixture.h"

namespace skavlo {
namespace {

using testing::ElementsAre;

// Writes down what is asked of it, in order.
class RecordingServer final : public WindowServer {
  public:
    RecordingServer(HeadlessHidClient& hid, std::vector<std::string>& log) : hid_(hid), log_(log) {}

    std::unique_ptr<Window> createWindow(Rect frame, const WindowTraits& traits) override {
        log_.push_back(hid_.registered() ? "create, input enabled" : "create");
        frameAsked = frame;
        traitsAsked = traits;
        return std::make_unique<RecordingWindow>(log_, contextIdOfWindow);
    }
    void registerWindowWithContextID(std::uint32_t contextId, double level) override {
        log_.push_back("register " + std::to_string(contextId) + " at " + std::to_string(level));
    }

    Rect frameAsked;
    WindowTraits traitsAsked{};
    std::uint32_t contextIdOfWindow = 77;

  private:
    class RecordingWindow final : public Window {
      public:
        RecordingWindow(std::vector<std::string>& log, std::uint32_t contextId)
            : log_(log), contextId_(contextId) {}
        [[nodiscard]] std::uint32_t contextId() const override { return contextId_; }
        void setHidden(bool hidden) override { log_.push_back(hidden ? "hide" : "unhide"); }
        void makeKeyAndVisible() override { log_.push_back("make key and visible"); }
        [[nodiscard]] bool readyForFrame() const override { return false; }
        Frame beginFrame() override { return {}; }
        void commitFrame(std::span<const PixelRect> /*damage*/) override {}
        void requestRefresh() override {}
        void setFrameHandlers(FrameHandlers /*handlers*/) override {}

      private:
        std::vector<std::string>& log_;
        std::uint32_t contextId_;
    };

    HeadlessHidClient& hid_;
    std::vector<std::string>& log_;
};

class OverlayLaunch : public OverlayFixture {
  protected:
    std::vector<std::string> log;
    RecordingServer server{hidClient, log};
};

TEST_F(OverlayLaunch, TheCanvasLoadsBeforeTheWindowExistsAndRegistrationComesLast) {
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(services(), server);
    g_skv_hidClient = &hidClient;
    EXPECT_TRUE(g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions());
    EXPECT_THAT(log, ElementsAre("create, input enabled", "unhide", "make key and visible",
                                 "register 77 at 10000010.000000"));
}

TEST_F(OverlayLaunch, AContextIdOfZeroIsPassedAsItIs) {
    server.contextIdOfWindow = 0;
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(services(), server);
    g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
    EXPECT_EQ(log.back(), "register 0 at 10000010.000000");
}

TEST_F(OverlayLaunch, TheWindowCoversTheMainScreenAndIsSecureAndIgnoredByHitTests) {
    g_skv_overlayAppDelegate = std::make_unique<OverlayAppDelegate>(services(), server);
    g_skv_overlayAppDelegate->applicationDidFinishLaunchingWithOptions();
    EXPECT_EQ(server.frameAsked, (Rect{{0, 0}, {390, 844}}));
    EXPECT_TRUE(server.traitsAsked.isSystemWindow);
    EXPECT_FALSE(server.traitsAsked.isWindowServerHostingManaged);
    EXPECT_TRUE(server.traitsAsked.ignoresHitTest);
    EXPECT_TRUE(server.traitsAsked.isSecure);
    EXPECT_TRUE(server.traitsAsked.shouldCreateContextAsSecure);
    auto& window = *g_skv_overlayAppDelegate->window;
    EXPECT_EQ(window.rootViewController, g_skv_overlayAppDelegate->canvasVC.get());
    EXPECT_EQ(window.windowLevel, 10000010.0);
    EXPECT_EQ(window.backgroundColor.alpha, 0);
}

}  // namespace
}  // namespace skavlo
