#include "platform/linux/capture/event_socket_source.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "loop_fixture.h"

namespace skavlo {
namespace {

// A compositor that serves one client.
class EventSocket : public LoopFixture {
  protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path() / "skavlo-events-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory); }

    [[nodiscard]] std::string path() const { return directory / "events"; }

    void listen() {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
        listener.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
        ASSERT_EQ(::listen(listener.get(), 1), 0);
    }
    void open() {
        ASSERT_NO_FATAL_FAILURE(listen());
        auto opened = EventSocketSource::open(loop, path());
        ASSERT_TRUE(opened) << opened.error().message;
        source = std::move(*opened);
        peer.reset(accept(listener.get(), nullptr, nullptr));
        ASSERT_TRUE(peer);
    }
    void say(const std::string& text) const {
        ASSERT_EQ(write(peer.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void expectAfter(const std::string& text, bool captures) {
        say(text);
        EXPECT_TRUE(runUntil([&] { return source->captures() == captures; })) << text;
    }

    std::filesystem::path directory;
    UniqueDescriptor listener;
    UniqueDescriptor peer;
    std::unique_ptr<EventSocketSource> source;
};

TEST_F(EventSocket, NobodyListeningIsAnError) {
    EXPECT_FALSE(EventSocketSource::open(loop, path()));
    EXPECT_FALSE(EventSocketSource::open(loop, std::string(200, 'x')));
}

TEST_F(EventSocket, ACastBeginsAndEnds) {
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_FALSE(source->captures());
    expectAfter("workspace>>2\nscreencast>>1,0\n", true);
    expectAfter("screencast>>0,0\nactivewindow>>kitty,screencast>>1\n", false);
}

TEST_F(EventSocket, TwoCastsAreOverWhenBothAre) {
    ASSERT_NO_FATAL_FAILURE(open());
    int changes = 0;
    expectAfter("screencast>>1,0\nscreencast>>1,1\n", true);
    source->setChangeHandler([&] { ++changes; });
    say("screencast>>0,1\n");
    expectAfter("screencast>>0,0\n", false);
    EXPECT_EQ(changes, 1);
}

TEST_F(EventSocket, AnEndWithoutABeginningIsPassedOver) {
    ASSERT_NO_FATAL_FAILURE(open());
    expectAfter("screencast>>0,0\nscreencast>>1,0\n", true);
}

TEST_F(EventSocket, LinesMayComeInPieces) {
    ASSERT_NO_FATAL_FAILURE(open());
    for (const char piece : std::string("screencast>>1,0")) {
        say(std::string(1, piece));
        runPosted();
        EXPECT_FALSE(source->captures());
    }
    expectAfter("\n", true);
}

TEST_F(EventSocket, LinesTooLongAndOddOnesArePassedOver) {
    ASSERT_NO_FATAL_FAILURE(open());
    const std::string nonsense(100'000, 'x');
    say(nonsense.substr(0, 50'000));
    runPosted();
    expectAfter("\n\nscreencast>>\nscreencast>>x\nscreencast\nscreencast>>1\n", true);
    expectAfter(std::string(1, '\0') + "\nscreencast>>0\n", false);
}

TEST_F(EventSocket, TheCompositorsEndEndsTheCast) {
    ASSERT_NO_FATAL_FAILURE(open());
    expectAfter("screencast>>1,0\n", true);
    peer.reset();
    EXPECT_TRUE(runUntil([&] { return !source->captures(); }));
}

TEST(CompositorEventSocket, IsFoundThroughTheEnvironment) {
    std::map<std::string, const char*> variables;
    const auto find = [&] {
        return compositorEventSocket([&](const char* name) {
            const auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second;
        });
    };
    EXPECT_EQ(find(), std::nullopt);
    variables["HYPRLAND_INSTANCE_SIGNATURE"] = "abc_1";
    EXPECT_EQ(find(), std::nullopt);
    variables["XDG_RUNTIME_DIR"] = "relative";
    EXPECT_EQ(find(), std::nullopt);
    variables["XDG_RUNTIME_DIR"] = "/run/user/1000";
    EXPECT_EQ(find(), "/run/user/1000/hypr/abc_1/.socket2.sock");
    variables["HYPRLAND_INSTANCE_SIGNATURE"] = "";
    EXPECT_EQ(find(), std::nullopt);
}

}  // namespace
}  // namespace skavlo
