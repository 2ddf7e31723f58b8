#include "tools/rig/desktop_portal.h"

#include <gio/gio.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace skavlo::rig {

namespace {

constexpr const char* kName = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr const char* kDescription =
    "<node><interface name='org.freedesktop.portal.Settings'>"
    "<method name='Read'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='v' direction='out'/></method>"
    "<signal name='SettingChanged'><arg type='s'/><arg type='s'/><arg type='v'/></signal>"
    "</interface><interface name='org.freedesktop.portal.OpenURI'>"
    "<method name='OpenURI'><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>"
    "</interface></node>";

// What the desktop prefers: 1 is dark, 2 is light.
GVariant* schemeOf(bool dark) {
    return g_variant_new_uint32(dark ? 1 : 2);
}

}  // namespace

// Runs in a thread of its own, because whoever uses the rig waits without a main loop.
struct DesktopPortal::Service {
    explicit Service(bool itsDark) : dark(itsDark) {}
    ~Service() {
        if (loop) g_main_loop_quit(loop);
        if (thread.joinable()) thread.join();
        if (loop) g_main_loop_unref(loop);
        if (bus) g_object_unref(bus);
        if (description) g_dbus_node_info_unref(description);
        if (context) g_main_context_unref(context);
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    static void answer(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                       const char* interface, const char* /*method*/, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer service) {
        auto& self = *static_cast<Service*>(service);
        if (std::string(interface) == kInterface) {
            self.read(parameters, invocation);
        } else {
            self.openLink(parameters, invocation);
        }
    }
    void read(GVariant* parameters, GDBusMethodInvocation* invocation) const {
        const char* space = nullptr;
        const char* key = nullptr;
        g_variant_get(parameters, "(&s&s)", &space, &key);
        if (std::string(space) != kNamespace || std::string(key) != kKey) {
            g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                  "no such setting");
            return;
        }
        // A variant within a variant, as this method has always answered.
        g_dbus_method_invocation_return_value(
            invocation, g_variant_new("(v)", g_variant_new_variant(schemeOf(dark))));
    }
    void openLink(GVariant* parameters, GDBusMethodInvocation* invocation) {
        const char* link = nullptr;
        g_variant_get_child(parameters, 1, "&s", &link);
        {
            const std::lock_guard lock(mutex);
            links.emplace_back(link);
        }
        g_dbus_method_invocation_return_value(
            invocation, g_variant_new("(o)", "/org/freedesktop/portal/desktop/request/link"));
    }
    bool registerAll() {
        static const GDBusInterfaceVTable kTable{answer, nullptr, nullptr, {}};
        description = g_dbus_node_info_new_for_xml(kDescription, nullptr);
        for (GDBusInterfaceInfo** one = description->interfaces; *one; ++one) {
            if (g_dbus_connection_register_object(bus, kPath, *one, &kTable, this, nullptr,
                                                  nullptr) == 0) {
                return false;
            }
        }
        return true;
    }

    // False: the bus refuses.
    bool serve() {
        context = g_main_context_new();
        g_main_context_push_thread_default(context);
        char* address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        bus = address ? g_dbus_connection_new_for_address_sync(
                            address,
                            static_cast<GDBusConnectionFlags>(
                                G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                            nullptr, nullptr, nullptr)
                      : nullptr;
        g_free(address);
        const bool ready = bus && registerAll();
        GVariant* owned =
            ready ? g_dbus_connection_call_sync(
                        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                        "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", kName, 4U),
                        nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr)
                  : nullptr;
        g_main_context_pop_thread_default(context);
        if (!owned) return false;
        g_variant_unref(owned);
        loop = g_main_loop_new(context, FALSE);
        thread = std::thread([this] { g_main_loop_run(loop); });
        return true;
    }

    std::atomic<bool> dark;
    std::mutex mutex;
    std::vector<std::string> links;
    GMainContext* context = nullptr;
    GDBusConnection* bus = nullptr;
    GDBusNodeInfo* description = nullptr;
    GMainLoop* loop = nullptr;
    std::thread thread;
};

DesktopPortal::DesktopPortal(std::unique_ptr<Service> service) : service_(std::move(service)) {}
DesktopPortal::DesktopPortal(DesktopPortal&&) noexcept = default;
DesktopPortal& DesktopPortal::operator=(DesktopPortal&&) noexcept = default;
DesktopPortal::~DesktopPortal() = default;

Result<DesktopPortal> DesktopPortal::start(bool dark) {
    auto service = std::make_unique<Service>(dark);
    if (!service->serve()) {
        return Error{"the message bus takes no desktop portal"};
    }
    return DesktopPortal(std::move(service));
}

void DesktopPortal::setDark(bool dark) {
    service_->dark = dark;
    g_dbus_connection_emit_signal(service_->bus, nullptr, kPath, kInterface, "SettingChanged",
                                  g_variant_new("(ssv)", kNamespace, kKey, schemeOf(dark)),
                                  nullptr);
    g_dbus_connection_flush_sync(service_->bus, nullptr, nullptr);
}

std::vector<std::string> DesktopPortal::openedLinks() const {
    const std::lock_guard lock(service_->mutex);
    return service_->links;
}

}  // namespace skavlo::rig
