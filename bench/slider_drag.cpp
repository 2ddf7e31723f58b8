// How long the settings application's main thread is busy at a stretch while a slider is dragged:
// the real screen, drawn in software on a private X server, saving to a real file.
#include <QFont>
#include <QGuiApplication>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

#include "bench/bench_rig.h"
#include "bench/samples.h"
#include "platform/linux/image/child_image_shrinker.h"
#include "platform/linux/notify/socket_notification_poster.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/posix_spawner.h"
#include "platform/linux/posix/system_wall_clock.h"
#include "platform/linux/posix/worker_queue.h"
#include "platform/linux/qt/qt_run_loop.h"
#include "tools/rig/pointer.h"
#include "ui/settings_view_controller.h"
#include "ui/shell/settings_screen.h"
#include "ui/shell/settings_window.h"

namespace skavlo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::chrono::microseconds kStep(16'667);
constexpr int kSteps = 600;
constexpr int kDragLength = 60;  // steps between two releases, each of which saves
// The slider "Circle Size", in the window at the screen's corner, at scale 1.
constexpr int kTrackLeft = 175;
constexpr int kTrackLength = 100;
constexpr int kTrackY = 766;

PixelPoint placeAt(int step) {
    const int phase = step % (2 * kTrackLength);
    return {kTrackLeft + (phase < kTrackLength ? phase : 2 * kTrackLength - phase), kTrackY};
}

void dragAlong(const rig::XServer& server) {
    const rig::Display display = orDie(server.connect());
    rig::Pointer pointer(display);
    auto next = Clock::now();
    for (int step = 0; step < kSteps; ++step) {
        pointer.moveTo(placeAt(step));
        if (step % kDragLength == 0) pointer.press();
        if (step % kDragLength == kDragLength - 1) pointer.release();
        std::this_thread::sleep_until(next += kStep);
    }
}

// Takes the time of every event that Qt delivers, with all that it causes; drawing is one of them.
class TimedApplication final : public QGuiApplication {
  public:
    using QGuiApplication::QGuiApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        const bool outermost = depth_++ == 0;
        const auto begin = Clock::now();
        const bool handled = QGuiApplication::notify(receiver, event);
        --depth_;
        if (outermost && measuring) busy.add(Milliseconds(Clock::now() - begin).count());
        return handled;
    }

    bool measuring = false;
    Samples busy;

  private:
    int depth_ = 0;
};

void measureDrag(TimedApplication& application, const rig::XServer& server) {
    std::thread hand;
    constexpr std::chrono::seconds kSplashAndMore(2);
    QTimer::singleShot(kSplashAndMore, [&] {
        application.measuring = true;
        hand = std::thread([&] {
            dragAlong(server);
            QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
        });
    });
    QGuiApplication::exec();
    application.measuring = false;
    hand.join();
}

int measure(int argc, char** argv) {
    const rig::XServer server = startServer();
    server.enterEnvironment();
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_QUICK_BACKEND", "software");
    TimedApplication application(argc, argv);
    QFont font;
    font.setFamilies(fontFamilies());
    QGuiApplication::setFont(font);

    const auto directory = std::filesystem::temp_directory_path() / "skavlo-slider-drag";
    std::filesystem::create_directories(directory / "Caches");
    QtRunLoop runLoop;
    const SystemWallClock clock;
    PosixFiles files;
    const PlistPropertyLists propertyLists;
    SocketNotificationPoster notifications(directory);
    PosixSpawner spawner;
    ChildImageShrinker imageShrinker(runLoop, "/bin/false");
    ApplicationNotifications events;
    SettingsSystem system{
        .mainQueue = runLoop,
        .dispatch_queue_create =
            [](const char* label) { return std::make_unique<WorkerQueue>(label); },
        .clock = clock,
        .files = files,
        .propertyLists = propertyLists,
        .notifications = notifications,
        .spawner = spawner,
        .imageShrinker = imageShrinker,
        .application = events,
        .directory = SettingsDirectory(directory.string() + "/"),
        .executablePath = "/bin/false",
        .about = {"1.0", "", ""}};
    SettingsScreen screen({});
    SettingsViewController controller(system, screen);
    screen.setController(&controller);
    controller.viewDidLoad();
    screen.reloadData();
    SettingsWindow window(screen, events);
    window.show();
    measureDrag(application, server);
    const Samples& busy = application.busy;
    const bool dragged = controller.skv_settings["colorSize"] != PropertyValue(55.0);
    std::filesystem::remove_all(directory);
    if (!dragged) {
        std::fprintf(stderr, "the slider did not move\n");
        return 1;
    }
    printRow("longest event of the main thread, slider dragged at 60 Hz", busy.quantile(1), 8,
             "ms");
    std::printf("  median %.2f ms, 99 %% below %.2f ms, %zu events\n", busy.median(),
                busy.quantile(0.99), busy.count());
    return 0;
}

}  // namespace
}  // namespace skavlo::bench

int main(int argc, char** argv) {
    return skavlo::bench::measure(argc, argv);
}
