#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/capture/capture_source.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/descriptor_watch.h"
#include "platform/linux/posix/unique_descriptor.h"
#include "platform/result.h"

namespace skavlo {

// A compositor's own event socket, which says in lines when a client begins and stops to copy the
// screen: "screencast>>1,OWNER" and "screencast>>0,OWNER". It ends with the compositor.
class EventSocketSource final : public CaptureSource {
  public:
    // An error when nobody listens at the path.
    static Result<std::unique_ptr<EventSocketSource>> open(AsioRunLoop& runLoop,
                                                           const std::string& path);
    ~EventSocketSource() override;

  private:
    EventSocketSource(AsioRunLoop& runLoop, UniqueDescriptor socket);
    void read();
    void take(std::string_view piece);
    void line();

    UniqueDescriptor socket_;
    std::string line_;  // as far as it has come, at most kLongestLine
    unsigned casts_ = 0;
    std::unique_ptr<DescriptorWatch> watch_;
};

using Variables = std::function<const char*(const char* name)>;

// Where the environment says that the compositor has such a socket; none: it has none.
std::optional<std::string> compositorEventSocket(const Variables& variable);

}  // namespace skavlo
