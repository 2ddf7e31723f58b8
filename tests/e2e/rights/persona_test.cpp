// The helper as an ordinary user meets it. Its built-in path leads into a file system in memory
// that only this process sees, where root owns every step, as in an installed system.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sched.h>
#include <seccomp.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "tests/e2e/rights/outsider.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Lines = std::vector<std::string>;

constexpr int kRefused = 126;
constexpr int kOwnStatus = 7;
constexpr Identity kMember{kOrdinaryUser, kMobile};

class PersonaTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!canBecomeOthers()) GTEST_SKIP() << "only root can try what another user meets";
        if (prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) != 0)
            GTEST_SKIP() << "this process may gain no rights, so set-uid has no effect";
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("skavlo-test", kRoot.c_str(), "tmpfs", 0, "mode=0755") != 0)
            GTEST_SKIP() << "mounting is not allowed here: " << std::strerror(errno);
        fs::create_directories(kFolder);
        fs::copy_file(SKAVLO_PERSONA_TARGET, executable_);
        fs::copy_file(SKAVLO_PERSONA, persona_);
        install(0, kMobile, 04750);
    }

    void install(uid_t user, gid_t group, mode_t mode) const {
        ASSERT_EQ(chown(persona_.c_str(), user, group), 0);
        ASSERT_EQ(chmod(persona_.c_str(), mode), 0);
    }

    [[nodiscard]] Outcome call(
        Lines arguments, Lines environment = {}, Identity identity = kMember,
        const std::function<void()>& prepare = [] {}) const {
        return runAs(identity, [&] {
            prepare();
            execve(persona_.c_str(), pointers(arguments).data(), pointers(environment).data());
            std::fputs(std::strerror(errno), stderr);
            return kCannotRun;
        });
    }
    [[nodiscard]] Outcome callHud(
        Lines environment = {}, const std::function<void()>& prepare = [] {}) const {
        return call({persona_, "-hud"}, std::move(environment), kMember, prepare);
    }
    // A folder of the caller's.
    std::string own(const std::string& name) const {
        const std::string path = kRoot + "/" + name;
        fs::create_directory(path);
        EXPECT_EQ(chown(path.c_str(), kOrdinaryUser, kOrdinaryUser), 0);
        return path;
    }
    static Lines lines(const Outcome& outcome) {
        Lines result;
        std::istringstream text(outcome.said);
        for (std::string line; std::getline(text, line);) result.push_back(line);
        return result;
    }

    static void expectRefused(const Outcome& outcome, const std::string& why) {
        EXPECT_TRUE(WIFEXITED(outcome.status));
        EXPECT_EQ(WEXITSTATUS(outcome.status), kRefused);
        EXPECT_EQ(outcome.said, "skavlo-persona: " + why + "\n");
    }
    static void expectRan(const Outcome& outcome) {
        EXPECT_TRUE(WIFEXITED(outcome.status));
        EXPECT_EQ(WEXITSTATUS(outcome.status), kOwnStatus) << outcome.said;
    }

    static constexpr int kCannotRun = 98;
    const std::string kRoot = "/mnt";
    const std::string kFolder = fs::path(SKAVLO_INSTALLED_EXECUTABLE).parent_path();
    const std::string executable_ = SKAVLO_INSTALLED_EXECUTABLE;
    const std::string persona_ = kFolder + "/skavlo-persona";

  private:
    static std::vector<char*> pointers(Lines& strings) {
        std::vector<char*> result;
        for (std::string& each : strings) result.push_back(each.data());
        result.push_back(nullptr);
        return result;
    }
};

constexpr const char* kUsage = "takes exactly one argument, -hud or -check";
constexpr const char* kChangeable = "others than root may change the executable or its path";
constexpr const char* kStrange = "the executable's path is not what it should be";

TEST_F(PersonaTest, StartsTheExecutableAsRootAndHandsItsStatusThrough) {
    for (const std::string role : {"-hud", "-check"}) {
        const Outcome outcome = call({persona_, role});
        expectRan(outcome);
        EXPECT_THAT(lines(outcome), Contains("argument " + executable_));
        EXPECT_THAT(lines(outcome), Contains("argument " + role));
        EXPECT_THAT(lines(outcome), Contains("identity 0 0 0 0 0 0 groups 0"));
        EXPECT_THAT(lines(outcome), Contains(StartsWith("process " + std::to_string(outcome.pid))));
    }
}

TEST_F(PersonaTest, TheCallersProcessGroupStays) {
    const Outcome outcome = callHud({}, [] { setpgid(0, 0); });
    const std::string pid = std::to_string(outcome.pid);
    EXPECT_THAT(lines(outcome), Contains("process " + pid + " group " + pid));
}

