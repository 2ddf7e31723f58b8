// input_dump WIDTH HEIGHT: the product's input, one line per change, until its input ends.
//   source NAME
//   0|1 [INDEX down|up X,Y] ...     parent touch; children, in points of a WIDTH x HEIGHT screen
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/input/input_selector.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/loop/descriptor_watch.h"

namespace {

struct Screen {
    int width;
    int height;
};

// The place in points, as the overlay reads it.
skavlo::Point place(const skavlo::HidEvent& child, const Screen& screen) {
    if (child.x >= 0 && child.x <= 2 && child.y >= 0 && child.y <= 2)
        return {child.x * std::min(screen.width, screen.height),
                child.y * std::max(screen.width, screen.height)};
    return {child.x, child.y};
}

void print(void* target, void*, void*, const skavlo::HidEvent& event) {
    const auto& screen = *static_cast<const Screen*>(target);
    std::printf("%d", static_cast<int>(event.touch));
    for (const skavlo::HidEvent& child : event.children) {
        const skavlo::Point point = place(child, screen);
        std::printf(" [%d %s %.1f,%.1f]", static_cast<int>(child.index),
                    child.touch ? "down" : "up", point.x, point.y);
    }
    std::putchar('\n');
}

}  // namespace

int main(int count, char** arguments) {
    Screen screen{count == 3 ? std::atoi(arguments[1]) : 0,
                  count == 3 ? std::atoi(arguments[2]) : 0};
    if (screen.width <= 0 || screen.height <= 0) {
        std::fputs("usage: input_dump WIDTH HEIGHT\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    skavlo::AsioRunLoop loop;
    skavlo::InputOptions options;
    options.layout = [&] {
        skavlo::OutputLayout layout;
        layout.desktop = {screen.width, screen.height};
        return layout;
    };
    skavlo::InputSelector selector(loop.context(), std::move(options));
    selector.setSourceHandler(
        [](skavlo::InputSourceKind kind) { std::printf("source %s\n", skavlo::name(kind)); });
    selector.registerEventCallback(&print, &screen, nullptr);
    selector.scheduleWithMainRunLoop();
    std::puts("ready");
    skavlo::DescriptorWatch end(loop.context(), STDIN_FILENO, [&] { loop.stop(0); });
    return loop.run();
}
