// skavlo-replay: draws recorded touches as the overlay shows them, into pictures, without a screen
// and without waiting.
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>

#include "tools/replay/options.h"
#include "tools/replay/replay.h"

namespace {

volatile std::sig_atomic_t g_stopSignal = 0;

void stop(int number) {
    g_stopSignal = number;
}

int run(int count, char** values) {
    auto options = skavlo::parseReplayOptions(count, values);
    if (!options) {
        std::fprintf(stderr, "skavlo-replay: %s\nTry: skavlo-replay --help\n",
                     options.error().message.c_str());
        return skavlo::kReplayBadInput;
    }
    if (options->task == skavlo::ReplayOptions::Task::help) {
        return std::fputs(skavlo::kReplayHelp, stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
    }
    if (options->task == skavlo::ReplayOptions::Task::version) {
        return std::puts("skavlo-replay " SKAVLO_VERSION) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, stop);
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return skavlo::replay(*options, here / "skavlo-raster", g_stopSignal);
}

}  // namespace

int main(int count, char** values) {
    int status = skavlo::kReplayFailed;
    try {
        status = run(count, values);
    } catch (const std::exception& error) {
        skavlo::replayFails(status, error.what());
    }
    if (g_stopSignal != 0) {  // so that whoever waits for this process sees what ended it
        std::signal(g_stopSignal, SIG_DFL);
        std::raise(g_stopSignal);
    }
    return status;
}
