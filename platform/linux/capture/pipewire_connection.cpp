#include "platform/linux/capture/pipewire_connection.h"

#include <pipewire/impl.h>

#include <mutex>
#include <string_view>
#include <utility>

namespace skavlo {

struct PipeWireConnection::Bound {
    PipeWireConnection& owner;
    std::uint32_t id;
    pw_proxy* proxy;
    CastNode node = {};
    spa_hook hook = {};
};

// What PipeWire calls.
struct PipeWireConnection::Events {
    static void error(void* self, std::uint32_t id, int /*sequence*/, int result,
                      const char* /*message*/) {
        auto& connection = *static_cast<PipeWireConnection*>(self);
        if (id == PW_ID_CORE && result == -EPIPE && connection.lost_)
            std::exchange(connection.lost_, nullptr)();
    }
    static void added(void* self, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
                      std::uint32_t /*version*/, const spa_dict* properties) {
        static_cast<PipeWireConnection*>(self)->added(id, type, properties);
    }
    static void removed(void* self, std::uint32_t id) {
        static_cast<PipeWireConnection*>(self)->removed(id);
    }
    static void node(void* self, const pw_node_info* info) {
        auto& bound = *static_cast<Bound*>(self);
        bound.owner.nodeChanged(bound, *info);
    }
    static void client(void* self, const pw_client_info* info) {
        const auto& bound = *static_cast<Bound*>(self);
        bound.owner.clientChanged(bound, *info);
    }

    static pw_core_events coreTable() {
        pw_core_events events{};
        events.version = PW_VERSION_CORE_EVENTS;
        events.error = &error;
        return events;
    }
    static pw_registry_events registryTable() {
        pw_registry_events events{};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = &added;
        events.global_remove = &removed;
        return events;
    }
    static pw_node_events nodeTable() {
        pw_node_events events{};
        events.version = PW_VERSION_NODE_EVENTS;
        events.info = &node;
        return events;
    }
    static pw_client_events clientTable() {
        pw_client_events events{};
        events.version = PW_VERSION_CLIENT_EVENTS;
        events.info = &client;
        return events;
    }
};

namespace {

std::string lookUp(const spa_dict* properties, const char* key) {
    const char* value = properties ? spa_dict_lookup(properties, key) : nullptr;
    return value ? value : std::string();
}

// PW_ID_ANY: no number.
std::uint32_t lookUpId(const spa_dict* properties, const char* key) {
    std::uint32_t id = PW_ID_ANY;
    const std::string text = lookUp(properties, key);
    return spa_atou32(text.c_str(), &id, 0) ? id : PW_ID_ANY;
}

}  // namespace

Result<std::unique_ptr<PipeWireConnection>> PipeWireConnection::open(AsioRunLoop& runLoop,
                                                                     UniqueDescriptor socket,
                                                                     std::function<void()> changed,
                                                                     std::function<void()> lost) {
    static std::once_flag once;
    std::call_once(once, [] {
        pw_init(nullptr, nullptr);
        // It would warn of the missing configuration, for one.
        pw_log_set_level(SPA_LOG_LEVEL_NONE);
    });
    std::unique_ptr<PipeWireConnection> connection(
        new PipeWireConnection(std::move(changed), std::move(lost)));
    if (auto connected = connection->connect(std::move(socket)); !connected)
        return connected.error();
    connection->start(runLoop);
    return connection;
}

PipeWireConnection::PipeWireConnection(std::function<void()> changed, std::function<void()> lost)
    : changed_(std::move(changed)), lost_(std::move(lost)) {}

// Without a configuration: it would load modules for a client that plays or records.
Result<bool> PipeWireConnection::connect(UniqueDescriptor socket) {
    loop_ = pw_loop_new(nullptr);
    if (!loop_) return Error{"PipeWire's loop cannot be made"};
    context_ = pw_context_new(loop_, pw_properties_new(PW_KEY_CONFIG_NAME, "null", nullptr), 0);
    if (!context_) return Error{"PipeWire's library cannot be used"};
    if (!pw_context_load_module(context_, "libpipewire-module-protocol-native", nullptr, nullptr))
        return Error{"PipeWire's protocol module is missing"};
    core_ = pw_context_connect_fd(context_, socket.release(), nullptr, 0);
    if (!core_) return Error{"PipeWire refuses the connection"};
    registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
    if (!registry_) return Error{"PipeWire refuses the connection"};
    static const pw_core_events kCoreEvents = Events::coreTable();
    static const pw_registry_events kRegistryEvents = Events::registryTable();
    pw_core_add_listener(core_, &coreHook_, &kCoreEvents, this);
    pw_registry_add_listener(registry_, &registryHook_, &kRegistryEvents, this);
    return true;
}

void PipeWireConnection::start(AsioRunLoop& runLoop) {
    pw_loop_enter(loop_);
    watch_ = std::make_unique<DescriptorWatch>(runLoop.context(), pw_loop_get_fd(loop_),
                                               [this] { iterate(); });
}

PipeWireConnection::~PipeWireConnection() {
    if (watch_) pw_loop_leave(loop_);
    watch_.reset();
    for (const auto& [id, bound] : bound_) {
        spa_hook_remove(&bound->hook);
        pw_proxy_destroy(bound->proxy);
    }
    if (registry_) {
        spa_hook_remove(&registryHook_);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
    }
    if (core_) {
        if (coreHook_.link.next) spa_hook_remove(&coreHook_);
        pw_core_disconnect(core_);
    }
    if (context_) pw_context_destroy(context_);
    if (loop_) pw_loop_destroy(loop_);
}

void PipeWireConnection::iterate() {
    pw_loop_iterate(loop_, 0);
}

void PipeWireConnection::added(std::uint32_t id, const char* type, const spa_dict* properties) {
    const std::string_view kind = type;
    if (kind == PW_TYPE_INTERFACE_Link) {
        graph_.setLink(id, lookUpId(properties, PW_KEY_LINK_OUTPUT_NODE),
                       lookUpId(properties, PW_KEY_LINK_INPUT_NODE));
        changed_();
    } else if (kind == PW_TYPE_INTERFACE_Client) {
        bindClient(id);
    } else if (kind == PW_TYPE_INTERFACE_Node) {
        const std::string mediaClass = lookUp(properties, PW_KEY_MEDIA_CLASS);
        CastNode node;
        node.mediaClass = mediaClass;
        node.client = lookUpId(properties, PW_KEY_CLIENT_ID);
        graph_.setNode(id, std::move(node));
        if (CastGraph::canCast(mediaClass)) bindNode(id);
    }
}

void PipeWireConnection::bindNode(std::uint32_t id) {
    static const pw_node_events kEvents = Events::nodeTable();
    void* proxy = pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0);
    if (!proxy) return;
    auto& bound = bound_[id];
    bound = std::make_unique<Bound>(Bound{*this, id, static_cast<pw_proxy*>(proxy)});
    pw_node_add_listener(static_cast<pw_node*>(proxy), &bound->hook, &kEvents, bound.get());
}

