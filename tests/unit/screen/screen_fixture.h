// The real screen, drawn off screen, above the real controller on a headless platform.
#pragma once

#include <gtest/gtest.h>

#include <QAnimationDriver>
#include <QInputMethodEvent>
#include <QQuickItem>
#include <QtTest/QTest>
#include <memory>
#include <string>

#include "platform/headless/headless_serial_queue.h"
#include "platform/headless/headless_wall_clock.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "settings/default_settings.h"
#include "settings/loose_value.h"
#include "tests/unit/ui/doubles.h"
#include "ui/settings_view_controller.h"
#include "ui/shell/settings_screen.h"
#include "ui/shell/settings_window.h"

namespace skavlo {

// Animations get on only when they are told to, by exactly so much.
class SteppedAnimations : public QAnimationDriver {
  public:
    static SteppedAnimations& instance();
    void step(int milliseconds);
    [[nodiscard]] qint64 elapsed() const override { return now_ - start_; }

  protected:
    void start() override;

  private:
    qint64 now_ = 0;
    qint64 start_ = 0;
};

// From here on, what QML complains of fails the test in which it happens.
void watchComplaints();

struct ScreenOptions {
    int width = 390;  // 0: the window has its own size
    int height = 844;
    int mode = 0;  // display mode
    bool english = true;
    bool emojiBorder = false;
    bool dark = false;
    bool splash = false;  // still playing
    std::string imagePath = {};
    bool portal = false;  // with one that asks for an image file
    QString iconPath = QStringLiteral(SKAVLO_ICON);
};

class ScreenFixture : public testing::Test {
  protected:
    ~ScreenFixture() override;
    void TearDown() override;

    void open(const ScreenOptions& options = {});
    // By object name; null when there is none. The first in the order of drawing.
    [[nodiscard]] QQuickItem* find(const QString& name, QQuickItem* within = nullptr) const;
    [[nodiscard]] QList<QQuickItem*> findAll(const QString& name,
                                             QQuickItem* within = nullptr) const;
    // The rows that count, not those that are fading out.
    [[nodiscard]] QQuickItem* row(int section, int index) const;
    [[nodiscard]] QQuickItem* inRow(int section, int index, const QString& name) const;
    [[nodiscard]] QRectF frameIn(const QQuickItem* item, const QQuickItem* ancestor) const;
    [[nodiscard]] static QRectF frame(const QQuickItem* item);
    [[nodiscard]] QPoint middle(const QQuickItem* item) const;
    // Scrolls the table until the item lies in sight.
    void reveal(const QQuickItem* item);
    void click(const QQuickItem* item);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void settle() const;  // events, queue, layout
    void step(int milliseconds);
    [[nodiscard]] PropertyDictionary& settings() const { return controller->skv_settings; }
    [[nodiscard]] PropertyDictionary stored() const;
    [[nodiscard]] long count(const std::string& what) const;

    // What the screen asked of the desktop, oldest first.
    std::vector<std::function<void(std::optional<QString> path)>> askedForImage;
    std::vector<std::pair<QString, std::function<void(QImage image)>>> askedToDecode;

    SettingsDirectory directory{"/library/"};
    mutable HeadlessRunLoop loop;
    HeadlessWallClock clock{loop};
    EventLog log{loop};
    RecordingFiles files{log, directory};
    PlistPropertyLists lists;
    RecordingNotifications notifications{log};
    RecordingSpawner spawner{log};
    HeldImageShrinker imageShrinker;
    ApplicationNotifications application;
    SettingsSystem system{
        .mainQueue = loop,
        .dispatch_queue_create = [this](const char* /*label*/) -> std::unique_ptr<SerialQueue> {
            return std::make_unique<HeadlessSerialQueue>(loop);
        },
        .clock = clock,
        .files = files,
        .propertyLists = lists,
        .notifications = notifications,
        .spawner = spawner,
        .imageShrinker = imageShrinker,
        .application = application,
        .directory = directory,
        .executablePath = "/bundle/skavlo",
        .about = {.version = "2.5", .author = "The Author", .channel = "https://channel.example"}};
    std::vector<QString> openedLinks;
    std::unique_ptr<SettingsScreen> screen;
    std::unique_ptr<SettingsViewController> controller;
    std::unique_ptr<SettingsWindow> window;

    static constexpr const char* kWrite = "write settings";
    static constexpr const char* kReload = "post com.oxbrel.skavlo.reload";
};

}  // namespace skavlo
