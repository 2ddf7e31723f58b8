// What a real X server sends is delivered, also when something else has read it from the socket.
#include "platform/linux/loop/xcb_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/xcb_reply.h"
#include "tests/unit/input/support/event_log.h"
#include "tests/unit/input/support/x_server.h"

namespace skavlo::test {
namespace {

using ::testing::ElementsAre;

class XcbWatchTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string reason;
        server_ = XServer::start(false, reason);
        if (!server_) GTEST_SKIP() << reason;
        connection = server_->connect();
        ASSERT_EQ(xcb_connection_has_error(connection), 0);
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
        const std::uint32_t changes = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection, root_, XCB_CW_EVENT_MASK, &changes);
        sync();
    }
    void TearDown() override {
        watch.reset();
        if (connection) xcb_disconnect(connection);
    }

    void start(std::function<void()> drained = {}) {
        watch =
            std::make_unique<XcbWatch>(context, connection,
                                       XcbWatch::Handlers{
                                           .event = [this](const auto& event) { noteEvent(event); },
                                           .drained = std::move(drained),
                                           .lost = [this] { lost = true; },
                                       });
    }
    // Its change is told to us by an event.
    void changeProperty(xcb_atom_t property) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, root_, property, XCB_ATOM_STRING, 8,
                            1, "x");
    }
    // Behind it all events of what was asked for before have been read, and wait in memory.
    void sync() {
        const XcbReply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        ASSERT_TRUE(reply);
    }
    void killServer() { server_->kill(); }

    asio::io_context context{1};
    xcb_connection_t* connection = nullptr;
    std::unique_ptr<XcbWatch> watch;
    std::vector<xcb_atom_t> changed;
    bool lost = false;

  private:
    void noteEvent(const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return;
        changed.push_back(reinterpret_cast<const xcb_property_notify_event_t&>(event).atom);
    }

    std::unique_ptr<XServer> server_;
    xcb_window_t root_ = 0;
};

TEST_F(XcbWatchTest, DeliversWhatComes) {
    start();
    changeProperty(XCB_ATOM_WM_NAME);
    watch->flush();
    EXPECT_TRUE(runUntil(context, [&] { return !changed.empty(); }));
}

TEST_F(XcbWatchTest, DeliversWhatWasReadBeforeItBegan) {
    changeProperty(XCB_ATOM_WM_NAME);
    sync();
    start();
    EXPECT_TRUE(runUntil(context, [&] { return !changed.empty(); }));
}

TEST_F(XcbWatchTest, DeliversWhatAReplyBroughtAlong) {
    start();
    changeProperty(XCB_ATOM_WM_NAME);
    sync();
    watch->flush();
    EXPECT_TRUE(runUntil(context, [&] { return !changed.empty(); }));
}

TEST_F(XcbWatchTest, DeliversWhatAReplyBroughtAlongBehindTheEvents) {
    start([this] {
        if (changed.size() != 1) return;
        changeProperty(XCB_ATOM_WM_CLASS);
        sync();
    });
    changeProperty(XCB_ATOM_WM_NAME);
    watch->flush();
    EXPECT_TRUE(runUntil(context, [&] { return changed.size() == 2; }));
    EXPECT_THAT(changed, ElementsAre(XCB_ATOM_WM_NAME, XCB_ATOM_WM_CLASS));
}

TEST_F(XcbWatchTest, SchedulesNothingWhenNothingWasRead) {
    start();
    sync();
    watch->flush();
    context.poll();
    watch->flush();
    context.restart();
    EXPECT_EQ(context.poll(), 0U);
}

TEST_F(XcbWatchTest, TellsOnceThatTheServerIsGone) {
    start();
    killServer();
    EXPECT_TRUE(runUntil(context, [&] { return lost; }));
    lost = false;
    watch->flush();
    context.restart();
    context.poll();
    EXPECT_FALSE(lost);
}

TEST_F(XcbWatchTest, MayGoWithALookStillWaiting) {
    changeProperty(XCB_ATOM_WM_NAME);
    sync();
    start();
    watch.reset();
    context.poll();
    EXPECT_THAT(changed, ElementsAre());
}

}  // namespace
}  // namespace skavlo::test
