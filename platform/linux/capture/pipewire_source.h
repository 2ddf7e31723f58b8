#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/capture/capture_source.h"
#include "platform/linux/capture/path_watch.h"
#include "platform/linux/capture/pipewire_connection.h"
#include "platform/linux/loop/asio_run_loop.h"

namespace skavlo {

// Casts of the screen through PipeWire, which is how desktop portals and compositors share it. The
// server may be missing, and may come and go.
class PipeWireSource final : public CaptureSource {
  public:
    PipeWireSource(AsioRunLoop& runLoop, std::string socketPath);
    ~PipeWireSource() override;

    [[nodiscard]] bool connected() const { return connection_ != nullptr; }

  private:
    void connect();
    void waitForServer();
    void tryLater();
    void lost();
    void graphChanged();

    AsioRunLoop& runLoop_;
    std::string socketPath_;
    std::unique_ptr<PipeWireConnection> connection_;
    std::optional<PathWatch> appearance_;  // while there is no connection
    std::unique_ptr<Timer> retry_;
    unsigned retries_ = 0;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

// Where the environment says that the session's PipeWire is; none: it does not say.
std::optional<std::string> pipeWireSocket();

}  // namespace skavlo