TEST_F(PersonaTest, RefusesOtherArguments) {
    for (const Lines& arguments :
         {Lines{persona_}, Lines{}, Lines{persona_, "-exit"}, Lines{persona_, ""},
          Lines{persona_, "-HUD"}, Lines{persona_, "-hud "}, Lines{persona_, "-hud", "-check"},
          Lines{persona_, "-hud", ""}, Lines{"-hud"}, Lines{persona_, "--", "-hud"}})
        expectRefused(call(arguments), kUsage);
}

TEST_F(PersonaTest, NobodyOutsideTheGroupCanRunIt) {
    const Outcome outcome = call({persona_, "-hud"}, {}, {kOrdinaryUser, kOrdinaryUser});
    EXPECT_EQ(WEXITSTATUS(outcome.status), kCannotRun);
    EXPECT_EQ(outcome.said, std::strerror(EACCES));
}

TEST_F(PersonaTest, RefusesWithoutSetUid) {
    install(0, kMobile, 0750);
    expectRefused(call({persona_, "-hud"}), "must be installed set-uid root");
}

TEST_F(PersonaTest, RefusesWhenItBelongsToSomebodyElse) {
    install(kOrdinaryUser + 1, kMobile, 04750);
    expectRefused(call({persona_, "-hud"}), "must be installed set-uid root");
}

TEST_F(PersonaTest, RefusesAMissingExecutable) {
    fs::remove(executable_);
    expectRefused(callHud(), "the executable is missing");
}

TEST_F(PersonaTest, RefusesASymbolicLink) {
    fs::rename(executable_, executable_ + ".real");
    fs::create_symlink(executable_ + ".real", executable_);
    expectRefused(callHud(), kStrange);
}

TEST_F(PersonaTest, RefusesALinkOnTheWay) {
    fs::rename(kFolder, kFolder + ".real");
    fs::create_symlink(kFolder + ".real", kFolder);
    expectRefused(callHud(), kStrange);
}

TEST_F(PersonaTest, RefusesWhatIsNoRegularFile) {
    fs::remove(executable_);
    ASSERT_EQ(mkfifo(executable_.c_str(), 0755), 0);
    expectRefused(callHud(), kStrange);
    fs::remove(executable_);
    fs::create_directory(executable_);
    expectRefused(callHud(), kStrange);
}

TEST_F(PersonaTest, RefusesAnExecutableThatOthersMayChange) {
    for (const mode_t mode : {0775, 0757, 0777, 04775}) {
        ASSERT_EQ(chmod(executable_.c_str(), mode), 0);
        expectRefused(callHud(), kChangeable);
    }
}

TEST_F(PersonaTest, RefusesAnExecutableOfSomebodyElse) {
    ASSERT_EQ(chown(executable_.c_str(), kOrdinaryUser, 0), 0);
    expectRefused(callHud(), kChangeable);
}

TEST_F(PersonaTest, RefusesAFolderOnTheWayThatOthersMayChange) {
    for (const std::string& folder : {kFolder, kRoot}) {
        for (const mode_t mode : {0775, 0757, 01777}) {
            ASSERT_EQ(chmod(folder.c_str(), mode), 0);
            expectRefused(callHud(), kChangeable);
        }
        ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
        ASSERT_EQ(chown(folder.c_str(), kOrdinaryUser, 0), 0);
        expectRefused(callHud(), kChangeable);
        ASSERT_EQ(chown(folder.c_str(), 0, 0), 0);
    }
    expectRan(callHud());
}

TEST_F(PersonaTest, RefusesWhatCannotBeRun) {
    ASSERT_EQ(chmod(executable_.c_str(), 0644), 0);
    expectRefused(callHud(), "the executable cannot be run");
}

// From here on the call fails in this process and in what it becomes, as in a sandbox that somebody
// with rights has put around a whole session: set-uid still has its effect.
bool forbid(int call, std::initializer_list<scmp_arg_cmp> when) {
    const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                                   &seccomp_release);
    return filter && seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_NNP, 0) == 0 &&
           seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(EPERM), call,
                                  static_cast<unsigned>(when.size()), when.begin()) == 0 &&
           seccomp_load(filter.get()) == 0;
}

struct Forbidden {
    const char* name;
    int call;
    bool ofRootOnly;  // with 0 as its first argument
    const char* why;
};
void PrintTo(const Forbidden& forbidden, std::ostream* out) {
    *out << forbidden.name;
}

class PersonaInASandbox : public PersonaTest, public testing::WithParamInterface<Forbidden> {};

