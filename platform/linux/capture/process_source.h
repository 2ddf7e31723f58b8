#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/capture/capture_source.h"
#include "platform/linux/capture/process_events.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/descriptor_watch.h"
#include "platform/result.h"

namespace skavlo {

// A program that captures the screen for as long as it runs.
struct Recorder {
    std::string program;        // its file's name
    std::string argument = {};  // only with this among its arguments; empty: always
};

// Those that copy the screen from the compositor or the kernel and leave no other trace.
const std::vector<Recorder>& knownRecorders();

// Whether a program of the list runs, as the kernel tells. It lets only privileged processes know.
class ProcessSource final : public CaptureSource {
  public:
    // An error when the kernel does not tell.
    static Result<std::unique_ptr<ProcessSource>> open(AsioRunLoop& runLoop,
                                                       std::vector<Recorder> recorders);
    ~ProcessSource() override;

  private:
    struct Running {
        UniqueDescriptor process;
        std::unique_ptr<DescriptorWatch> end;
    };

    ProcessSource(AsioRunLoop& runLoop, ProcessEvents events, std::vector<Recorder> recorders);
    void listen();
    void rest();
    void look();
    void lookAtAll();
    void lookAt(pid_t process);
    [[nodiscard]] bool isRecorder(pid_t process) const;
    void ended(pid_t process);

    AsioRunLoop& runLoop_;
    ProcessEvents events_;
    std::vector<Recorder> recorders_;
    std::map<pid_t, Running> running_;
    std::unique_ptr<DescriptorWatch> watch_;  // null: resting
    std::unique_ptr<Timer> restTimer_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace skavlo
