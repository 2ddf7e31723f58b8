#pragma once

#include <pipewire/pipewire.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/capture/cast_graph.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/descriptor_watch.h"
#include "platform/linux/posix/unique_descriptor.h"
#include "platform/result.h"

namespace skavlo {

// Follows the graph of one PipeWire server over one connection. PipeWire's own loop turns within
// the run loop.
class PipeWireConnection {
  public:
    // `changed` is called after each change of the graph, `lost` once at the connection's end; both
    // from within PipeWire's loop, where the connection must not be destroyed.
    static Result<std::unique_ptr<PipeWireConnection>> open(AsioRunLoop& runLoop,
                                                            UniqueDescriptor socket,
                                                            std::function<void()> changed,
                                                            std::function<void()> lost);
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    [[nodiscard]] const CastGraph& graph() const { return graph_; }

  private:
    struct Bound;  // an object of the graph that reports about itself
    struct Events;

    PipeWireConnection(std::function<void()> changed, std::function<void()> lost);
    Result<bool> connect(UniqueDescriptor socket);
    void start(AsioRunLoop& runLoop);
    void iterate();
    void added(std::uint32_t id, const char* type, const spa_dict* properties);
    void bindNode(std::uint32_t id);
    void bindClient(std::uint32_t id);
    void nodeChanged(Bound& node, const pw_node_info& info);
    void clientChanged(const Bound& client, const pw_client_info& info);
    void removed(std::uint32_t id);

    std::function<void()> changed_;
    std::function<void()> lost_;
    CastGraph graph_;
    pw_loop* loop_ = nullptr;
    pw_context* context_ = nullptr;
    pw_core* core_ = nullptr;
    pw_registry* registry_ = nullptr;
    spa_hook coreHook_{};
    spa_hook registryHook_{};
    std::map<std::uint32_t, std::unique_ptr<Bound>> bound_;
    std::unique_ptr<DescriptorWatch> watch_;
};

}  // namespace skavlo
