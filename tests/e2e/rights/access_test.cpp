// The overlay of root in its folders, with the owners and modes they are installed with: the group
// mobile has it in its hands, another user has not.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/linux/confine/confinement.h"
#include "platform/linux/notify/socket_notifications.h"
#include "tests/e2e/rights/outsider.h"
#include "tools/rig/child.h"
#include "tools/rig/overlay_window.h"
#include "tools/rig/x_server.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const std::string kCaches = SKAVLO_LIBRARY_PREFIX "Caches";
const std::string kPidFile = kCaches + "/com.oxbrel.skavlo.pid";
const std::string kSettings = kCaches + "/com.oxbrel.skavlo.settings.plist";
const std::string kNotify = SKAVLO_RUN_DIRECTORY "/notify";
constexpr Identity kOutsider{kOrdinaryUser, kOrdinaryUser};
constexpr Identity kMember{kOrdinaryUser, kMobile};
constexpr std::chrono::seconds kPatience{20};

unsigned numberOf(const std::string& account) {
    return account == "root" ? 0 : kMobile;
}

// The place of an installed folder in this build's private tree.
std::string placed(const std::string& path) {
    for (const auto& [installed, here] :
         {std::pair<std::string, std::string>{"/var/mobile/Library/", SKAVLO_LIBRARY_PREFIX},
          {"/run/skavlo", SKAVLO_RUN_DIRECTORY}})
        if (path.rfind(installed, 0) == 0) return here + path.substr(installed.size());
    return {};
}

// Makes the folders as the installed configuration says.
int makeInstalledFolders() {
    std::ifstream configuration(SKAVLO_TMPFILES);
    int made = 0;
    for (std::string line; std::getline(configuration, line);) {
        std::istringstream fields(line);
        std::string type;
        std::string path;
        std::string mode;
        std::string user;
        std::string group;
        fields >> type >> path >> mode >> user >> group;
        const std::string folder = placed(path);
        if (type != "d" || folder.empty()) continue;
        fs::create_directories(folder);
        if (chown(folder.c_str(), numberOf(user), numberOf(group)) != 0) return -1;
        if (chmod(folder.c_str(), static_cast<mode_t>(std::stoul(mode, nullptr, 8))) != 0)
            return -1;
        ++made;
    }
    return made;
}

class AccessTest : public testing::Test {
  protected:
    // The tree of the build is hidden behind an empty one that only this process sees.
    void SetUp() override {
        if (!canBecomeOthers()) GTEST_SKIP() << "only root can try what another user may";
        fs::create_directories(SKAVLO_LIBRARY_PREFIX);
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("skavlo-test", SKAVLO_LIBRARY_PREFIX, "tmpfs", 0, "mode=0755") != 0)
            GTEST_SKIP() << "mounting is not allowed here: " << std::strerror(errno);
        ASSERT_EQ(makeInstalledFolders(), 3);
        std::ofstream(kSettings) << "<plist><dict/></plist>";
        ASSERT_EQ(chmod(kSettings.c_str(), 0644), 0);
        auto server = rig::XServer::start({});
        ASSERT_TRUE(server) << server.error().message;
        server_ = std::make_unique<rig::XServer>(std::move(*server));
        ASSERT_NO_FATAL_FAILURE(startOverlay({SKAVLO_EXECUTABLE, "-hud"}));
    }

    // What shows the way to the X server, for everybody to read.
    [[nodiscard]] std::vector<std::string> environment() const {
        const std::string shared = SKAVLO_LIBRARY_PREFIX "authority";
        std::vector<std::string> result{"WAYLAND_DISPLAY"};
        for (const std::string& each : server_->environment()) {
            const bool authority = each.rfind("XAUTHORITY=", 0) == 0;
            if (authority)
                fs::copy_file(each.substr(each.find('=') + 1), shared,
                              fs::copy_options::overwrite_existing);
            result.push_back(authority ? "XAUTHORITY=" + shared : each);
        }
        EXPECT_EQ(chmod(shared.c_str(), 0644), 0);
        return result;
    }

    void startOverlay(const std::vector<std::string>& command) {
        auto overlay = rig::Child::start({command, environment(), {}, -1});
        ASSERT_TRUE(overlay) << overlay.error().message;
        overlay_ = std::move(*overlay);
        auto display = server_->connect();
        ASSERT_TRUE(display) << display.error().message;
        ASSERT_TRUE(rig::waitForOverlayWindow(*display, rig::Deadline(kPatience),
                                              {overlay_->endDescriptor()}));
        ASSERT_TRUE(waitUntilConfined()) << "the overlay has kept its rights";
    }

    // Its window comes first.
    [[nodiscard]] bool waitUntilConfined() const {
        const rig::Deadline deadline(kPatience);
        while (!deadline.passed())
            if (statusOf(std::to_string(overlay_->pid())).find("\nSeccomp:\t2\n") !=
                std::string::npos)
                return true;
        return false;
    }
    // Of a thread of the overlay.
    [[nodiscard]] std::string statusOf(const std::string& thread) const {
        std::ifstream file("/proc/" + std::to_string(overlay_->pid()) + "/task/" + thread +
                           "/status");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Says nothing when it works, else the error's name.
    static std::string attempt(Identity identity, const std::function<int()>& deed) {
        return runAs(identity,
                     [&] {
                         if (deed() < 0) std::fputs(strerrorname_np(errno), stdout);
                         std::fflush(stdout);
                         return 0;
                     })
            .said;
    }

    std::unique_ptr<rig::XServer> server_;
    std::optional<rig::Child> overlay_;
};

int writeTo(const std::string& path) {
    return open(path.c_str(), O_WRONLY | O_CREAT, 0666);
}

