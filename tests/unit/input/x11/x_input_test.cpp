// Touches and pointer of a real Xorg.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/linux/input/input_selector.h"
#include "tests/unit/input/support/event_log.h"
#include "tests/unit/input/support/x_server.h"

namespace skavlo::test {
namespace {

using ::testing::SizeIs;

constexpr double kHalfPixel = 0.5;
constexpr double kAxisSteps = 65536;

OutputLayout wholeScreen() {
    OutputLayout layout;
    layout.outputs.push_back(
        {.name = "DUMMY0", .rect = {0, 0, XServer::kWidth, XServer::kHeight}, .primary = true});
    layout.desktop = {XServer::kWidth, XServer::kHeight};
    return layout;
}

class XInputTest : public ::testing::Test {
  protected:
    void startServer(bool touchscreen) {
        std::string reason;
        server = XServer::start(touchscreen, reason);
        if (!server) GTEST_SKIP() << reason;
        InputOptions options;
        options.layout = [this] { return layout; };
        options.connectX = [this] { return connection = server->connect(); };
        options.udev = false;
        selector = std::make_unique<InputSelector>(context, std::move(options));
        selector->scheduleWithMainRunLoop();
        selector->registerEventCallback(&EventLog::callback, &log, nullptr);
        settle();
    }

    // What the selector has asked the server for holds from here on.
    void settle() {
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }

    bool waitFor(const std::function<bool()>& seen) { return runUntil(context, seen); }
    bool waitForEvents(std::size_t count) {
        return waitFor([&] { return log.events.size() >= count; });
    }
    // Handles what has arrived, waits for nothing; the number of wake-ups.
    std::size_t handleArrived() {
        context.restart();
        return context.poll();
    }
    // The place a reader finds, in points.
    Point place(const HidEvent& child) const {
        const Size size = mainSizeInPoints(layout);
        if (child.x >= 0 && child.x <= 2 && child.y >= 0 && child.y <= 2)
            return {child.x * std::min(size.width, size.height),
                    child.y * std::max(size.width, size.height)};
        return {child.x, child.y};
    }
    void expectAt(const HidEvent& child, double x, double y) const {
        EXPECT_NEAR(place(child).x, x, kHalfPixel / layout.scale);
        EXPECT_NEAR(place(child).y, y, kHalfPixel / layout.scale);
    }

    asio::io_context context{1};
    OutputLayout layout = wholeScreen();
    std::unique_ptr<XServer> server;
    xcb_connection_t* connection = nullptr;  // the selector's
    EventLog log;
    std::unique_ptr<InputSelector> selector;
};

class XTouchTest : public XInputTest {
  protected:
    void SetUp() override { startServer(true); }
};

class XPointerTest : public XInputTest {
  protected:
    void SetUp() override { startServer(false); }
};

TEST_F(XTouchTest, IsChosenWhenTheServerHasATouchscreen) {
    EXPECT_EQ(selector->source(), InputSourceKind::xinput2);
}

TEST_F(XTouchTest, EveryEventComesOnceAndAtItsPlace) {
    server->touchBegin(1, kAxisSteps / 4, kAxisSteps / 2);
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), XServer::kWidth / 4.0, XServer::kHeight / 2.0);
    EXPECT_EQ(log.last().touch, 1);
    server->touchUpdate(1, 0, kAxisSteps - 1);
    ASSERT_TRUE(waitForEvents(2));
    expectAt(log.last().children.at(0), 0, XServer::kHeight);
    server->touchEnd(1, 0, kAxisSteps - 1);
    ASSERT_TRUE(waitForEvents(3));
    EXPECT_EQ(log.last().children.at(0).touch, 0);
    EXPECT_EQ(log.last().touch, 0);
    handleArrived();
    EXPECT_THAT(log.events, SizeIs(3));
}

TEST_F(XTouchTest, AFingerThatRestsEndsWhenItsPlaceIsAnotherOneAndBeginsAnewWhenItMoves) {
    server->touchBegin(1, kAxisSteps / 4, kAxisSteps / 2);
    ASSERT_TRUE(waitForEvents(1));
    selector->layoutChanged();
    EXPECT_EQ(log.touching(), 1U) << "nothing has changed";
    layout.scale = 2;
    selector->layoutChanged();
    EXPECT_EQ(log.touching(), 0U);
    server->touchUpdate(1, kAxisSteps / 2, kAxisSteps / 2);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    expectAt(log.last().children.at(0), XServer::kWidth / 4.0, XServer::kHeight / 4.0);
}

