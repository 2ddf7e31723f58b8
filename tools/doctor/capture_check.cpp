#include <xcb/xcb.h>

#include <algorithm>
#include <string>
#include <utility>

#include "platform/linux/capture/event_socket_source.h"
#include "platform/linux/capture/mirror_source.h"
#include "platform/linux/capture/pipewire_source.h"
#include "platform/linux/capture/process_events.h"
#include "platform/linux/capture/x_grab_source.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/posix/unix_socket.h"
#include "tools/doctor/checks.h"
#include "tools/doctor/overlay_view.h"

namespace skavlo::doctor {

namespace {

Finding known(Text what) {
    return {"capture", Level::ok, std::move(what)};
}

Finding unknown(Text what, Text advice) {
    return {"capture", Level::warn, std::move(what), std::move(advice)};
}

Finding pipeWire() {
    const auto path = pipeWireSocket();
    if (path && connectToSocket(*path)) {
        return known(
            {"能发现经 PipeWire 的录屏与投屏", "casts of the screen through PipeWire are noticed"});
    }
    return unknown({"连接不到 PipeWire，录屏门户的录制不会被发现",
                    "PipeWire cannot be reached: recordings through the desktop portal go "
                    "unnoticed"},
                   {"安装并启动 pipewire 与 wireplumber，检查 XDG_RUNTIME_DIR",
                    "install and start pipewire and wireplumber, look at XDG_RUNTIME_DIR"});
}

Finding xGrabs() {
    AsioRunLoop loop;
    auto source = XGrabSource::open(loop, {.connect = [] { return xcb_connect(nullptr, nullptr); },
                                           .screenSize = [] { return PixelSize{}; }});
    if (source) {
        return known({"能发现从 X 服务器读取屏幕的程序",
                      "programs that read the screen from the X server are noticed"});
    }
    return unknown(
        {"不能发现从 X 服务器读取屏幕的程序：" + source.error().message,
         "programs that read the screen from the X server go unnoticed: " + source.error().message},
        {"启用 X 服务器的 RECORD 扩展", "enable the X server's extension RECORD"});
}

Finding events(const std::string& path) {
    if (connectToSocket(path)) {
        return known({"合成器会通知录屏", "the compositor tells of recordings"});
    }
    return unknown({"合成器的事件套接字没有应答：" + path,
                    "the compositor's event socket does not answer: " + path},
                   {"在该合成器的会话中运行", "run it in that compositor's session"});
}

Finding processes(const Surroundings& surroundings) {
    auto opened = ProcessEvents::open();
    if (opened || (surroundings.user != 0 && overlayIsRoot(surroundings)))
        return known({"能发现已知录屏程序的启动", "the start of well-known recorders is noticed"});
    if (surroundings.user != 0) {
        return unknown(
            {"以你的权限不能发现录屏程序的启动",
             "with your rights the start of recorders goes unnoticed"},
            {"让覆盖层以 root 运行（见 helper）", "let the overlay run as root (see helper)"});
    }
    return unknown(
        {"内核不通知录屏程序的启动：" + opened.error().message,
         "the kernel does not tell of the start of recorders: " + opened.error().message},
        {"使用启用了 CONFIG_PROC_EVENTS 的内核，不要在容器中运行",
         "use a kernel with CONFIG_PROC_EVENTS, outside of containers"});
}

Finding nothingKnown() {
    return {"capture",
            Level::warn,
            {"无法得知屏幕是否被录制：开启“仅录屏时显示”后标记一直隐藏",
             "it cannot be told whether the screen is captured: markers that show in recordings "
             "only stay hidden"},
            {"处理以上各项之一，或关闭“仅录屏时显示”",
             "see to one of the lines above, or turn off \"Show in Record Only\""}};
}

}  // namespace

Findings judgeMirroring(const OutputLayout& layout) {
    if (!isMirrored(layout)) return {};
    return {known({"多个输出显示同一画面（镜像），视为正在录屏：开启“仅录屏时显示”时标记照常显示",
                   "outputs are mirrored, which counts as a capture of the screen: with \"Show in "
                   "Record Only\" the markers are shown"})};
}

Findings withVerdict(Findings sources) {
    const bool anything = std::any_of(sources.begin(), sources.end(), [](const Finding& source) {
        return source.level == Level::ok;
    });
    if (!anything) sources.push_back(nothingKnown());
    return sources;
}

Findings checkCapture(const Surroundings& surroundings) {
    Findings sources{pipeWire()};
    if (!surroundings.value("DISPLAY").empty()) sources.push_back(xGrabs());
    if (const auto path = compositorEventSocket(surroundings.variable))
        sources.push_back(events(*path));
    sources.push_back(processes(surroundings));
    if (const auto view = overlayView(surroundings)) {
        for (Finding& finding : judgeMirroring(view->layout)) sources.push_back(std::move(finding));
    }
    return withVerdict(std::move(sources));
}

}  // namespace skavlo::doctor
