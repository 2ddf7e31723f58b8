#include "platform/linux/capture/capture_sources.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/capture/event_socket_source.h"
#include "platform/linux/capture/pipewire_source.h"
#include "platform/linux/capture/process_source.h"
#include "platform/linux/capture/x_grab_source.h"

namespace skavlo {

namespace {

PixelSize mainScreenSize(const OutputLayout& layout) {
    if (layout.main >= layout.outputs.size()) return layout.desktop;
    const PixelRect& rect = layout.outputs[layout.main].rect;
    return {rect.width, rect.height};
}

template <typename Source>
void addOpened(CaptureMonitor& monitor, Result<std::unique_ptr<Source>> source) {
    if (source) monitor.add(std::move(*source));
}

}  // namespace

void addCaptureSources(CaptureMonitor& monitor, AsioRunLoop& runLoop,
                       CaptureSourceOptions options) {
    XGrabOptions grabs;
    grabs.connect = std::move(options.connectX);
    grabs.screenSize = [layout = std::move(options.layout)] { return mainScreenSize(layout()); };
    addOpened(monitor, XGrabSource::open(runLoop, std::move(grabs)));
    if (auto socket = pipeWireSocket())
        monitor.add(std::make_unique<PipeWireSource>(runLoop, std::move(*socket)));
    if (const auto socket = compositorEventSocket(&std::getenv))
        addOpened(monitor, EventSocketSource::open(runLoop, *socket));
    addOpened(monitor, ProcessSource::open(runLoop, knownRecorders()));
}

}  // namespace skavlo
