// Which source is chosen, with a real Xorg beside mocked devices.
#include "platform/linux/input/input_selector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tests/unit/input/support/event_log.h"
#include "tests/unit/input/support/mock_devices.h"
#include "tests/unit/input/support/x_server.h"

namespace skavlo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

class InputSelectorTest : public ::testing::Test {
  protected:
    void start(bool touchscreenOfX) {
        ASSERT_TRUE(umockdev_in_mock_environment()) << "runs under umockdev-wrapper only";
        std::string reason;
        server = XServer::start(touchscreenOfX, reason);
        if (!server) GTEST_SKIP() << reason;
        InputOptions options;
        options.layout = [] {
            OutputLayout layout;
            layout.desktop = {XServer::kWidth, XServer::kHeight};
            return layout;
        };
        options.connectX = [this] { return connection = server->connect(); };
        selector = std::make_unique<InputSelector>(context, std::move(options));
        selector->setSourceHandler([this](InputSourceKind kind) { chosen.push_back(kind); });
        selector->registerEventCallback(&EventLog::callback, &log, nullptr);
        selector->scheduleWithMainRunLoop();
        settle();
    }
    void settle() {
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }
    bool waitFor(const std::function<bool()>& seen) { return runUntil(context, seen); }
    bool waitForSource(InputSourceKind kind) {
        return waitFor([&] { return selector->source() == kind; });
    }

    asio::io_context context{1};
    MockBed bed;
    std::unique_ptr<XServer> server;
    xcb_connection_t* connection = nullptr;
    EventLog log;
    std::vector<InputSourceKind> chosen;
    std::unique_ptr<InputSelector> selector;
};

TEST_F(InputSelectorTest, TouchscreenReplacesThePointerAndBack) {
    start(false);
    if (IsSkipped() || HasFatalFailure()) return;
    server->button(1, true);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    auto screen = std::make_unique<MockDevice>(bed, touchscreen(1));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    EXPECT_EQ(log.ended(), 1u) << "the pointer's contact ends with its source";
    EXPECT_EQ(log.last().touch, 0);
    server->button(1, false);
    server->button(1, true);
    server->button(1, false);
    screen->down(0, 10, 10);
    screen->sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    EXPECT_THAT(log.last().children, SizeIs(1));
    screen.reset();
    ASSERT_TRUE(waitForSource(InputSourceKind::pointer));
    EXPECT_EQ(log.ended(), 2u);
    settle();
    server->button(1, true);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    EXPECT_THAT(chosen, ElementsAre(InputSourceKind::pointer, InputSourceKind::libinput,
                                    InputSourceKind::pointer));
}

TEST_F(InputSelectorTest, FingerIsNotShownByTheServerToo) {
    start(true);
    if (IsSkipped() || HasFatalFailure()) return;
    EXPECT_EQ(selector->source(), InputSourceKind::xinput2);
    server->touchBegin(1, 100, 100);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    MockDevice screen(bed, touchscreen(1));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    EXPECT_EQ(log.ended(), 1u);
    settle();
    server->touchUpdate(1, 5000, 5000);
    server->touchEnd(1, 5000, 5000);
    server->touchBegin(2, 9000, 100);
    screen.down(0, 10, 10);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    screen.up(0);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.ended() == 2; }));
    EXPECT_THAT(log.events, SizeIs(4)) << "two of each source";
}

TEST_F(InputSelectorTest, ServersPlacementOfTheSameDeviceIsTaken) {
    start(true);
    if (IsSkipped() || HasFatalFailure()) return;
    MockDevice screen(bed, touchscreen(1));
    ASSERT_TRUE(waitForSource(InputSourceKind::libinput));
    server->setTransformation("touchscreen", {0.5F, 0, 0.5F, 0, 1, 0, 0, 0, 1});
    server->setNode("touchscreen", "/dev/input/event1");
    // Its word of that is written; the loop takes it in before the touch.
    context.restart();
    ASSERT_GT(context.poll(), 0u);
    screen.down(0, 500, 250);
    screen.sync();
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    const HidEvent& child = log.last().children.at(0);
    EXPECT_NEAR(child.x * XServer::kHeight, 0.75 * XServer::kWidth, 0.5);
    EXPECT_NEAR(child.y * XServer::kWidth, 0.5 * XServer::kHeight, 0.5);
}

}  // namespace
}  // namespace skavlo::test
