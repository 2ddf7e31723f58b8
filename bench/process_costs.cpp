// What the overlay costs as a process: start, memory, idleness; and what the probe costs.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "bench/bench_rig.h"
#include "bench/samples.h"
#include "tools/rig/overlay_window.h"

extern char** environ;

namespace skavlo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::seconds kIdleTime(30);
constexpr double kHeartbeatSeconds = 5;

void waitForWindow(const rig::Display& display, const rig::Child& child) {
    const rig::Deadline patience(std::chrono::seconds(20));
    if (!rig::waitForOverlayWindow(display, patience, {child.endDescriptor()})) {
        std::fprintf(stderr, "the overlay showed no window\n");
        std::exit(1);
    }
}

// Of one line of a file in /proc, the number behind the key.
double procNumber(const rig::Child& child, const char* file, const std::string& key) {
    std::ifstream lines("/proc/" + std::to_string(child.pid()) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(key, 0) == 0) return std::strtod(line.c_str() + key.size(), nullptr);
    }
    return 0;
}

double cpuSeconds(const rig::Child& child) {
    std::ifstream file("/proc/" + std::to_string(child.pid()) + "/schedstat");
    double nanoseconds = 0;
    file >> nanoseconds;
    return nanoseconds / 1e9;
}

// Private memory without the frame buffers, which are the mappings of that name.
double privateMegabytes(const rig::Child& child) {
    std::ifstream lines("/proc/" + std::to_string(child.pid()) + "/smaps");
    double kilobytes = 0;
    bool frame = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.find('-') < 17 && line.find(':') > 17) {
            frame = line.find("skavlo-frame") != std::string::npos;
        }
        if (!frame && line.rfind("Private_", 0) == 0) {
            kilobytes += std::strtod(line.c_str() + line.find(':') + 1, nullptr);
        }
    }
    return kilobytes / 1024;
}

void measureStart(const rig::XServer& server, const rig::Display& display,
                  const std::string& overlay) {
    Samples samples;
    for (int i = 0; i < 20; ++i) {
        const auto begin = Clock::now();
        rig::Child child = startProgram(server, {overlay, "-hud"});
        waitForWindow(display, child);
        samples.add(Milliseconds(Clock::now() - begin).count());
        child.stop();
    }
    printRow("-hud from exec to mapped window, median", samples.median(), 60, "ms");
    std::printf("  minimum %.1f ms, maximum %.1f ms\n", samples.minimum(), samples.quantile(1));
}

void measureIdleness(const rig::XServer& server, const rig::Display& display,
                     const std::string& overlay) {
    rig::Child child = startProgram(server, {overlay, "-hud"});
    waitForWindow(display, child);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    printRow("private memory of -hud beside its frame buffers", privateMegabytes(child), 8, "MB");
    const double switches = procNumber(child, "status", "voluntary_ctxt_switches:");
    const double cpu = cpuSeconds(child);
    std::this_thread::sleep_for(kIdleTime);
    // A heartbeat may fall at either end, and every second one draws a frame, whose completion the
    // window server reports.
    const double beats = static_cast<double>(kIdleTime.count()) / kHeartbeatSeconds + 1;
    printRow("context switches in 30 s of idleness (two a heartbeat)",
             procNumber(child, "status", "voluntary_ctxt_switches:") - switches, 2 * beats, "");
    printRow("processor time in 30 s of idleness", (cpuSeconds(child) - cpu) * 1e3, 10, "ms");
    child.stop();
}

double spawnMilliseconds(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    const auto begin = Clock::now();
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) std::exit(1);
    waitpid(pid, nullptr, 0);
    return Milliseconds(Clock::now() - begin).count();
}

void measureProbe(const std::string& overlay, const std::string& nothing) {
    Samples probe;
    Samples peer;
    for (int i = 0; i < 300; ++i) {
        peer.add(spawnMilliseconds({nothing}));
        probe.add(spawnMilliseconds({overlay, "-check"}));
    }
    printRow("-check, minimum, beside a static program that does nothing", probe.minimum(),
             1.3 * peer.minimum(), "ms");
    printRow("-check, median, beside a static program that does nothing", probe.median(),
             1.3 * peer.median(), "ms");
}

}  // namespace
}  // namespace skavlo::bench

int main(int argc, char** argv) {
    using namespace skavlo::bench;
    if (argc != 3) {
        std::fprintf(stderr, "Usage: process_costs OVERLAY DO_NOTHING\n");
        return 2;
    }
    measureProbe(argv[1], argv[2]);
    const skavlo::rig::XServer server = startServer();
    const auto compositor = orDie(skavlo::rig::Compositor::start(server));
    const skavlo::rig::Display display = orDie(server.connect());
    measureStart(server, display, argv[1]);
    measureIdleness(server, display, argv[1]);
}
