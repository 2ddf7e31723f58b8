// The least program that can show a touch: listens to raw touches and fills one disc with core X.
// It is the floor that the overlay's latency is measured against.
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::int16_t kDiameter = 55;
constexpr double kAxisRange = 65536;

xcb_visualid_t findAlphaVisual(const xcb_screen_t* screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem;
         xcb_depth_next(&depth)) {
        if (depth.data->depth == 32) return xcb_depth_visuals(depth.data)->visual_id;
    }
    return 0;
}

xcb_window_t makeWindow(xcb_connection_t* c, const xcb_screen_t* screen) {
    const xcb_visualid_t visual = findAlphaVisual(screen);
    const xcb_colormap_t colormap = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, colormap, screen->root, visual);
    const xcb_window_t window = xcb_generate_id(c);
    const std::uint32_t values[] = {0, 0, 1, colormap};
    xcb_create_window(
        c, 32, window, screen->root, 0, 0, screen->width_in_pixels, screen->height_in_pixels, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
        values);
    const char name[] = "skavlo\0skavlo";
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        sizeof name, name);
    xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, 0, window, 0, 0, 0, nullptr);
    return window;
}

void selectRawTouches(xcb_connection_t* c, xcb_window_t root) {
    free(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection = {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                   XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END};
    xcb_input_xi_select_events(c, root, 1, &selection.head);
}

}  // namespace

int main() {
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c)) return 1;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_window_t window = makeWindow(c, screen);
    const xcb_gcontext_t gc = xcb_generate_id(c);
    const std::uint32_t grey = 0xffaaaaaa;
    xcb_create_gc(c, gc, window, XCB_GC_FOREGROUND, &grey);
    selectRawTouches(c, screen->root);
    xcb_map_window(c, window);
    xcb_flush(c);
    while (xcb_generic_event_t* event = xcb_wait_for_event(c)) {
        if ((event->response_type & 0x7f) == XCB_GE_GENERIC) {
            const auto* raw = reinterpret_cast<xcb_input_raw_touch_begin_event_t*>(event);
            const auto* values = xcb_input_raw_touch_begin_axisvalues(raw);
            const double x = values[0].integral / kAxisRange * screen->width_in_pixels;
            const double y = values[1].integral / kAxisRange * screen->height_in_pixels;
            const auto left = static_cast<std::int16_t>(x - kDiameter / 2.0);
            const auto top = static_cast<std::int16_t>(y - kDiameter / 2.0);
            if (raw->event_type == XCB_INPUT_RAW_TOUCH_BEGIN) {
                const xcb_arc_t disc{left, top, kDiameter, kDiameter, 0, 360 * 64};
                xcb_poly_fill_arc(c, window, gc, 1, &disc);
            } else {
                xcb_clear_area(c, 0, window, 0, 0, 0, 0);
            }
            xcb_flush(c);
        }
        free(event);
    }
}
