#include "cast_rig.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <array>

#include "platform/linux/capture/path_watch.h"

namespace skavlo {

namespace fs = std::filesystem;

namespace {

constexpr const char* kUser = "nobody";

std::vector<std::string> asUser(const std::vector<std::string>& arguments) {
    if (geteuid() != 0) return arguments;
    std::vector<std::string> all{"setpriv", "--reuid",        kUser,         "--regid",
                                 "nogroup", "--clear-groups", "--pdeathsig", "TERM"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

}  // namespace

void CastRig::SetUp() {
    std::string pattern = fs::temp_directory_path() / "skavlo-cast-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory = pattern;
    if (geteuid() == 0) {
        const passwd* user = getpwnam(kUser);
        ASSERT_NE(user, nullptr);
        ASSERT_EQ(chown(directory.c_str(), user->pw_uid, user->pw_gid), 0);
    }
}

void CastRig::TearDown() {
    source.reset();
    sessionManager.reset();
    server.reset();
    bus.reset();
    fs::remove_all(directory);
}

rig::Child CastRig::startInSession(const std::vector<std::string>& arguments) {
    const UniqueDescriptor log(
        open((directory / "log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    const std::string place = directory;
    auto child = rig::Child::start(
        {asUser(arguments),
         {"XDG_RUNTIME_DIR=" + place, "HOME=" + place, "XDG_CACHE_HOME=" + place,
          "XDG_STATE_HOME=" + place, "DBUS_SESSION_BUS_ADDRESS=unix:path=" + place + "/bus",
          "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE", "DISPLAY", "WAYLAND_DISPLAY"},
         {},
         log.get()});
    EXPECT_TRUE(child) << child.error().message;
    return std::move(*child);
}

std::pair<rig::Child, std::string> CastRig::startAndRead(
    const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueDescriptor output(ends[0]);
    UniqueDescriptor answer(ends[1]);
    // Not the log: the first line is the answer.
    const std::string place = directory;
    auto child = rig::Child::start({asUser(arguments),
                                    {"XDG_RUNTIME_DIR=" + place, "HOME=" + place,
                                     "DBUS_SESSION_BUS_ADDRESS=unix:path=" + place + "/bus",
                                     "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_REMOTE"},
                                    {},
                                    answer.get()});
    EXPECT_TRUE(child) << child.error().message;
    answer.reset();
    std::string line;
    char character = 0;
    const rig::Deadline deadline(kPatience);
    while (rig::waitReadable({output.get()}, deadline) && read(output.get(), &character, 1) == 1 &&
           character != '\n') {
        line += character;
    }
    EXPECT_EQ(character, '\n') << "no line from " << arguments.front() << ": " << line;
    return {std::move(*child), line};
}

void CastRig::waitForFile(const fs::path& path) {
    bool there = false;
    const PathWatch watch(loop.context(), path, [&] { there = true; });
    ASSERT_TRUE(runUntil([&] { return there || fs::exists(path); })) << path << " never came";
}

void CastRig::startBus() {
    bus = startInSession({"dbus-daemon", "--session", "--nofork", "--nopidfile",
                          "--address=unix:path=" + (directory / "bus").string()});
    ASSERT_NO_FATAL_FAILURE(waitForFile(directory / "bus"));
}

void CastRig::startServer() {
    server = startInSession({"pipewire"});
}

void CastRig::startSessionManager() {
    sessionManager = startInSession({"wireplumber"});
}

void CastRig::openSource() {
    source = std::make_unique<PipeWireSource>(loop, socketPath());
}

}  // namespace skavlo
