// What the settings screen stands on, in memory; everything that happens goes into one log.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/headless/headless_run_loop.h"
#include "platform/headless/headless_system.h"
#include "platform/image_shrinker.h"
#include "platform/spawner.h"
#include "settings/settings_directory.h"
#include "ui/settings_view.h"

namespace skavlo {

struct Event {
    double time;  // seconds since the log began
    std::string what;
    bool operator==(const Event&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Event& event) {
    return out << event.time << " " << event.what;
}

class EventLog {
  public:
    explicit EventLog(const HeadlessRunLoop& runLoop)
        : loop(runLoop), start(runLoop.mach_absolute_time()) {}
    void add(const std::string& what) { events.push_back({now(), what}); }
    [[nodiscard]] double now() const {
        return static_cast<double>(loop.mach_absolute_time() - start) /
               static_cast<double>(kNanosecondsPerSecond);
    }
    // Starts anew, at time 0.
    void restart() {
        events.clear();
        start = loop.mach_absolute_time();
    }
    [[nodiscard]] std::vector<std::string> whats() const {
        std::vector<std::string> result;
        for (const Event& event : events) result.push_back(event.what);
        return result;
    }

    const HeadlessRunLoop& loop;
    MachTime start;
    std::vector<Event> events;
};

class RecordingFiles final : public Files {
  public:
    RecordingFiles(EventLog& itsLog, SettingsDirectory itsDirectory)
        : log(itsLog), directory(std::move(itsDirectory)) {}
    [[nodiscard]] std::optional<std::string> read(const std::string& path) const override {
        if (path == directory.settingsFile()) ++settingsReads;
        return unreadable ? std::nullopt : files.read(path);
    }
    [[nodiscard]] std::optional<std::uint64_t> sizeOf(const std::string& path) const override {
        return files.sizeOf(path);
    }
    bool writeAtomically(const std::string& path, const std::string& contents) override {
        log.add("write " + nameOf(path));
        return !full && files.writeAtomically(path, contents);
    }
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) const override {
        return files.fileExistsAtPath(path);
    }
    [[nodiscard]] std::string versionOf(const std::string& path) const override {
        return files.versionOf(path);
    }
    void chown(const std::string& path, unsigned uid, unsigned gid) override {
        files.chown(path, uid, gid);
    }
    void unlink(const std::string& path) override {
        log.add("unlink " + nameOf(path));
        files.unlink(path);
    }

    EventLog& log;
    SettingsDirectory directory;
    HeadlessFiles files;
    bool full = false;        // every write fails
    bool unreadable = false;  // every read fails
    mutable int settingsReads = 0;

  private:
    [[nodiscard]] std::string nameOf(const std::string& path) const {
        if (path == directory.settingsFile()) return "settings";
        return path == directory.customImageFile() ? "image" : path;
    }
};

class RecordingNotifications final : public Notifications {
  public:
    explicit RecordingNotifications(EventLog& itsLog) : log(itsLog) {}
    void notify_post(const std::string& name) override { log.add("post " + name); }
    [[nodiscard]] std::unique_ptr<NotificationRegistration> notify_register_dispatch(
        const std::string& /*name*/, std::function<void()> /*handler*/) override {
        return nullptr;
    }

    EventLog& log;
};

class RecordingSpawner final : public Spawner {
  public:
    explicit RecordingSpawner(EventLog& itsLog) : log(itsLog) {}
    std::optional<int> posix_spawn(const SpawnDescription& description) override {
        log.add("spawn " + description.arguments.at(1));
        spawned.push_back(description);
        if (!works) return std::nullopt;
        return ++lastPid;
    }
    std::optional<int> waitpid(int pid) override {
        log.add("wait");
        waitedFor = pid;
        if (duringProbe) std::exchange(duringProbe, nullptr)();
        return status;
    }
    bool reapFinished() override {
        log.add("reap");
        return finishedChildren-- > 0;
    }

    EventLog& log;
    bool works = true;
    std::optional<int> status = 0;      // status word of every probe
    std::function<void()> duringProbe;  // runs once
    int finishedChildren = 0;
    int lastPid = 100;
    int waitedFor = 0;
    std::vector<SpawnDescription> spawned;
};

// Answers when it is told to.
class HeldImageShrinker final : public ImageShrinker {
  public:
    struct Request {
        std::string path;
        std::vector<double> factors;
        std::uint64_t limitBytes;
        Completion completion;
    };
    void shrinkToPng(const std::string& path, const std::vector<double>& factors,
                     std::uint64_t limitBytes, Completion completion) override {
        requests.push_back({path, factors, limitBytes, std::move(completion)});
    }
    // Answers the oldest open request.
    void answer(const std::string& png) {
        const Request request = std::move(requests.front());
        requests.pop_front();
        request.completion(png);
    }

    std::deque<Request> requests;
};

class RecordingView final : public SettingsView {
  public:
    explicit RecordingView(EventLog& itsLog) : log(itsLog) {}
    void setHeader(const ScreenHeader& itsHeader) override {
        log.add("setHeader");
        header = itsHeader;
    }
    void setNavTitleAlpha(double alpha) override { navTitleAlpha = alpha; }
    [[nodiscard]] ScrollPosition tableScrollPosition() const override { return scrollPosition; }
    void reloadData() override { log.add("reloadData"); }
    void reloadSection(int section) override {
        log.add("reloadSection " + std::to_string(section));
    }
    void deselectRow(IndexPath path, bool animated) override {
        log.add("deselectRow " + std::to_string(path.section) + " " + std::to_string(path.row) +
                (animated ? " animated" : ""));
    }
    void endEditing() override { log.add("endEditing"); }
    void presentAlert(Alert alert) override {
        log.add("alert " + alert.title);
        alerts.push_back(std::move(alert));
    }
    void presentDocumentPicker() override { log.add("picker"); }
    void setImporting(bool importing) override { log.add(importing ? "importing" : "imported"); }

    EventLog& log;
    ScreenHeader header;
    double navTitleAlpha = -1;
    ScrollPosition scrollPosition;
    std::vector<Alert> alerts;
};

}  // namespace skavlo
