// Casts through a real PipeWire server.
#include <sys/socket.h>
#include <sys/un.h>

#include <csignal>
#include <cstring>
#include <fstream>

#include "cast_rig.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;

class Cast : public CastRig {
  protected:
    void startAll() {
        ASSERT_NO_FATAL_FAILURE(startBus());
        startServer();
        openSource();
        ASSERT_TRUE(runUntil([&] { return source->connected(); })) << "no PipeWire";
        startSessionManager();
    }
    // A copy of the test's consumer under the name of another program.
    std::string consumerCalled(const std::string& name) {
        const fs::path copy = directory / name;
        fs::copy_file(SKAVLO_CAST_PEER, copy);
        return copy;
    }
    std::string produce() {
        auto [child, node] = startAndRead({SKAVLO_CAST_PEER, "produce", "test-cast"});
        producer = std::move(child);
        return node;
    }
    std::optional<rig::Child> producer;
    std::optional<rig::Child> consumer;
};

TEST_F(Cast, WithoutPipeWireNothingIsCast) {
    openSource();
    runPosted();
    EXPECT_FALSE(source->connected());
    EXPECT_FALSE(source->captures());
}

TEST_F(Cast, CapturesWhileSomebodyReceivesIt) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    const std::string node = produce();
    EXPECT_FALSE(source->captures());
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", node});
    EXPECT_TRUE(waitFor(true));
    consumer->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", node});
    EXPECT_TRUE(waitFor(true));
    producer->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
}

TEST_F(Cast, OneThatRunsAlreadyIsSeen) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", produce()});
    EXPECT_TRUE(waitFor(true));
    openSource();
    EXPECT_FALSE(source->captures());
    EXPECT_TRUE(waitFor(true));
}

TEST_F(Cast, TheShellsOwnPreviewDoesNotCountButARecorderBesideItDoes) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    const std::string node = produce();
    int changes = 0;
    source->setChangeHandler([&] { ++changes; });
    auto [shell, shellNode] = startAndRead({consumerCalled("gnome-shell"), "consume", node});
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", node});
    EXPECT_TRUE(waitFor(true));
    EXPECT_EQ(changes, 1);
    consumer->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(shell.running());
}

TEST_F(Cast, APipeWireThatComesLaterIsFound) {
    const fs::path parent = directory;
    directory = parent / "later";
    ASSERT_FALSE(fs::exists(directory));
    openSource();
    runPosted();
    fs::create_directory(directory);
    fs::permissions(directory, fs::perms::all);
    startServer();
    EXPECT_TRUE(runUntil([&] { return source->connected(); }));
    directory = parent;
}

TEST_F(Cast, ItsCrashEndsTheCastAndItsRestartIsNoticed) {
    ASSERT_NO_FATAL_FAILURE(startAll());
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", produce()});
    EXPECT_TRUE(waitFor(true));
    server->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
    EXPECT_FALSE(source->connected());
    producer.reset();
    consumer.reset();
    sessionManager.reset();
    startServer();
    EXPECT_TRUE(runUntil([&] { return source->connected(); }));
    startSessionManager();
    consumer = startInSession({SKAVLO_CAST_PEER, "consume", produce()});
    EXPECT_TRUE(waitFor(true));
}

TEST_F(Cast, ASocketThatIsClosedAtOnceIsNotTriedForEver) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath().c_str(), sizeof address.sun_path - 1);
    const UniqueDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0));
    ASSERT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener.get(), 16), 0);
    int served = 0;
    const DescriptorWatch watch(loop.context(), listener.get(), [&] {
        const UniqueDescriptor client(accept(listener.get(), nullptr, nullptr));
        if (client) ++served;
    });
    openSource();
    // The last of the waits between them is longer than all of the others together.
    EXPECT_TRUE(runUntil([&] { return served == 7; }));
    bool waited = false;
    const auto timer = loop.scheduledTimer(4, false, [&] { waited = true; });
    EXPECT_TRUE(runUntil([&] { return waited; }));
    EXPECT_EQ(served, 7);
}

}  // namespace
}  // namespace skavlo
