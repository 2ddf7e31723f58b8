#include "platform/linux/wayland/wayland_window.h"

#include <utility>

namespace skavlo {

namespace {
constexpr std::uint32_t kContextId = 1;  // a compositor knows the layer and asks for no id
constexpr const char* kNamespace = "skavlo";
}  // namespace

WaylandWindow::WaylandWindow(AsioRunLoop& runLoop, WaylandConnection& connection,
                             WaylandGlobals& globals, WaylandOutputs& outputs)
    : runLoop_(runLoop), connection_(connection), globals_(globals), outputs_(outputs) {}

WaylandWindow::~WaylandWindow() {
    drop();
    connection_.flush();
}

std::uint32_t WaylandWindow::contextId() const {
    return kContextId;
}

void WaylandWindow::setHidden(bool hidden) {
    if (!hidden) return;
    visible_ = false;
    drop();
    connection_.flush();
}

void WaylandWindow::makeKeyAndVisible() {
    visible_ = true;
    settle();
    connection_.flush();
}

void WaylandWindow::setFrameHandlers(FrameHandlers handlers) {
    handlers_ = std::move(handlers);
}

void WaylandWindow::settle() {
    if (surface_ && (surface_->closed || surface_->output != outputs_.mainName())) drop();
    const bool staysClosed =
        closedAtChange_ == outputChanges_ && closedOnOutput_ == outputs_.mainName();
    if (visible_ && !surface_ && outputs_.main() && !staysClosed) create();
    if (!surface_) return;
    if (surface_->serial) {
        zwlr_layer_surface_v1_ack_configure(surface_->layer.get(), *surface_->serial);
        surface_->serial.reset();
    }
    if (surface_->points != PixelSize{}) adapt();
}

void WaylandWindow::create() {
    surface_ = std::make_unique<Surface>();
    Surface& surface = *surface_;
    surface.output = outputs_.mainName();
    surface.surface.reset(wl_compositor_create_surface(globals_.compositor.get()));
    if (globals_.viewporter) {
        surface.viewport.reset(
            wp_viewporter_get_viewport(globals_.viewporter.get(), surface.surface.get()));
    }
    outputs_.setPreferredScale(std::nullopt);
    if (globals_.viewporter && globals_.fractionalScale) listenScale(surface);
    createLayer(surface);
    const WaylandPointer<wl_region> nothing(wl_compositor_create_region(globals_.compositor.get()));
    wl_surface_set_input_region(surface.surface.get(), nothing.get());
    wl_surface_commit(surface.surface.get());  // asks for the first configure
}

void WaylandWindow::createLayer(Surface& surface) {
    constexpr std::uint32_t kAllSides =
        ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
        ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
    constexpr std::int32_t kOverPanels = -1;
    constexpr std::uint32_t kNoKeyboard = 0;
    static constexpr zwlr_layer_surface_v1_listener kListener{
        .configure =
            [](void* data, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t width,
               std::uint32_t height) {
                auto& self = *static_cast<Surface*>(data);
                self.serial = serial;
                self.points = {static_cast<int>(width), static_cast<int>(height)};
            },
        .closed = [](void* data,
                     zwlr_layer_surface_v1*) { static_cast<Surface*>(data)->closed = true; }};
    surface.layer.reset(zwlr_layer_shell_v1_get_layer_surface(
        globals_.layerShell.get(), surface.surface.get(), outputs_.main(),
        ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, kNamespace));
    auto* layer = surface.layer.get();
    zwlr_layer_surface_v1_add_listener(layer, &kListener, &surface);
    zwlr_layer_surface_v1_set_size(layer, 0, 0);
    zwlr_layer_surface_v1_set_anchor(layer, kAllSides);
    zwlr_layer_surface_v1_set_exclusive_zone(layer, kOverPanels);
    zwlr_layer_surface_v1_set_keyboard_interactivity(layer, kNoKeyboard);
}

void WaylandWindow::listenScale(Surface& surface) {
    static constexpr wp_fractional_scale_v1_listener kListener{
        .preferred_scale = [](void* data, wp_fractional_scale_v1*, std::uint32_t scale) {
            static_cast<WaylandOutputs*>(data)->setPreferredScale(scale);
        }};
    surface.fractionalScale.reset(wp_fractional_scale_manager_v1_get_fractional_scale(
        globals_.fractionalScale.get(), surface.surface.get()));
    wp_fractional_scale_v1_add_listener(surface.fractionalScale.get(), &kListener, &outputs_);
}

void WaylandWindow::drop() {
    if (!surface_) return;
    if (surface_->closed) {
        closedAtChange_ = outputChanges_;
        closedOnOutput_ = surface_->output;
    }
    surface_.reset();
    buffers_.reset();
    uncommitted_ = false;
}

// New buffers where size or scale are others.
void WaylandWindow::adapt() {
    const double scale = outputs_.scale();
    const PixelSize pixels = bufferSize(surface_->points, scale);
    if (buffers_ && buffers_->size() == pixels && scale_ == scale) return;
    const bool resized = !buffers_ || buffers_->size() != pixels;
    scale_ = scale;
    auto* surface = surface_->surface.get();
    if (surface_->viewport) {
        wp_viewport_set_destination(surface_->viewport.get(), surface_->points.width,
                                    surface_->points.height);
    } else {
        wl_surface_set_buffer_scale(surface, static_cast<int>(scale));
    }
    // Whoever draws starts from nothing in a new size, but not on a surface made anew in the old.
    if (resized) {
        buffers_ =
            std::make_unique<ShmBuffers>(*globals_.shm, pixels, pixels != committedSize_, [this] {
                if (readyForFrame() && handlers_.ready) handlers_.ready();
            });
    }
    if (handlers_.invalidated) handlers_.invalidated();
    if (refreshWanted_) askForFrame();
}

bool WaylandWindow::readyForFrame() const {
    return buffers_ && buffers_->available();
}

Frame WaylandWindow::beginFrame() {
    const ShmBuffers::Draw draw = buffers_->begin();
    return {draw.pixels, buffers_->size().width, buffers_->size(), draw.age};
}

void WaylandWindow::commitFrame(std::span<const PixelRect> damage) {
    auto* surface = surface_->surface.get();
    wl_surface_attach(surface, buffers_->commit(), 0, 0);
    for (const PixelRect& rect : damage) {
        wl_surface_damage_buffer(surface, rect.x, rect.y, rect.width, rect.height);
    }
    if (surface_->frame) askForFeedback();
    wl_surface_commit(surface);
    uncommitted_ = false;
    committedSize_ = buffers_->size();
    connection_.flush();
}

void WaylandWindow::requestRefresh() {
    refreshWanted_ = true;
    askForFrame();
}

// Goes out with the frame that is drawn next, or by itself when none is.
void WaylandWindow::askForFrame() {
    if (!readyForFrame() || surface_->frame) return;
    static constexpr wl_callback_listener kListener{
        .done = [](void* data, wl_callback*, std::uint32_t) {
            static_cast<WaylandWindow*>(data)->refreshed();
        }};
    surface_->frame.reset(wl_surface_frame(surface_->surface.get()));
    wl_callback_add_listener(surface_->frame.get(), &kListener, this);
    uncommitted_ = true;
    runLoop_.async([this, alive = std::weak_ptr(alive_)] {
        if (alive.expired() || !std::exchange(uncommitted_, false)) return;
        wl_surface_commit(surface_->surface.get());
        connection_.flush();
    });
}

void WaylandWindow::refreshed() {
    surface_->frame.reset();
    refreshWanted_ = false;
    if (handlers_.refresh) handlers_.refresh();
}

// Only frames of an animation are followed, one at a time: nobody else asks for the time.
void WaylandWindow::askForFeedback() {
    if (!globals_.presentation || !presentationIsMonotonic_ || surface_->feedback) return;
    static constexpr wp_presentation_feedback_listener kListener{
        .sync_output = [](void*, struct wp_presentation_feedback*, wl_output*) {},
        .presented =
            [](void* data, struct wp_presentation_feedback*, std::uint32_t secondsHigh,
               std::uint32_t secondsLow, std::uint32_t nanoseconds, std::uint32_t refresh,
               std::uint32_t, std::uint32_t, std::uint32_t) {
                auto& self = *static_cast<WaylandWindow*>(data);
                const std::uint64_t seconds = std::uint64_t{secondsHigh} << 32U | secondsLow;
                self.presented_ = {seconds * kNanosecondsPerSecond + nanoseconds, refresh};
                self.surface_->feedback.reset();
            },
        .discarded =
            [](void* data, struct wp_presentation_feedback*) {
                static_cast<WaylandWindow*>(data)->surface_->feedback.reset();
            }};
    surface_->feedback.reset(
        wp_presentation_feedback(globals_.presentation.get(), surface_->surface.get()));
    wp_presentation_feedback_add_listener(surface_->feedback.get(), &kListener, this);
}

MachTime WaylandWindow::presentationTime(MachTime now) const {
    return nextPresentation(presented_, now);
}

}  // namespace skavlo