TEST_P(PersonaInASandbox, RefusesToGoOnHalfDone) {
    const auto enter = [] {
        const auto& [name, call, ofRootOnly, why] = GetParam();
        const bool forbidden =
            ofRootOnly ? forbid(call, {SCMP_A0(SCMP_CMP_EQ, 0)}) : forbid(call, {});
        if (!forbidden || setresuid(kOrdinaryUser, kOrdinaryUser, kOrdinaryUser) != 0)
            _exit(kCannotRun);
    };
    // Only root may enter such a sandbox; he takes the member's identity there.
    expectRefused(call({persona_, "-hud"}, {}, {0, kMobile}, enter), GetParam().why);
    expectRan(callHud());
}

constexpr const char* kState = "cannot leave the caller's state behind";
constexpr const char* kNoRoot = "cannot become root";

INSTANTIATE_TEST_SUITE_P(Calls, PersonaInASandbox,
                         testing::Values(Forbidden{"Descriptors", SCMP_SYS(close_range), false,
                                                   "cannot close descriptors"},
                                         Forbidden{"Signals", SCMP_SYS(rt_sigprocmask), false,
                                                   kState},
                                         Forbidden{"Timers", SCMP_SYS(setitimer), false, kState},
                                         Forbidden{"Folder", SCMP_SYS(chdir), false, kState},
                                         Forbidden{"Groups", SCMP_SYS(setgroups), false, kNoRoot},
                                         Forbidden{"Group", SCMP_SYS(setresgid), true, kNoRoot},
                                         Forbidden{"User", SCMP_SYS(setresuid), true, kNoRoot}),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(PersonaTest, PassesDisplaySessionAndLanguage) {
    const Lines good{"CI_USE_SOFTWARE_RENDERER=1", "DISPLAY=:7",
                     "WAYLAND_DISPLAY=wayland-1",  "XDG_SESSION_TYPE=wayland",
                     "LANG=zh_CN.UTF-8",           "LC_ALL=C",
                     "XDG_CURRENT_DESKTOP=sway",   "XDG_RUNTIME_DIR=" + own("session")};
    const Outcome outcome = callHud(good);
    expectRan(outcome);
    for (const std::string& each : good) EXPECT_THAT(lines(outcome), Contains("variable " + each));
}

TEST_F(PersonaTest, PassesNothingElse) {
    const Outcome outcome =
        callHud({"LD_PRELOAD=/mnt/evil.so", "LD_LIBRARY_PATH=/mnt", "PATH=/mnt", "HOME=/mnt",
                 "GCONV_PATH=/mnt", "IFS=x", "MALLOC_CHECK_=3", "GDK_PIXBUF_MODULE_FILE=/mnt/x",
                 "DBUS_SESSION_BUS_ADDRESS=unixexec:path=/mnt/evil", "XDG_CONFIG_HOME=/mnt",
                 "PIPEWIRE_CONFIG_DIR=/mnt", "SPA_PLUGIN_DIR=/mnt", "DISPLAYX=:1", "XDISPLAY=:1",
                 "no equals sign", "=", ""});
    expectRan(outcome);
    EXPECT_THAT(outcome.said, Not(HasSubstr("variable")));
}

TEST_F(PersonaTest, LeavesOutSuspiciousValues) {
    own("mine");
    const std::string shared = kRoot + "/shared";
    std::ofstream(shared) << "of root, for everybody";
    const Outcome outcome = callHud(
        {"DISPLAY=" + std::string(1025, ':'), "WAYLAND_DISPLAY=../54322/wayland-0",
         "XAUTHORITY=" + shared, "XDG_RUNTIME_DIR=/mnt", "PIPEWIRE_RUNTIME_DIR=/mnt/nowhere",
         "SWAYSOCK=mnt/mine", "LANG=/mnt/mine", "LC_ALL=../../mnt", "XDG_SESSION_TYPE=a\nb",
         "XDG_SESSION_ID=\x1b[2J", "LANGUAGE="});
    expectRan(outcome);
    EXPECT_THAT(outcome.said, Not(HasSubstr("variable")));
}

TEST_F(PersonaTest, ALongListOfVariablesIsNoTrouble) {
    Lines environment(3000, "DISPLAY=:1");
    environment.emplace_back(std::string(100'000, 'x') + "=" + std::string(20'000, 'y'));
    const Outcome outcome = callHud(environment);
    expectRan(outcome);
    const Lines said = lines(outcome);
    EXPECT_EQ(std::count_if(said.begin(), said.end(),
                            [](const std::string& line) { return line[0] == 'v'; }),
              1);
}

TEST_F(PersonaTest, TheAuthorityFileInTheHomeIsNamedWhenItIsTheCallers) {
    const std::string file = kRoot + "/.Xauthority";
    EXPECT_THAT(callHud({"HOME=/mnt"}).said, Not(HasSubstr("variable")));
    std::ofstream(file) << "cookie";
    ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    EXPECT_THAT(callHud({"HOME=/mnt"}).said, Not(HasSubstr("variable")));
    ASSERT_EQ(chown(file.c_str(), kOrdinaryUser, 0), 0);
    EXPECT_THAT(lines(callHud({"HOME=/mnt"})), Contains("variable XAUTHORITY=" + file));
    EXPECT_THAT(callHud({"HOME=mnt"}).said, Not(HasSubstr("variable")));
}

TEST_F(PersonaTest, DescriptorsAreClosedAndTheStandardOnesOpen) {
    const Outcome outcome = callHud({}, [] {
        const int file = open("/proc/self/status", O_RDONLY);
        for (const int target : {3, 100, 900}) dup2(file, target);
        close(STDIN_FILENO);
        close(STDERR_FILENO);
    });
    expectRan(outcome);
    EXPECT_THAT(lines(outcome), Contains("descriptor 0 empty"));
    EXPECT_THAT(lines(outcome), Contains("descriptor 1"));
    EXPECT_THAT(lines(outcome), Contains("descriptor 2 empty"));
    for (const std::string number : {"3", "100", "900"})
        EXPECT_THAT(lines(outcome), Not(Contains(StartsWith("descriptor " + number))));
}

TEST_F(PersonaTest, ARefusalWithoutStandardErrorStaysARefusal) {
    const Outcome outcome = call({persona_}, {}, kMember, [] {
        for (const int standard : {0, 1, 2}) close(standard);
    });
    EXPECT_EQ(WEXITSTATUS(outcome.status), kRefused);
    EXPECT_EQ(outcome.said, "");
}

TEST_F(PersonaTest, SignalsTimersMaskAndFolderAreReset) {
    const Outcome outcome = callHud({}, [] {
        for (int number = 1; number < NSIG; ++number) signal(number, SIG_IGN);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        const itimerval soon{{0, 0}, {500, 0}};
        setitimer(ITIMER_REAL, &soon, nullptr);
        umask(0);
        EXPECT_EQ(chdir("/mnt"), 0);
    });
    expectRan(outcome);
    EXPECT_THAT(outcome.said, Not(HasSubstr("signal")));
    EXPECT_THAT(outcome.said, Not(HasSubstr("timer")));
    EXPECT_THAT(lines(outcome), Contains("mask 022"));
    EXPECT_THAT(lines(outcome), Contains("folder /"));
}

// Of a soft limit the hard one stays unless `hard`.
void lowerLimits(bool hard) {
    const std::pair<__rlimit_resource, rlim_t> low[] = {
        {RLIMIT_FSIZE, 0}, {RLIMIT_NOFILE, 16}, {RLIMIT_CPU, 1}};
    for (const auto& [resource, value] : low) {
        rlimit limit{};
        getrlimit(resource, &limit);
        limit.rlim_cur = value;
        if (hard) limit.rlim_max = value;
        setrlimit(resource, &limit);
    }
}

TEST_F(PersonaTest, LimitsAreReset) {
    const Outcome outcome = callHud({}, [] { lowerLimits(false); });
    expectRan(outcome);
    EXPECT_THAT(lines(outcome), Contains("limit file -1"));
    EXPECT_THAT(lines(outcome), Contains("limit processor -1"));
    EXPECT_THAT(lines(outcome), Contains("limit core 0"));
    EXPECT_THAT(lines(outcome), Contains("limit descriptors 1024"));
}

TEST_F(PersonaTest, LoweredHardLimitsAreReset) {
    if (prctl(PR_CAPBSET_READ, CAP_SYS_RESOURCE, 0, 0, 0) != 1)
        GTEST_SKIP() << "root may not raise limits here";
    const Outcome outcome = callHud({}, [] { lowerLimits(true); });
    expectRan(outcome);
    EXPECT_THAT(lines(outcome), Contains("limit file -1"));
    EXPECT_THAT(lines(outcome), Contains("limit processor -1"));
    EXPECT_THAT(lines(outcome), Contains("limit descriptors 1024"));
}

TEST_F(PersonaTest, ItsCodeIsShortAndOnlyTheCLibraryIsLinked) {
    std::ifstream source(SKAVLO_PERSONA_SOURCE);
    Lines sourceLines;
    for (std::string line; std::getline(source, line);) sourceLines.push_back(line);
    EXPECT_FALSE(sourceLines.empty());
    EXPECT_LE(sourceLines.size(), 150);
    std::ifstream program(persona_, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(program), {}};
    EXPECT_THAT(bytes, HasSubstr("libc.so.6"));
    for (const char* other : {"libstdc++.so", "libgcc_s.so", "libm.so", "libasan.so"})
        EXPECT_THAT(bytes, Not(HasSubstr(other)));
}

}  // namespace
}  // namespace skavlo
