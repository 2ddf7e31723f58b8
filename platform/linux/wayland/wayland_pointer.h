#pragma once

#include <fractional-scale-v1.h>
#include <layer_shell.h>
#include <presentation-time.h>
#include <viewporter.h>
#include <wayland-client.h>
#include <xdg-output-unstable-v1.h>

#include <memory>

namespace skavlo {

// Says goodbye to an object in the way its interface wants it.
struct WaylandRelease {
    void operator()(wl_registry* object) const { wl_registry_destroy(object); }
    void operator()(wl_compositor* object) const { wl_compositor_destroy(object); }
    void operator()(wl_surface* object) const { wl_surface_destroy(object); }
    void operator()(wl_callback* object) const { wl_callback_destroy(object); }
    void operator()(wl_shm* object) const { wl_shm_destroy(object); }
    void operator()(wl_shm_pool* object) const { wl_shm_pool_destroy(object); }
    void operator()(wl_buffer* object) const { wl_buffer_destroy(object); }
    void operator()(wl_region* object) const { wl_region_destroy(object); }
    void operator()(wl_output* object) const {
        if (wl_output_get_version(object) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
            wl_output_release(object);
        } else {
            wl_output_destroy(object);
        }
    }
    void operator()(zxdg_output_manager_v1* object) const {
        zxdg_output_manager_v1_destroy(object);
    }
    void operator()(zxdg_output_v1* object) const { zxdg_output_v1_destroy(object); }
    // Before version 3 it cannot be destroyed on the other side.
    void operator()(zwlr_layer_shell_v1* object) const { zwlr_layer_shell_v1_destroy(object); }
    void operator()(zwlr_layer_surface_v1* object) const { zwlr_layer_surface_v1_destroy(object); }
    void operator()(wp_viewporter* object) const { wp_viewporter_destroy(object); }
    void operator()(wp_viewport* object) const { wp_viewport_destroy(object); }
    void operator()(wp_fractional_scale_manager_v1* object) const {
        wp_fractional_scale_manager_v1_destroy(object);
    }
    void operator()(wp_fractional_scale_v1* object) const {
        wp_fractional_scale_v1_destroy(object);
    }
    void operator()(wp_presentation* object) const { wp_presentation_destroy(object); }
    void operator()(struct wp_presentation_feedback* object) const {
        wp_presentation_feedback_destroy(object);
    }
};

template <typename T>
using WaylandPointer = std::unique_ptr<T, WaylandRelease>;

}  // namespace skavlo
