// skavlo-demo: shows the product at work on a machine without a screen. It starts a private X
// server with a touch screen, opens the real settings application there, switches the real overlay
// on, plays recorded touches, changes a setting, and stores what the screen shows.
#include <sys/signalfd.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/linux/posix/unix_socket.h"
#include "tools/demo_session.h"

namespace skavlo {

namespace {

constexpr PixelSize kScreen{1280, 900};
constexpr int kUsageStatus = 2;

struct Arguments {
    std::string program;
    std::string recording = SKAVLO_DEMO_RECORDING;
    std::string output;
};

void printUsage(std::FILE* file) {
    std::fputs(
        "Usage: skavlo-demo [OPTION]...\n"
        "Show settings application and overlay at work on a private screen and store pictures of "
        "it.\n\n"
        "  --program FILE       the program to show (default: skavlo beside this program)\n"
        "  --recording FILE     the touches to play (default: two hands)\n"
        "  --output DIRECTORY   where the pictures go (default: demo beside this program)\n"
        "  --display-reachable  only tell by the exit status whether there is a display to use\n"
        "  --help               print this text\n",
        file);
}

int fail(const std::string& message) {
    std::fprintf(stderr, "skavlo-demo: %s\n", message.c_str());
    return 1;
}

// Where "--name" has to go; null: there is no such option.
std::string* target(Arguments& arguments, std::string_view name) {
    if (name == "--program") {
        return &arguments.program;
    }
    if (name == "--recording") {
        return &arguments.recording;
    }
    return name == "--output" ? &arguments.output : nullptr;
}

// From here on, signals that end a program make the descriptor readable instead, so that whatever
// was started is stopped in order.
rig::FileDescriptor catchSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return rig::FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

int demonstrate(const Arguments& arguments) {
    auto recording = readRecording(arguments.recording);
    if (!recording) {
        return fail(recording.error().message);
    }
    const rig::FileDescriptor stop = catchSignals();
    auto session = DemoSession::start(arguments.program, kScreen, stop.get());
    if (!session) {
        return fail(session.error().message);
    }
    std::puts("Skavlo runs on a private screen; playing recorded touches (Ctrl-C stops).");
    std::fflush(stdout);
    if (const auto error = (*session)->play(*recording)) {
        return fail(error->message);
    }
    if (const auto error = (*session)->changeLook()) {
        return fail(error->message);
    }
    auto files = (*session)->writePictures(arguments.output);
    if (!files) {
        return fail(files.error().message);
    }
    std::puts("Pictures of it:");
    for (const std::string& file : *files) {
        std::printf("  %s\n", file.c_str());
    }
    return 0;
}

bool compositorAnswers() {
    const char* name = std::getenv("WAYLAND_DISPLAY");
    const char* directory = std::getenv("XDG_RUNTIME_DIR");
    if (name == nullptr || *name == 0) return false;
    if (*name == '/') return bool(connectToSocket(name));
    return directory != nullptr && connectToSocket(std::string(directory) + "/" + name);
}

bool displayReachable() {
    const char* display = std::getenv("DISPLAY");
    return compositorAnswers() || (display != nullptr && rig::Display::connect(""));
}

int run(int count, char** values) {
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    Arguments arguments;
    arguments.program = here / "skavlo";
    arguments.output = here / "demo";
    for (int i = 1; i < count; ++i) {
        const std::string_view name = values[i];
        if (name == "--help") {
            printUsage(stdout);
            return 0;
        }
        if (name == "--display-reachable") {
            return displayReachable() ? 0 : 1;
        }
        std::string* value = target(arguments, name);
        if (value == nullptr || i + 1 == count) {
            printUsage(stderr);
            return kUsageStatus;
        }
        *value = values[++i];
    }
    return demonstrate(arguments);
}

}  // namespace

}  // namespace skavlo

int main(int count, char** values) {
    try {
        return skavlo::run(count, values);
    } catch (const std::exception& error) {
        return skavlo::fail(error.what());
    }
}
