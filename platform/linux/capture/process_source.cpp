#include "platform/linux/capture/process_source.h"

#include <sys/syscall.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace skavlo {

namespace {

// A machine that starts programs all the time wakes this process no more often than this.
constexpr double kRestSeconds = 0.25;

std::string procPath(pid_t process, const char* entry) {
    return "/proc/" + std::to_string(process) + "/" + entry;
}

// How the process says it was called, which is all that others' processes let one see without the
// right to trace them.
std::string firstArgumentOf(pid_t process) {
    std::ifstream file(procPath(process, "cmdline"), std::ios::binary);
    std::string argument;
    std::getline(file, argument, '\0');
    return std::filesystem::path(argument).filename().string();
}

// The name of the program's file; empty: the process is gone.
std::string programOf(pid_t process) {
    constexpr std::string_view kReplaced = " (deleted)";
    std::error_code error;
    std::string name =
        std::filesystem::read_symlink(procPath(process, "exe"), error).filename().string();
    if (error) return firstArgumentOf(process);
    if (name.ends_with(kReplaced)) name.resize(name.size() - kReplaced.size());
    return name;
}

bool hasArgument(pid_t process, const std::string& wanted) {
    constexpr std::size_t kMostBytes = 64 * 1024;
    std::ifstream file(procPath(process, "cmdline"), std::ios::binary);
    std::string argument;
    for (std::size_t read = 0; read < kMostBytes && std::getline(file, argument, '\0');
         read += argument.size() + 1) {
        if (argument == wanted) return true;
    }
    return false;
}

}  // namespace

const std::vector<Recorder>& knownRecorders() {
    static const std::vector<Recorder> kRecorders{{"wf-recorder"},    {"wl-screenrec"},
                                                  {"wl-mirror"},      {"gpu-screen-recorder"},
                                                  {"gsr-kms-server"}, {"ffmpeg", "kmsgrab"}};
    return kRecorders;
}

Result<std::unique_ptr<ProcessSource>> ProcessSource::open(AsioRunLoop& runLoop,
                                                           std::vector<Recorder> recorders) {
    auto events = ProcessEvents::open();
    if (!events) return events.error();
    return std::unique_ptr<ProcessSource>(
        new ProcessSource(runLoop, std::move(*events), std::move(recorders)));
}

ProcessSource::ProcessSource(AsioRunLoop& runLoop, ProcessEvents events,
                             std::vector<Recorder> recorders)
    : runLoop_(runLoop), events_(std::move(events)), recorders_(std::move(recorders)) {
    listen();
    lookAtAll();
}

ProcessSource::~ProcessSource() {
    watch_.reset();
    for (auto& [process, running] : running_) running.end.reset();
}

void ProcessSource::listen() {
    restTimer_.reset();
    watch_ = std::make_unique<DescriptorWatch>(runLoop_.context(), events_.descriptor(),
                                               [this] { look(); });
}

// What comes meanwhile waits in the socket.
void ProcessSource::rest() {
    watch_.reset();
    restTimer_ = runLoop_.scheduledTimer(kRestSeconds, false, [this] { listen(); });
}

void ProcessSource::look() {
    const auto started = events_.read();
    if (started.missed) {
        lookAtAll();
    } else {
        for (const pid_t process : started.processes) lookAt(process);
    }
    rest();
}

void ProcessSource::lookAtAll() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        const auto [end, problem] =
            std::from_chars(name.data(), name.data() + name.size(), process);
        if (problem == std::errc() && end == name.data() + name.size()) lookAt(process);
    }
}

bool ProcessSource::isRecorder(pid_t process) const {
    const std::string program = programOf(process);
    return std::any_of(recorders_.begin(), recorders_.end(), [&](const Recorder& recorder) {
        return recorder.program == program &&
               (recorder.argument.empty() || hasArgument(process, recorder.argument));
    });
}

void ProcessSource::lookAt(pid_t process) {
    if (running_.contains(process) || !isRecorder(process)) return;
    UniqueDescriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    // Gone again, or a thread.
    if (!descriptor) return;
    Running& running = running_[process];
    running.process = std::move(descriptor);
    running.end = std::make_unique<DescriptorWatch>(runLoop_.context(), running.process.get(),
                                                    [this, process] { ended(process); });
    setCaptures(true);
}

void ProcessSource::ended(pid_t process) {
    running_.erase(process);
    setCaptures(!running_.empty());
}

}  // namespace skavlo
