// The settings screen's controller on a headless platform.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/headless/headless_serial_queue.h"
#include "platform/headless/headless_wall_clock.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "settings/default_settings.h"
#include "settings/loose_value.h"
#include "tests/unit/ui/doubles.h"
#include "ui/settings_view_controller.h"

namespace skavlo {

class SettingsFixture : public testing::Test {
  protected:
    using Strings = std::vector<std::string>;
    using Events = std::vector<Event>;

    // Opens the screen and lets the first probe pass; the log begins after it.
    void load() {
        make();
        controller->viewDidLoad();
        loop.runPosted();
        log.restart();
    }
    void load(const PropertyDictionary& stored) {
        store(stored);
        load();
    }
    void make() { controller = std::make_unique<SettingsViewController>(system, view); }
    void store(const PropertyDictionary& settings) {
        files.files.writeAtomically(directory.settingsFile(), lists.serialize(settings));
    }
    [[nodiscard]] std::string bytes() const {
        return files.files.read(directory.settingsFile()).value_or("");
    }
    [[nodiscard]] PropertyDictionary stored() const {
        return lists.parse(bytes()).value_or(PropertyDictionary());
    }
    [[nodiscard]] PropertyDictionary& settings() const { return controller->skv_settings; }

    void advance(double seconds) {
        loop.advanceTo(loop.mach_absolute_time() +
                       static_cast<MachTime>(seconds * static_cast<double>(kNanosecondsPerSecond)));
    }
    // Does it that many seconds from now, also while a block of the queue sleeps.
    void after(double seconds, std::function<void()> action) {
        timers.push_back(loop.scheduledTimer(seconds, false, std::move(action)));
    }
    [[nodiscard]] long count(const std::string& what) const {
        const Strings whats = log.whats();
        return std::count(whats.begin(), whats.end(), what);
    }
    // The events of this name, with their times.
    [[nodiscard]] Events only(const std::string& beginning) const {
        Events result;
        for (const Event& event : log.events) {
            if (event.what.starts_with(beginning)) result.push_back(event);
        }
        return result;
    }
    // As a user would.
    static void tap(const std::shared_ptr<SKVFakeSwitch>& itsSwitch) { itsSwitch->touchUpInside(); }

    [[nodiscard]] std::unique_ptr<TableViewCell> cell(int section, int row) const {
        return controller->cellForRowAtIndexPath({section, row});
    }
    [[nodiscard]] std::unique_ptr<TableViewCell> displayCell(int row) const {
        return cell(kDisplaySection, row);
    }
    template <typename Control>
    [[nodiscard]] std::shared_ptr<Control> displayControl(int row) const {
        return std::get<std::shared_ptr<Control>>(displayCell(row)->accessoryView);
    }

    SettingsDirectory directory{"/library/"};
    HeadlessRunLoop loop;
    HeadlessWallClock clock{loop};
    EventLog log{loop};
    RecordingFiles files{log, directory};
    PlistPropertyLists lists;
    RecordingNotifications notifications{log};
    RecordingSpawner spawner{log};
    HeldImageShrinker imageShrinker;
    ApplicationNotifications application;
    std::vector<std::string> queueLabels;  // of the queues made
    SettingsSystem system{
        .mainQueue = loop,
        .dispatch_queue_create = [this](const char* label) -> std::unique_ptr<SerialQueue> {
            queueLabels.emplace_back(label);
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
    RecordingView view{log};
    std::vector<std::unique_ptr<Timer>> timers;
    std::unique_ptr<SettingsViewController> controller;

    static constexpr const char* kWrite = "write settings";
    static constexpr const char* kReload = "post com.oxbrel.skavlo.reload";
    static constexpr const char* kExit = "post com.oxbrel.skavlo.exit";
};

}  // namespace skavlo