void PipeWireConnection::bindClient(std::uint32_t id) {
    static const pw_client_events kEvents = Events::clientTable();
    void* proxy = pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0);
    if (!proxy) return;
    graph_.announceClient(id);
    auto& bound = bound_[id];
    bound = std::make_unique<Bound>(Bound{*this, id, static_cast<pw_proxy*>(proxy)});
    pw_client_add_listener(static_cast<pw_client*>(proxy), &bound->hook, &kEvents, bound.get());
}

// Properties come only when they have changed, the state always.
void PipeWireConnection::nodeChanged(Bound& bound, const pw_node_info& info) {
    CastNode& node = bound.node;
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0) {
        node.mediaClass = lookUp(info.props, PW_KEY_MEDIA_CLASS);
        node.mediaRole = lookUp(info.props, PW_KEY_MEDIA_ROLE);
        node.client = lookUpId(info.props, PW_KEY_CLIENT_ID);
        node.device = !lookUp(info.props, PW_KEY_DEVICE_ID).empty() ||
                      !lookUp(info.props, PW_KEY_DEVICE_API).empty();
    }
    node.running = info.state == PW_NODE_STATE_RUNNING;
    graph_.setNode(bound.id, node);
    changed_();
}

void PipeWireConnection::clientChanged(const Bound& bound, const pw_client_info& info) {
    if ((info.change_mask & PW_CLIENT_CHANGE_MASK_PROPS) == 0) return;
    graph_.setClient(bound.id, lookUp(info.props, PW_KEY_APP_PROCESS_BINARY));
    changed_();
}

void PipeWireConnection::removed(std::uint32_t id) {
    if (const auto found = bound_.find(id); found != bound_.end()) {
        spa_hook_remove(&found->second->hook);
        pw_proxy_destroy(found->second->proxy);
        bound_.erase(found);
    }
    graph_.remove(id);
    changed_();
}

}  // namespace skavlo
