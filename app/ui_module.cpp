// The settings application's module: puts the Linux platform and Qt under the settings screen.
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <climits>
#include <cstdio>
#include <exception>
#include <string>

#include "app/role_entry.h"
#include "platform/linux/image/child_image_shrinker.h"
#include "platform/linux/notify/socket_notification_poster.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/posix_spawner.h"
#include "platform/linux/posix/system_wall_clock.h"
#include "platform/linux/posix/worker_queue.h"
#include "platform/linux/qt/colour_scheme.h"
#include "platform/linux/qt/desktop_portal.h"
#include "platform/linux/qt/display_check.h"
#include "platform/linux/qt/qt_run_loop.h"
#include "platform/linux/qt/termination.h"
#include "ui/settings_view_controller.h"
#include "ui/shell/settings_screen.h"
#include "ui/shell/settings_window.h"

namespace {

using namespace skavlo;

constexpr int kFailed = 1;

std::string executable() {
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    return {self, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::string beside(const std::string& path, const char* name) {
    return path.substr(0, path.rfind('/') + 1) + name;
}

// How the portal names the window. On Wayland it would take a protocol of its own.
QString portalName(const QWindow& window) {
    if (QGuiApplication::platformName() != u"xcb") return {};
    return QStringLiteral("x11:%1").arg(window.winId(), 0, 16);
}

// Everything that the screen stands on, for as long as it is there.
struct Platform {
    explicit Platform(const std::string& executablePath)
        : imageShrinker(runLoop, beside(executablePath, "skavlo-raster")) {}

    SettingsSystem system(const std::string& executablePath) {
        return {.mainQueue = runLoop,
                .dispatch_queue_create =
                    [](const char* label) { return std::make_unique<WorkerQueue>(label); },
                .clock = clock,
                .files = files,
                .propertyLists = propertyLists,
                .notifications = notifications,
                .spawner = spawner,
                .imageShrinker = imageShrinker,
                .application = application,
                .directory = SettingsDirectory(SKAVLO_LIBRARY_PREFIX),
                .executablePath = executablePath,
                .about = {SKAVLO_VERSION, SKAVLO_AUTHOR, SKAVLO_CHANNEL}};
    }

    QtRunLoop runLoop;
    SystemWallClock clock;
    PosixFiles files;
    PlistPropertyLists propertyLists;
    SocketNotificationPoster notifications{SKAVLO_RUN_DIRECTORY};
    PosixSpawner spawner;
    ChildImageShrinker imageShrinker;
    ApplicationNotifications application;
};

// Small enough for a thumbnail on any screen, of whatever size the image is.
void decodeImage(ImageShrinker& shrinker, const QString& path, std::function<void(QImage)> answer) {
    constexpr std::uint64_t kLimitBytes = 256 * 1024;
    shrinker.shrinkToPng(
        QFile::encodeName(path).toStdString(), {1, 0.5, 0.25, 0.1, 0.05}, kLimitBytes,
        [answer = std::move(answer)](const std::string& png) {
            answer(QImage::fromData(QByteArrayView(png.data(), std::ssize(png)), "PNG"));
        });
}

ScreenDesktop desktopFor(const SettingsWindow* const& window, ImageShrinker& shrinker,
                         const std::string& executablePath) {
    const auto parent = [&window] { return window ? portalName(*window) : QString(); };
    return {.pickImage =
                [parent](const QString& title, const QString& filterName,
                         ImageFileRequest::Answer answer) {
                    ImageFileRequest::start(parent(), title, filterName, std::move(answer));
                },
            .openLink = [parent](const QString& address) { openLink(parent(), address); },
            .decodeImage =
                [&shrinker](const QString& path, std::function<void(QImage)> answer) {
                    decodeImage(shrinker, path, std::move(answer));
                },
            .iconPath =
                QString::fromStdString(beside(executablePath, "resources/AppIcon60x60@3x.png"))};
}

void prepareQt(const char* platform) {
    qputenv("QT_QPA_PLATFORM", platform);
    // Faster to the first frame and smaller than OpenGL, for a screen as plain as this.
    if (qgetenv("CI_USE_SOFTWARE_RENDERER") == "1" &&
        !qEnvironmentVariableIsSet("QSG_RHI_BACKEND")) {
        qputenv("QT_QUICK_BACKEND", "software");
    }
    QGuiApplication::setApplicationName(QStringLiteral("skavlo"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Skavlo"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.oxbrel.skavlo"));
}

int runScreen(QGuiApplication& application) {
    QFont font;
    font.setFamilies(fontFamilies());
    QGuiApplication::setFont(font);

    const std::string executablePath = executable();
    Platform platform(executablePath);
    SettingsSystem system = platform.system(executablePath);
    const SettingsWindow* shown = nullptr;
    SettingsScreen screen(desktopFor(shown, platform.imageShrinker, executablePath));
    // Its end waits for what is still to be saved.
    SettingsViewController controller(system, screen);
    screen.setController(&controller);
    controller.viewDidLoad();
    screen.reloadData();

    const ColourScheme colourScheme([&screen](bool dark) { screen.setDark(dark); });
    SettingsWindow window(screen, platform.application);
    shown = &window;
    const Termination termination([&window] { window.close(); });
    // Only once everything asked for has been done: markers that are hidden while record-only mode
    // ends would stay hidden.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, [&] {
        controller.g_skv_daemonQueue().async(
            [&runLoop = platform.runLoop] { runLoop.async([] { QGuiApplication::quit(); }); });
    });
    window.show();
    const int status = application.exec();
    shown = nullptr;
    return status;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int skavlo_ui_main(int argc, char** argv) {
    try {
        const auto platform = reachablePlatform();
        if (!platform) {
            std::fputs("skavlo: no display can be reached (DISPLAY, WAYLAND_DISPLAY)\n", stderr);
            return kFailed;
        }
        prepareQt(*platform);
        QGuiApplication application(argc, argv);
        return runScreen(application);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "skavlo: %s\n", error.what());
        return kFailed;
    }
}
