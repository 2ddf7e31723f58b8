// skavlo-persona: starts the installed overlay, or its probe, as root for an ordinary user.
//
//     skavlo-persona -hud | -check
//
// Set-uid root, to be run by the group mobile alone. It becomes the program, so process id, group
// and exit status are the program's own. Whatever the caller says, does or hands down is foreign
// here: nothing but what is named below passes. No library but libc.
#include <ctype.h>
#include <fcntl.h>
#include <grp.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr char kExecutable[] = SKAVLO_INSTALLED_EXECUTABLE;
static_assert(kExecutable[0] == '/' && sizeof kExecutable < PATH_MAX);
constexpr int kRefused = 126;  // none of the program's own

[[noreturn]] void refuse(const char* why) {
    dprintf(STDERR_FILENO, "skavlo-persona: %s\n", why);
    _exit(kRefused);
}

// First of all, so that no file opened later can be taken for standard output.
void tidyDescriptors() {
    for (int descriptor = 0; descriptor < 3; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor)
            _exit(kRefused);
    }
    if (close_range(3, UINT_MAX, 0) != 0) refuse("cannot close descriptors");
}

// Nobody but root can have put the thing there, or can put another in its place.
void requireRootsOwn(int descriptor, mode_t kind) {
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) refuse("the executable is missing");
    if ((status.st_mode & S_IFMT) != kind) refuse("the executable's path is not what it should be");
    if (status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        refuse("others than root may change the executable or its path");
}

void checkExecutable() {
    int directory = open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
    requireRootsOwn(directory, S_IFDIR);
    char path[sizeof kExecutable];
    memcpy(path, kExecutable, sizeof path);
    char* rest = nullptr;
    for (char* name = strtok_r(path, "/", &rest); name != nullptr;) {
        char* const next = strtok_r(nullptr, "/", &rest);
        const int entry = openat(directory, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
        requireRootsOwn(entry, next != nullptr ? S_IFDIR : S_IFREG);
        directory = entry;
        name = next;
    }
}

// Where the user's display and session are, and what language to speak. HOME is none of them:
// libraries would take configuration and plug-ins from there; and a bus address can name a program
// to be started.
constexpr char kVariables[] =
    "CI_USE_SOFTWARE_RENDERER\0DISPLAY\0WAYLAND_DISPLAY\0XAUTHORITY\0XDG_RUNTIME_DIR\0"
    "XDG_SESSION_ID\0XDG_SESSION_TYPE\0XDG_CURRENT_DESKTOP\0PIPEWIRE_RUNTIME_DIR\0SWAYSOCK\0"
    "PIPEWIRE_REMOTE\0HYPRLAND_INSTANCE_SIGNATURE\0LANG\0LANGUAGE\0LC_ALL\0LC_CTYPE\0LC_MESSAGES\0";
constexpr int kLongestValue = 1024;          // more than any of them takes
char* g_environment[sizeof kVariables / 2];  // a name takes more than two bytes
char g_authority[sizeof "XAUTHORITY=" + PATH_MAX];

// A path must be whole and lead to something of the caller's: root goes into nobody else's session
// and opens nobody else's files for him. The real identity is still his.
bool acceptable(const char* name, const char* value) {
    for (const char* at = value; *at != '\0'; ++at)
        if (at - value >= kLongestValue || iscntrl(static_cast<unsigned char>(*at))) return false;
    const char* const slash = strchr(value, '/');
    if (slash == nullptr) return value[0] != '\0';
    const bool language = strncmp(name, "LANG", 4) == 0 || strncmp(name, "LC_", 3) == 0;
    struct stat status {};
    return !language && slash == value && stat(value, &status) == 0 && status.st_uid == getuid();
}

// The file that holds for X without XAUTHORITY; the program itself will not know the home.
char* authorityOfHome() {
    const char* const home = getenv("HOME");
    if (getenv("XAUTHORITY") != nullptr || home == nullptr || home[0] != '/') return nullptr;
    const int length = snprintf(g_authority, sizeof g_authority, "XAUTHORITY=%s/.Xauthority", home);
    if (static_cast<size_t>(length) >= sizeof g_authority) return nullptr;
    return acceptable("XAUTHORITY", strchr(g_authority, '/')) ? g_authority : nullptr;
}

void collectEnvironment() {
    char** next = g_environment;
    for (const char* name = kVariables; *name != '\0'; name += strlen(name) + 1) {
        char* const value = getenv(name);
        // The entry begins with the name, just before its value.
        if (value != nullptr && acceptable(name, value)) *next++ = value - strlen(name) - 1;
    }
    if (char* const authority = authorityOfHome()) *next = authority;
}

// In a container root may lack the right to raise what the caller has lowered; it then stays so.
void limit(__rlimit_resource resource, rlim_t soft, rlim_t hard) {
    rlimit value{soft, hard};
    rlimit given{};
    if (setrlimit(resource, &value) == 0 || getrlimit(resource, &given) != 0) return;
    value = {soft < given.rlim_max ? soft : given.rlim_max, given.rlim_max};
    setrlimit(resource, &value);
}

// Ignored and blocked signals, timers, limits, mask and folder outlive the change of program.
void resetState() {
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    bool good = sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
    const itimerval never{};
    for (int timer = 0; timer <= ITIMER_PROF; ++timer)
        good = setitimer(static_cast<__itimer_which>(timer), &never, nullptr) == 0 && good;
    constexpr __rlimit_resource kUnlimited[] = {RLIMIT_AS,    RLIMIT_CPU,   RLIMIT_DATA,
                                                RLIMIT_FSIZE, RLIMIT_NPROC, RLIMIT_RTTIME};
    for (const auto each : kUnlimited) limit(each, RLIM_INFINITY, RLIM_INFINITY);
    limit(RLIMIT_STACK, 8U << 20U, RLIM_INFINITY);
    limit(RLIMIT_NOFILE, 1024, 4096);
    limit(RLIMIT_CORE, 0, 0);
    umask(S_IWGRP | S_IWOTH);
    if (chdir("/") != 0 || !good) refuse("cannot leave the caller's state behind");
}

}  // namespace

int main(int argc, char** argv) {
    tidyDescriptors();
    if (geteuid() != 0) refuse("must be installed set-uid root");
    if (argc != 2 || (strcmp(argv[1], "-hud") != 0 && strcmp(argv[1], "-check") != 0))
        refuse("takes exactly one argument, -hud or -check");
    checkExecutable();
    collectEnvironment();
    resetState();
    if (setgroups(0, nullptr) != 0 || setresgid(0, 0, 0) != 0 || setresuid(0, 0, 0) != 0)
        refuse("cannot become root");
    char* const arguments[] = {const_cast<char*>(kExecutable), argv[1], nullptr};
    execve(kExecutable, arguments, g_environment);
    refuse("the executable cannot be run");
}
