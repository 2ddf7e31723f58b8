#include "platform/linux/x11/x11_window.h"

#include <unistd.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include "platform/linux/window_servers/choice.h"

namespace skavlo {

namespace {

constexpr std::uint8_t kDepth = 32;
// Another window that also insists on being the topmost one must not turn into a race.
constexpr double kRaiseAgainSeconds = 0.02;
// How often an input shape is changed behind a draw: through two frames of a display with 60 a
// second in equal steps, then in steps that double up to half a second.
constexpr double kInputShapeStepSeconds = 0.002;
constexpr int kEqualInputShapeSteps = 16;
constexpr int kInputShapeSteps = kEqualInputShapeSteps + 8;
// So many shapes follow each other in a circle. Changes that reach the compositor together must
// not come out as none.
constexpr int kInputShapes = 8;

std::vector<xcb_rectangle_t> toXcb(const std::vector<PixelRect>& rects) {
    std::vector<xcb_rectangle_t> result;
    result.reserve(rects.size());
    for (const PixelRect& rect : rects) {
        result.push_back({static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                          static_cast<std::uint16_t>(rect.width),
                          static_cast<std::uint16_t>(rect.height)});
    }
    return result;
}

}  // namespace

X11Window::X11Window(AsioRunLoop& runLoop, X11Connection& connection, X11Outputs& outputs)
    : runLoop_(runLoop), connection_(connection), outputs_(outputs), rect_(outputs.mainRect()) {
    const std::string selection = "_NET_WM_CM_S" + std::to_string(connection_.screenNumber());
    compositorSelection_ = connection_.atom(selection.c_str());
    create();
    describe();
    makeClickThrough();
    windowManagerCheck_ = connection_.atom("_NET_SUPPORTING_WM_CHECK");
    windowManagerChanged();
    refreshClock_.emplace(runLoop_, connection_, window_, [this] { refresh(); });
    resetSlots();
    compositorChanged();
    connection_.addEventHandler([this](const xcb_generic_event_t& event) { handle(event); });
    connection_.setIdleHandler([this] {
        bool drawn = opaque_ && opaque_->pollFence();
        for (const Slot& slot : slots_) drawn |= slot.buffer && slot.buffer->pollFence();
        if (drawn) becomeReady();
    });
    outputs_.addChangeHandler([this] { mainScreenChanged(); });
}

X11Window::~X11Window() {
    xcb_free_gc(connection_.get(), gc_);
    xcb_destroy_window(connection_.get(), window_);
    xcb_free_colormap(connection_.get(), colormap_);
}

void X11Window::create() {
    auto* c = connection_.get();
    colormap_ = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, colormap_, connection_.root(),
                        connection_.alphaVisual());
    window_ = xcb_generate_id(c);
    const std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                               XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const std::array<std::uint32_t, 5> values{0, 0, 1, XCB_EVENT_MASK_EXPOSURE, colormap_};
    xcb_create_window(c, kDepth, window_, connection_.root(), static_cast<std::int16_t>(rect_.x),
                      static_cast<std::int16_t>(rect_.y), static_cast<std::uint16_t>(rect_.width),
                      static_cast<std::uint16_t>(rect_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      connection_.alphaVisual(), mask, values.data());
    gc_ = xcb_generate_id(c);
    const std::uint32_t noExposures = 0;
    xcb_create_gc(c, gc_, window_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
}

void X11Window::describe() {
    auto* c = connection_.get();
    constexpr char kClass[] = "skavlo\0skavlo";
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        sizeof kClass, kClass);
    const auto set = [&](const char* name, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window_, connection_.atom(name), type, 32, 1,
                            &value);
    };
    constexpr std::uint32_t kKeepCompositing = 2;
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, connection_.atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
    set("_NET_WM_BYPASS_COMPOSITOR", XCB_ATOM_CARDINAL, kKeepCompositing);
    set("_COMPTON_SHADOW", XCB_ATOM_CARDINAL, 0);
    set("_NET_WM_PID", XCB_ATOM_CARDINAL, static_cast<std::uint32_t>(getpid()));
}