TEST_F(XTouchTest, TenFingersAtOnce) {
    for (std::uint32_t id = 1; id <= 10; ++id) server->touchBegin(id, 1000.0 * id, 30000);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 10; }));
    for (std::uint32_t id = 1; id <= 10; ++id) server->touchEnd(id, 1000.0 * id, 30000);
    ASSERT_TRUE(waitFor([&] { return log.ended() == 10; }));
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(XTouchTest, CoordinateTransformationIsAppliedOnce) {
    server->setTransformation("touchscreen", {0.5F, 0, 0.5F, 0, 1, 0, 0, 0, 1});
    server->touchBegin(1, kAxisSteps / 4, kAxisSteps / 2);
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), XServer::kWidth * 0.625, XServer::kHeight / 2.0);
}

TEST_F(XTouchTest, PlaceIsInPointsOfTheMainOutput) {
    layout.outputs[0].rect = {640, 0, 640, 720};
    layout.scale = 2;
    selector->layoutChanged();
    server->touchBegin(1, kAxisSteps * 0.75, kAxisSteps / 2);
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 160, 180);
}

TEST_F(XTouchTest, DisabledMidTouchEndsTheContactAndChoosesThePointer) {
    server->touchBegin(1, 100, 100);
    server->touchBegin(2, 5000, 100);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 2; }));
    server->setEnabled("touchscreen", false);
    ASSERT_TRUE(waitFor([&] { return selector->source() == InputSourceKind::pointer; }));
    EXPECT_EQ(log.ended(), 2u);
    EXPECT_EQ(log.last().touch, 0);
    server->setEnabled("touchscreen", true);
    ASSERT_TRUE(waitFor([&] { return selector->source() == InputSourceKind::xinput2; }));
}

