#include "tests/e2e/wayland/extended/bus_client.h"

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

namespace skavlo {

namespace {

constexpr int kTimeoutMilliseconds = 20'000;

Error take(GError* error) {
    Error result{error ? error->message : "no answer"};
    g_clear_error(&error);
    return result;
}

}  // namespace

Result<BusClient> BusClient::connect(const WaylandSession& session) {
    if (seteuid(kSessionUser) != 0) return Error{"cannot become the session's user"};
    GError* error = nullptr;
    GDBusConnection* connection = g_dbus_connection_new_for_address_sync(
        session.busAddress().c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (seteuid(0) != 0) return Error{"cannot become root again"};
    if (!connection) return take(error);
    return BusClient(connection);
}

Result<Variant> BusClient::call(const Method& method, GVariant* arguments, int descriptor) {
    GUnixFDList* descriptors = nullptr;
    if (descriptor >= 0) descriptors = g_unix_fd_list_new_from_array(&descriptor, 1);
    GError* error = nullptr;
    GVariant* answer = g_dbus_connection_call_with_unix_fd_list_sync(
        connection_.get(), method.service, method.path.c_str(), method.interface, method.name,
        arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, kTimeoutMilliseconds, descriptors, nullptr,
        nullptr, &error);
    if (descriptors) g_object_unref(descriptors);
    if (!answer) return take(error);
    return Variant(answer);
}

Result<Bitmap> captureKWin(BusClient& bus, const std::string& output) {
    // It writes from a thread of its own while it answers, and into whatever it is given.
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return Error{"no pipe"};
    const rig::FileDescriptor from(ends[0]);
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&options, "{sv}", "native-resolution", g_variant_new_boolean(TRUE));
    auto answer = bus.call(
        {"org.kde.KWin", "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureScreen"},
        g_variant_new("(sa{sv}h)", output.c_str(), &options, 0), ends[1]);
    // The list took the other end over.
    if (!answer) return answer.error();
    const Variant results(g_variant_get_child_value(answer->get(), 0));
    guint32 width = 0;
    guint32 height = 0;
    guint32 stride = 0;
    g_variant_lookup(results.get(), "width", "u", &width);
    g_variant_lookup(results.get(), "height", "u", &height);
    g_variant_lookup(results.get(), "stride", "u", &stride);
    if (width == 0 || height == 0 || stride != width * 4)
        return Error{"an unknown kind of picture"};
    Bitmap picture{{static_cast<int>(width), static_cast<int>(height)}, {}};
    picture.pixels.resize(std::size_t{width} * height);
    auto* bytes = reinterpret_cast<char*>(picture.pixels.data());
    std::size_t missing = picture.pixels.size() * sizeof(std::uint32_t);
    while (missing > 0) {
        const ssize_t length = read(from.get(), bytes, missing);
        if (length <= 0) return Error{"the picture ends early"};
        bytes += length;
        missing -= static_cast<std::size_t>(length);
    }
    return picture;
}

}  // namespace skavlo
