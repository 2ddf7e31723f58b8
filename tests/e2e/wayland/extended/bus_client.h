// Calls on a session's message bus.
#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "platform/bitmap.h"
#include "platform/result.h"
#include "tests/e2e/wayland/wayland_session.h"

namespace skavlo {

struct VariantRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantRelease>;

class BusClient {
  public:
    // Under the session's user, who alone is let in.
    static Result<BusClient> connect(const WaylandSession& session);

    struct Method {
        const char* service;
        std::string path;
        const char* interface;
        const char* name;
    };
    // `arguments`: a tuple, taken over; null: none. `descriptor`: goes along; -1: none.
    Result<Variant> call(const Method& method, GVariant* arguments = nullptr, int descriptor = -1);

  private:
    struct Release {
        void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    };
    explicit BusClient(GDBusConnection* connection) : connection_(connection) {}
    std::unique_ptr<GDBusConnection, Release> connection_;
};

// KWin's picture of an output, in the output's own pixels.
Result<Bitmap> captureKWin(BusClient& bus, const std::string& output);

}  // namespace skavlo
