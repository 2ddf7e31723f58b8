// From a touch written to the device to the first changed pixel read back from the root window:
// the overlay beside the least program that can do it, in turns on servers of the same kind.
#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

#include <chrono>
#include <cstring>

#include "bench/bench_rig.h"
#include "bench/samples.h"
#include "tools/rig/overlay_window.h"

namespace skavlo::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTouches = 60;
constexpr int kSide = 24;  // of the square that is read back, inside the marker at half its size
constexpr Point kPlace{900, 500};
constexpr std::uint32_t kBackground = 0x204060;

// A window, for what compositors make of an empty root window is their own affair.
void showBackground(const rig::Display& display) {
    const xcb_window_t window = xcb_generate_id(display.get());
    const std::uint32_t values[] = {kBackground, 1};
    xcb_create_window(display.get(), XCB_COPY_FROM_PARENT, window, display.root(), 0, 0,
                      kScreen.width, kScreen.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(display.get(), window);
    display.sync();
}

// Reads one small square of the root window as fast as it goes.
class Square {
  public:
    explicit Square(const rig::Display& display)
        : display_(display), id_(shmget(IPC_PRIVATE, kSide * kSide * 4, IPC_CREAT | 0600)) {
        pixels_ = static_cast<std::uint32_t*>(shmat(id_, nullptr, 0));
        segment_ = xcb_generate_id(display_.get());
        xcb_shm_attach(display_.get(), segment_, static_cast<std::uint32_t>(id_), 0);
        display_.sync();
        shmctl(id_, IPC_RMID, nullptr);
    }
    ~Square() {
        xcb_shm_detach(display_.get(), segment_);
        shmdt(pixels_);
    }
    Square(const Square&) = delete;
    Square& operator=(const Square&) = delete;

    void takeAsBlank() {
        read();
        blank_ = middle();
    }
    // False at the deadline.
    bool waitForChange(bool toBlank) {
        const auto deadline = Clock::now() + std::chrono::seconds(5);
        while ((middle() == blank_) != toBlank) {
            if (Clock::now() > deadline) return false;
            read();
        }
        return true;
    }

  private:
    [[nodiscard]] std::uint32_t middle() const {
        return pixels_[kSide / 2 * kSide + kSide / 2] & 0xffffffU;
    }
    void read() {
        const auto cookie = xcb_shm_get_image(
            display_.get(), display_.root(), static_cast<std::int16_t>(kPlace.x - kSide / 2.0),
            static_cast<std::int16_t>(kPlace.y - kSide / 2.0), kSide, kSide, ~0U,
            XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, 0);
        std::free(xcb_shm_get_image_reply(display_.get(), cookie, nullptr));
    }

    const rig::Display& display_;
    int id_;
    std::uint32_t* pixels_;
    xcb_shm_seg_t segment_;
    std::uint32_t blank_ = kBackground;
};

Samples measure(const std::vector<std::string>& program, bool composited) {
    rig::XServer server = startServer();
    std::optional<rig::Compositor> compositor;
    if (composited) compositor = orDie(rig::Compositor::start(server));
    const rig::Display display = orDie(server.connect());
    showBackground(display);
    Square square(display);
    if (!square.waitForChange(true)) std::exit(1);
    const rig::Child child = startProgram(server, program);
    const rig::Deadline patience(std::chrono::seconds(20));
    if (!rig::waitForOverlayWindow(display, patience, {child.endDescriptor()})) std::exit(1);
    // The first touches show when the program listens and everything has been drawn once.
    Samples samples;
    // Without a compositor the least program turns the screen black: that is its background.
    if (!composited) square.takeAsBlank();
    if (!square.waitForChange(true)) std::exit(1);
    for (int i = -5; i < kTouches; ++i) {
        const auto begin = Clock::now();
        server.touch()->begin(0, kPlace);
        if (!square.waitForChange(false)) {
            server.touch()->end(0);
            continue;
        }
        const std::chrono::duration<double, std::milli> passed = Clock::now() - begin;
        if (i >= 0) samples.add(passed.count());
        server.touch()->end(0);
        if (!square.waitForChange(true)) break;
    }
    return samples;
}

void compare(const std::string& overlay, const std::string& floor, bool composited) {
    const Samples least = measure({floor}, composited);
    const Samples ours = measure({overlay, "-hud"}, composited);
    const char* how = composited ? "composited" : "no compositor";
    printRow(std::string("touch to first changed pixel, ") + how + ", median", ours.median(),
             1.5 * least.median(), "ms");
    std::printf(
        "  floor: minimum %.3f, median %.3f, p99 %.3f ms; overlay: minimum %.3f, p99 %.3f ms;"
        " %zu and %zu touches\n",
        least.minimum(), least.median(), least.quantile(0.99), ours.minimum(), ours.quantile(0.99),
        least.count(), ours.count());
}

}  // namespace
}  // namespace skavlo::bench

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "Usage: touch_latency OVERLAY FLOOR\n");
        return 2;
    }
    skavlo::bench::compare(argv[1], argv[2], false);
    skavlo::bench::compare(argv[1], argv[2], true);
}
