// Asks mutter for a cast of its screen, prints the number of the node in PipeWire on a line, and
// holds the cast until it is killed.
#include <gio/gio.h>

#include <cstdio>

namespace {

constexpr const char* kName = "org.gnome.Mutter.ScreenCast";

// The answer's first value, an object's path; null: refused.
const char* call(GDBusConnection* bus, const char* path, const char* interface, const char* method,
                 GVariant* arguments) {
    GError* error = nullptr;
    GVariant* answer =
        g_dbus_connection_call_sync(bus, kName, path, interface, method, arguments, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    if (!answer) {
        std::fprintf(stderr, "%s\n", error->message);
        return nullptr;
    }
    if (g_variant_n_children(answer) == 0) return "";
    GVariant* first = g_variant_get_child_value(answer, 0);
    return g_variant_get_string(first, nullptr);
}

void streamAdded(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                 const char* /*interface*/, const char* /*signal*/, GVariant* arguments,
                 void* /*data*/) {
    guint32 node = 0;
    g_variant_get(arguments, "(u)", &node);
    std::printf("%u\n", node);
    std::fflush(stdout);
}

}  // namespace

int main() {
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!bus) return 1;
    const char* session = call(bus, "/org/gnome/Mutter/ScreenCast", kName, "CreateSession",
                               g_variant_new("(a{sv})", static_cast<GVariantBuilder*>(nullptr)));
    if (!session) return 1;
    const char* stream =
        call(bus, session, "org.gnome.Mutter.ScreenCast.Session", "RecordMonitor",
             g_variant_new("(sa{sv})", "", static_cast<GVariantBuilder*>(nullptr)));
    if (!stream) return 1;
    g_dbus_connection_signal_subscribe(bus, nullptr, "org.gnome.Mutter.ScreenCast.Stream",
                                       "PipeWireStreamAdded", stream, nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, &streamAdded, nullptr, nullptr);
    if (!call(bus, session, "org.gnome.Mutter.ScreenCast.Session", "Start", nullptr)) return 1;
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
