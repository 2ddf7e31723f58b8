// What a save of the settings costs, and whether the overlay hears of the last of many: a process
// that saves and one that listens and reads, as in life.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/samples.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/notify/socket_notification_poster.h"
#include "platform/linux/notify/socket_notifications.h"
#include "platform/linux/plist/plist_property_lists.h"
#include "platform/linux/posix/posix_files.h"
#include "platform/linux/posix/worker_queue.h"
#include "settings/default_settings.h"

namespace skavlo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kSaves = 1000;
constexpr const char* kNotification = "com.oxbrel.skavlo.reload";
// An extra entry tells one save from the next.
constexpr const char* kNumber = "saveNumber";
constexpr double kPatienceSeconds = 20;

struct Place {
    std::string directory;
    [[nodiscard]] std::string file() const { return directory + "/settings.plist"; }
};

std::int64_t numberOnDisk(const Place& place) {
    const auto bytes = PosixFiles().read(place.file());
    const auto settings = bytes ? PlistPropertyLists().parse(*bytes) : std::nullopt;
    if (!settings || !settings->contains(kNumber)) return -1;
    const auto* number = settings->at(kNumber).as<std::int64_t>();
    return number ? *number : -1;
}

// Ends with 0 when a notification has told it of the last save, with 1 when none does in time. One
// byte goes to `ready` once it listens.
int listen(const Place& place, int ready) {
    AsioRunLoop loop;
    SocketNotifications notifications(loop, place.directory);
    const auto registration = notifications.notify_register_dispatch(kNotification, [&] {
        if (numberOnDisk(place) == kSaves) loop.stop(0);
    });
    const auto patience = loop.scheduledTimer(kPatienceSeconds, false, [&] { loop.stop(1); });
    if (!registration || write(ready, "r", 1) != 1) return 2;
    return loop.run();
}

// Milliseconds.
struct Costs {
    Samples snapshot;  // on the main thread: the copy of the settings and the post to the queue
    Samples rest;      // on the queue: serialise, write, notify
    Samples file;      // of these, writing: the file system's own
};

void save(const Place& place, Costs& costs) {
    SocketNotificationPoster notifications(place.directory);
    PropertyDictionary settings = defaultSettings();
    WorkerQueue queue;
    for (int number = 1; number <= kSaves; ++number) {
        settings[kNumber] = number;
        const auto begin = Clock::now();
        queue.async([&, snapshot = settings] {
            const auto begun = Clock::now();
            const std::string bytes = PlistPropertyLists().serialize(snapshot);
            const auto write = Clock::now();
            PosixFiles().writeAtomically(place.file(), bytes);
            costs.file.add(Milliseconds(Clock::now() - write).count());
            notifications.notify_post(kNotification);
            costs.rest.add(Milliseconds(Clock::now() - begun).count());
        });
        costs.snapshot.add(Milliseconds(Clock::now() - begin).count());
    }
}

pid_t startListening(const Place& place) {
    int ends[2];
    if (pipe(ends) != 0) std::exit(1);
    const pid_t pid = fork();
    if (pid == 0) _exit(listen(place, ends[1]));
    char byte = 0;
    if (read(ends[0], &byte, 1) != 1) std::exit(1);
    close(ends[0]);
    close(ends[1]);
    return pid;
}

}  // namespace
}  // namespace skavlo::bench

int main() {
    using namespace skavlo::bench;
    std::string name = (std::filesystem::temp_directory_path() / "skavlo-saves-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) return 1;
    const Place place{name};
    const pid_t listener = startListening(place);
    Costs costs;
    save(place, costs);
    const auto onDisk = numberOnDisk(place);
    int status = 0;
    waitpid(listener, &status, 0);
    std::filesystem::remove_all(name);
    const bool heard = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    printRow("a save (snapshot, write, notify), median of 1,000 in a row",
             costs.snapshot.median() + costs.rest.median(), 1, "ms");
    std::printf("  of which on the main thread %.3f ms, in the file system %.3f ms\n",
                costs.snapshot.median(), costs.file.median());
    printRow("saves after the one that is on disk in the end", static_cast<double>(kSaves - onDisk),
             0, "");
    printRow("last saves that the listener was not told of", heard ? 0 : 1, 0, "");
}
