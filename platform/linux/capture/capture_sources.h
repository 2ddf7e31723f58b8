#pragma once

#include <xcb/xcb.h>

#include <functional>

#include "platform/linux/capture/capture_monitor.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/output_layout.h"

namespace skavlo {

struct CaptureSourceOptions {
    std::function<xcb_connection_t*()> connectX;
    OutputLayoutProvider layout;
};

// Adds every source that this machine and this process's rights allow, mirrored outputs excepted:
// whoever knows the outputs adds that one and tells it of changes.
void addCaptureSources(CaptureMonitor& monitor, AsioRunLoop& runLoop, CaptureSourceOptions options);

}  // namespace skavlo