void X11Window::makeClickThrough() {
    auto* c = connection_.get();
    const auto* fixes = connection_.extension(xcb_xfixes_id);
    if (!fixes) return;
    fixesEvent_ = fixes->first_event;
    const XcbReply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0), nullptr));
    const xcb_xfixes_region_t nothing = xcb_generate_id(c);
    xcb_xfixes_create_region(c, nothing, 0, nullptr);
    xcb_xfixes_set_window_shape_region(c, window_, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
    xcb_xfixes_destroy_region(c, nothing);
    xcb_xfixes_select_selection_input(c, connection_.root(), compositorSelection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

void X11Window::windowManagerChanged() {
    auto* c = connection_.get();
    const auto property = [&](xcb_window_t window, xcb_atom_t name) {
        constexpr std::uint32_t kLargest = 16;  // in units of 4 bytes
        return XcbReply<xcb_get_property_reply_t>(xcb_get_property_reply(
            c, xcb_get_property(c, 0, window, name, XCB_ATOM_ANY, 0, kLargest), nullptr));
    };
    std::string version;
    const auto manager = property(connection_.root(), windowManagerCheck_);
    if (manager && xcb_get_property_value_length(manager.get()) == sizeof(xcb_window_t)) {
        xcb_window_t window = 0;
        std::memcpy(&window, xcb_get_property_value(manager.get()), sizeof window);
        if (const auto text = property(window, connection_.atom("_MUTTER_VERSION"))) {
            version.assign(static_cast<const char*>(xcb_get_property_value(text.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(text.get())));
        }
    }
    inputShapeIsForgotten_ = forgetsInputShapes(version);
}

// To be called before each draw. XWayland may hand the drawing on only with the compositor's next
// frame, behind the shape, so the shape changes again and again until that must be over, be the
// compositor ever so slow.
void X11Window::renewInputShape() {
    if (!inputShapeIsForgotten_) return;
    changeInputShape();
    changeInputShapeLater(0);
}

void X11Window::changeInputShapeLater(int step) {
    if (step == kInputShapeSteps) return;
    const int doublings = std::max(0, step - kEqualInputShapeSteps + 1);
    const double seconds = std::ldexp(kInputShapeStepSeconds, doublings);
    inputShapeTimer_ = runLoop_.scheduledTimer(seconds, false, [this, step] {
        changeInputShape();
        connection_.flush();
        changeInputShapeLater(step + 1);
    });
}

// Only a shape that is another one reaches the compositor. One pixel of the uppermost row does no
// harm.
void X11Window::changeInputShape() {
    inputShape_ = (inputShape_ + 1) % kInputShapes;
    const xcb_rectangle_t pixel{static_cast<std::int16_t>(inputShape_ - 1), 0, 1, 1};
    xcb_shape_rectangles(connection_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                         XCB_CLIP_ORDERING_UNSORTED, window_, 0, 0, inputShape_ == 0 ? 0U : 1U,
                         &pixel);
}

void X11Window::setHidden(bool hidden) {
    if (hidden) xcb_unmap_window(connection_.get(), window_);
}

void X11Window::makeKeyAndVisible() {
    xcb_map_window(connection_.get(), window_);
    connection_.flush();
}

void X11Window::keepOnTop() {
    onTop_ = true;
    raise();
}

void X11Window::raise() {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_.get(), window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    connection_.flush();
}

void X11Window::setFrameHandlers(FrameHandlers handlers) {
    handlers_ = std::move(handlers);
}

void X11Window::resetSlots() {
    slots_ = {};
    slots_[0].buffer =
        std::make_unique<X11Buffer>(connection_, PixelSize{rect_.width, rect_.height});
    latest_ = 0;
    frames_ = 0;
}

// The one with the last frame, where only the latest changes are missing; else the other; none is
// free: their number.
std::size_t X11Window::freeSlot() const {
    const std::size_t other = slots_.size() - 1 - latest_;
    for (const std::size_t slot : {latest_, other}) {
        if (!slots_[slot].buffer || !slots_[slot].buffer->beingRead()) return slot;
    }
    return slots_.size();
}

bool X11Window::readyForFrame() const {
    return freeSlot() < slots_.size() && !(opaque_ && opaque_->beingRead());
}

Frame X11Window::beginFrame() {
    drawing_ = freeSlot();
    Slot& slot = slots_[drawing_];
    const PixelSize size{rect_.width, rect_.height};
    if (!slot.buffer) slot.buffer = std::make_unique<X11Buffer>(connection_, size);
    // A new buffer is as empty as the window was at first, so its age is counted from there.
    const auto age = static_cast<int>(std::min<std::uint64_t>(frames_ + 1 - slot.frame, INT_MAX));
    return {slot.buffer->pixels(), size.width, size, age};
}

void X11Window::commitFrame(std::span<const PixelRect> damage) {
    anythingShown_ = true;
    latest_ = drawing_;
    slots_[latest_].frame = ++frames_;
    show(damage);
}

void X11Window::show(std::span<const PixelRect> damage) {
    renewInputShape();
    X11Buffer& frame = *slots_[latest_].buffer;
    if (composited_) {
        frame.put(window_, gc_, damage);
        return;
    }
    if (!frame.pixels() || !opaque_->pixels()) return;
    cutout_->update(frame.pixels(), opaque_->pixels(), damage);
    if (settling_) cutout_->settle();
    settling_ = false;
    cut();
    opaque_->put(window_, gc_, damage);
    if (!cutout_->settled()) refreshClock_->request();
}

void X11Window::cut() {
    const auto shape = toXcb(cutout_->runs());
    const auto cutting = xcb_shape_rectangles(
        connection_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_YX_BANDED,
        window_, 0, 0, static_cast<std::uint32_t>(shape.size()), shape.data());
    cutting_ = static_cast<std::uint16_t>(cutting.sequence);
}

void X11Window::showAll() {
    const PixelRect whole{0, 0, rect_.width, rect_.height};
    show(std::span(&whole, 1));
}

void X11Window::refresh() {
    settling_ = true;
    if (handlers_.refresh) handlers_.refresh();
    // No frame was drawn that would have done it.
    if (std::exchange(settling_, false) && cutout_ && cutout_->settle()) {
        cut();
        connection_.flush();
    }
}

void X11Window::requestRefresh() {
    refreshClock_->request();
}

void X11Window::becomeReady() {
    if (readyForFrame() && handlers_.ready) handlers_.ready();
}

void X11Window::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7f;
    refreshClock_->handle(event);
    bool read = opaque_ && opaque_->handle(event);
    for (const Slot& slot : slots_) read |= slot.buffer && slot.buffer->handle(event);
    if (read) becomeReady();
    handleStacking(event, type);
    if (type == XCB_EXPOSE) exposed(reinterpret_cast<const xcb_expose_event_t&>(event));
    const bool selectionChanged =
        fixesEvent_ >= 0 && type == fixesEvent_ + XCB_XFIXES_SELECTION_NOTIFY;
    if (selectionChanged) compositorChanged();
    if (type == XCB_PROPERTY_NOTIFY &&
        reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == windowManagerCheck_) {
        windowManagerChanged();
    }
}

void X11Window::exposed(const xcb_expose_event_t& event) {
    // What cutting the window uncovers is drawn right after the cut.
    const bool byCutting = !composited_ && event.sequence == cutting_;
    if (!anythingShown_ || byCutting) return;
    const PixelRect rect{event.x, event.y, event.width, event.height};
    renewInputShape();
    X11Buffer& shown = composited_ ? *slots_[latest_].buffer : *opaque_;
    shown.put(window_, gc_, std::span(&rect, 1));
}

void X11Window::handleStacking(const xcb_generic_event_t& event, int type) {
    xcb_window_t other = window_;
    if (type == XCB_CONFIGURE_NOTIFY) {
        other = reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
    } else if (type == XCB_MAP_NOTIFY) {
        other = reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
    } else if (type == XCB_REPARENT_NOTIFY) {
        other = reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window;
    } else if (type == XCB_CIRCULATE_NOTIFY) {
        other = reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window;
    }
    if (!onTop_ || other == window_ || other == connection_.root()) return;
    if (raiseScheduled_) return;
    // At once, and a little later again for whatever came in between.
    raise();
    raiseScheduled_ = true;
    raiseTimer_ = runLoop_.scheduledTimer(kRaiseAgainSeconds, false, [this] {
        raiseScheduled_ = false;
        raise();
    });
}

void X11Window::mainScreenChanged() {
    const PixelRect rect = outputs_.mainRect();
    if (rect != rect_) {
        const bool resized = rect.width != rect_.width || rect.height != rect_.height;
        rect_ = rect;
        const std::array<std::uint32_t, 4> values{
            static_cast<std::uint32_t>(rect.x), static_cast<std::uint32_t>(rect.y),
            static_cast<std::uint32_t>(rect.width), static_cast<std::uint32_t>(rect.height)};
        xcb_configure_window(connection_.get(), window_,
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             values.data());
        if (resized) {
            resetSlots();
            anythingShown_ = false;
            composited_ = !compositorRuns();  // makes what follows set everything up again
        }
    }
    compositorChanged();
    if (handlers_.invalidated) handlers_.invalidated();
}

bool X11Window::compositorRuns() const {
    const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection_.get(), xcb_get_selection_owner(connection_.get(), compositorSelection_),
        nullptr));
    return owner && owner->owner != XCB_NONE;
}

void X11Window::compositorChanged() {
    const bool runs = compositorRuns();
    const bool same = runs == composited_ && (runs || cutout_);
    if (same) {
        // A new compositor in the place of an old one starts without the window's contents.
        if (anythingShown_) showAll();
        return;
    }
    composited_ = runs;
    auto* c = connection_.get();
    if (composited_) {
        cutout_.reset();
        opaque_.reset();
        xcb_shape_mask(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window_, 0, 0, XCB_NONE);
    } else {
        const PixelSize size{rect_.width, rect_.height};
        cutout_ = std::make_unique<Cutout>(size);
        opaque_ = std::make_unique<X11Buffer>(connection_, size);
        xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                             XCB_CLIP_ORDERING_YX_BANDED, window_, 0, 0, 0, nullptr);
    }
    // With a compositor the window begins transparent; without one it must not blank what lies
    // below while it is being cut.
    const std::uint32_t background = 0;  // the pixel 0, or no pixmap
    xcb_change_window_attributes(c, window_, composited_ ? XCB_CW_BACK_PIXEL : XCB_CW_BACK_PIXMAP,
                                 &background);
    if (anythingShown_) showAll();
    connection_.flush();
}

}  // namespace skavlo