TEST_F(XTouchTest, ServerGoneEndsTheContacts) {
    server->touchBegin(1, 100, 100);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    server->kill();
    ASSERT_TRUE(waitFor([&] { return selector->source() == InputSourceKind::none; }));
    EXPECT_EQ(log.ended(), 1u);
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(XTouchTest, StampsLieBetweenSendingAndReceiving) {
    constexpr MachTime kServerClockStep = 2'000'000;  // milliseconds of a coarse clock
    const MachTime before = selector->mach_absolute_time();
    server->touchBegin(1, 100, 100);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_GE(log.last().timeStamp + kServerClockStep, before);
    EXPECT_LE(log.last().timeStamp, selector->mach_absolute_time());
}

TEST_F(XTouchTest, EventsQueuedBeforeARegistrationAreOlderThanIt) {
    selector->unregisterEventCallback(&EventLog::callback, &log, nullptr);
    server->touchBegin(1, 100, 100);
    const MachTime sent = selector->mach_absolute_time();
    while (selector->mach_absolute_time() < sent + 2'000'000) {
    }
    const MachTime registered = selector->mach_absolute_time();
    selector->registerEventCallback(&EventLog::callback, &log, nullptr);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_LT(log.last().timeStamp, registered);
}

TEST_F(XTouchTest, WithoutCallbackContactsAreStillFollowed) {
    selector->unregisterEventCallback(&EventLog::callback, &log, nullptr);
    server->touchBegin(1, 100, 100);
    ASSERT_GT(context.run_one_for(kDeadline), 0u);
    handleArrived();
    EXPECT_THAT(log.events, SizeIs(0));
    selector->registerEventCallback(&EventLog::callback, &log, nullptr);
    server->touchBegin(2, 5000, 100);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_EQ(log.touching(), 2u);
}

TEST_F(XTouchTest, MouseIsNoFinger) {
    server->button(1, true);
    server->moveMouse(20, 30);
    server->button(1, false);
    server->touchBegin(1, 100, 100);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_THAT(log.events, SizeIs(1));
    EXPECT_THAT(log.last().children, SizeIs(1));
}

TEST_F(XPointerTest, IsChosenWithoutATouchscreen) {
    EXPECT_EQ(selector->source(), InputSourceKind::pointer);
}

TEST_F(XPointerTest, HeldButtonIsAFinger) {
    server->moveMouse(100, 200);
    server->button(1, true);
    ASSERT_TRUE(waitForEvents(1));
    expectAt(log.last().children.at(0), 100, 200);
    server->moveMouse(300, 400);
    ASSERT_TRUE(waitForEvents(2));
    expectAt(log.last().children.at(0), 300, 400);
    server->button(1, false);
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    EXPECT_EQ(log.last().touch, 0);
    expectAt(log.last().children.at(0), 300, 400);
}

TEST_F(XPointerTest, AButtonThatIsHeldIsWhereThePointerIsAfterAChangeOfTheScreens) {
    server->moveMouse(100, 200);
    server->button(1, true);
    ASSERT_TRUE(waitForEvents(1));
    layout.scale = 2;
    selector->layoutChanged();
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(log.touching(), 1U);
    expectAt(log.last().children.at(0), 50, 100);
}

TEST_F(XPointerTest, ClickIsShownAndLifted) {
    server->moveMouse(50, 60);
    server->button(1, true);
    server->button(1, false);
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    EXPECT_EQ(log.events.front().children.at(0).touch, 1);
    expectAt(log.events.front().children.at(0), 50, 60);
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(XPointerTest, EveryOfManyClicksEnds) {
    constexpr std::size_t kClicks = 20;
    for (std::size_t i = 1; i <= kClicks; ++i) {
        server->button(1, true);
        ASSERT_TRUE(waitFor([&] { return !log.events.empty() && log.ended() + 1 >= i; }));
        server->button(1, false);
        ASSERT_TRUE(waitFor([&] { return log.ended() == i; }));
    }
    EXPECT_EQ(log.last().touch, 0);
}

TEST_F(XPointerTest, OtherButtonsAreNoFinger) {
    server->button(3, true);
    server->moveMouse(10, 20);
    server->button(3, false);
    server->moveMouse(70, 80);
    server->button(1, true);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_THAT(log.events, SizeIs(1));
    expectAt(log.last().children.at(0), 70, 80);
}

TEST_F(XPointerTest, ButtonMappingIsTheUsers) {
    server->setButtonMapping(3);
    server->button(1, true);
    server->button(1, false);
    server->moveMouse(70, 80);
    server->button(3, true);
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_THAT(log.events, SizeIs(1));
    expectAt(log.last().children.at(0), 70, 80);
    server->button(3, false);
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
}

TEST_F(XPointerTest, IdleMotionWakesNobody) {
    server->moveMouse(1, 1);
    handleArrived();
    for (int i = 0; i < 100; ++i) server->moveMouse(i, i);
    EXPECT_EQ(handleArrived(), 0u);
    // Nor after a drag.
    server->button(1, true);
    ASSERT_TRUE(waitFor([&] { return log.touching() == 1; }));
    server->button(1, false);
    ASSERT_TRUE(waitFor([&] { return log.ended() == 1; }));
    settle();
    handleArrived();
    for (int i = 0; i < 100; ++i) server->moveMouse(i, i);
    EXPECT_EQ(handleArrived(), 0u);
}

TEST(InputSelectorAlone, WithoutXAndUdevHasNoSource) {
    asio::io_context context;
    InputOptions options;
    options.udev = false;
    InputSelector selector(context, std::move(options));
    selector.scheduleWithMainRunLoop();
    selector.layoutChanged();
    EXPECT_EQ(selector.source(), InputSourceKind::none);
    EXPECT_STREQ(name(selector.source()), "none");
}

TEST(InputSelectorAlone, UnreachableServerIsPassedOver) {
    asio::io_context context;
    InputOptions options;
    options.udev = false;
    options.connectX = [] { return xcb_connect("/nonexistent/socket:0", nullptr); };
    InputSelector selector(context, std::move(options));
    selector.scheduleWithMainRunLoop();
    EXPECT_EQ(selector.source(), InputSourceKind::none);
}

}  // namespace
}  // namespace skavlo::test