TEST_F(AccessTest, NobodyElseReadsOrChangesItsFiles) {
    const auto expectDenied = [](const std::function<int()>& deed) {
        EXPECT_EQ(attempt(kOutsider, deed), "EACCES");
    };
    for (const std::string& file : {kPidFile, kSettings}) {
        ASSERT_TRUE(fs::exists(file));
        expectDenied([&] { return open(file.c_str(), O_RDONLY); });
        expectDenied([&] { return writeTo(file); });
        expectDenied([&] { return unlink(file.c_str()); });
        expectDenied([&] { return rename(file.c_str(), (file + ".gone").c_str()); });
        expectDenied([&] { return access(file.c_str(), F_OK); });
    }
    for (const std::string& folder : {kCaches, kNotify}) {
        expectDenied([&] { return open(folder.c_str(), O_RDONLY | O_DIRECTORY); });
        expectDenied([&] { return symlink("/etc", (folder + "/new").c_str()); });
        expectDenied([&] { return rename(folder.c_str(), (folder + ".gone").c_str()); });
        expectDenied([&] { return mkdir((folder + "/new").c_str(), 0777); });
    }
    EXPECT_EQ(fs::exists(kPidFile), true);
}

TEST_F(AccessTest, NobodyElseStopsIt) {
    EXPECT_EQ(attempt(kOutsider, [&] { return kill(overlay_->pid(), SIGTERM); }), "EPERM");
    EXPECT_EQ(runAs(kOutsider,
                    [] {
                        execl(SKAVLO_EXECUTABLE, "skavlo", "-exit", nullptr);
                        return 1;
                    })
                  .status,
              0);
    runAs(kOutsider, [] {
        postNotification(kNotify, "com.oxbrel.skavlo.exit");
        return 0;
    });
    EXPECT_TRUE(fs::exists(kPidFile));
    // A notification of root's ends it; what came before it was not heard.
    EXPECT_TRUE(overlay_->running());
    postNotification(kNotify, "com.oxbrel.skavlo.exit");
    EXPECT_EQ(overlay_->wait(rig::Deadline(kPatience)), 0);
}

TEST_F(AccessTest, NobodyElseSeesIntoIt) {
    for (const char* file : {"environ", "mem", "maps", "fd"}) {
        const std::string path = "/proc/" + std::to_string(overlay_->pid()) + "/" + file;
        EXPECT_EQ(attempt(kOutsider, [&] { return open(path.c_str(), O_RDONLY); }), "EACCES");
    }
}

TEST_F(AccessTest, TheGroupReadsItsFilesAndStopsIt) {
    EXPECT_EQ(attempt(kMember, [] { return open(kPidFile.c_str(), O_RDONLY); }), "");
    EXPECT_EQ(attempt(kMember, [] { return writeTo(kSettings + ".new"); }), "");
    EXPECT_EQ(
        attempt(kMember, [] { return rename((kSettings + ".new").c_str(), kSettings.c_str()); }),
        "");
    runAs(kMember, [] {
        postNotification(kNotify, "com.oxbrel.skavlo.exit");
        return 0;
    });
    EXPECT_EQ(overlay_->wait(rig::Deadline(kPatience)), 0);
    EXPECT_FALSE(fs::exists(kPidFile));
}

TEST_F(AccessTest, AMemberRunsItWithoutRootsRights) {
    postNotification(kNotify, "com.oxbrel.skavlo.exit");
    ASSERT_EQ(overlay_->wait(rig::Deadline(kPatience)), 0);
    ASSERT_NO_FATAL_FAILURE(
        startOverlay({"setpriv", "--reuid", std::to_string(kMember.user), "--regid",
                      std::to_string(kMember.group), "--clear-groups", SKAVLO_EXECUTABLE, "-hud"}));
    std::ifstream pidFile(kPidFile);
    pid_t written = 0;
    pidFile >> written;
    EXPECT_EQ(written, overlay_->pid());
    struct stat status {};
    ASSERT_EQ(stat(("/proc/" + std::to_string(written)).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kMember.user);
    postNotification(kNotify, "com.oxbrel.skavlo.exit");
    EXPECT_EQ(overlay_->wait(rig::Deadline(kPatience)), 0);
    EXPECT_FALSE(fs::exists(kPidFile));
}

TEST_F(AccessTest, EveryThreadHasGivenUpItsRights) {
    std::uint64_t kept = 0;
    for (const int each : kKeptCapabilities) kept |= std::uint64_t{1} << unsigned(each);
    int threads = 0;
    const fs::path tasks = "/proc/" + std::to_string(overlay_->pid()) + "/task";
    for (const auto& thread : fs::directory_iterator(tasks)) {
        std::istringstream status(statusOf(thread.path().filename()));
        int seen = 0;
        for (std::string line; std::getline(status, line);) {
            const std::string value = line.substr(line.find('\t') + 1);
            if (line.rfind("CapInh", 0) == 0 || line.rfind("CapAmb", 0) == 0)
                seen += std::stoull(value, nullptr, 16) == 0 ? 1 : 0;
            else if (line.rfind("Cap", 0) == 0)
                seen += (std::stoull(value, nullptr, 16) & ~kept) == 0 ? 1 : 0;
        }
        EXPECT_EQ(seen, 5) << status.str();
        EXPECT_THAT(status.str(), HasSubstr("\nNoNewPrivs:\t1\n"));
        EXPECT_THAT(status.str(), HasSubstr("\nSeccomp:\t2\n"));
        ++threads;
    }
    EXPECT_GE(threads, 1);
}

}  // namespace
}  // namespace skavlo
