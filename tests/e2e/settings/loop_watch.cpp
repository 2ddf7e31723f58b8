// Loaded before a program of GLib's main loop, stands between that loop and the kernel: a thread in
// poll() waits for events, and what lies between two such waits keeps it from them, be it work, a
// read or a lock. Everything else that polls, a library that waits for its server's answer, say,
// counts as work too.
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/e2e/settings/loop_watch.h"

namespace {

skavlo::LoopReport* openReport() {
    const char* path = std::getenv(skavlo::kLoopWatchVariable);
    const int file = path ? open(path, O_RDWR | O_CLOEXEC) : -1;
    // What this program starts is not watched.
    unsetenv("LD_PRELOAD");
    unsetenv(skavlo::kLoopWatchVariable);
    if (file < 0) return nullptr;
    void* memory =
        mmap(nullptr, sizeof(skavlo::LoopReport), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return memory == MAP_FAILED ? nullptr : static_cast<skavlo::LoopReport*>(memory);
}

skavlo::LoopReport* const report = openReport();

std::int64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// How long this thread has been ready to run while others had the processors.
std::int64_t waitedForProcessor() {
    static const int file = open("/proc/self/schedstat", O_RDONLY | O_CLOEXEC);
    char text[96] = {};
    long long ran = 0;
    long long waited = 0;
    if (pread(file, text, sizeof text - 1, 0) <= 0 ||
        std::sscanf(text, "%lld %lld", &ran, &waited) != 2) {
        return 0;
    }
    return waited;
}

bool isOfTheLoop(const void* caller) {
    Dl_info info{};
    return dladdr(caller, &info) != 0 && info.dli_fname &&
           std::strstr(info.dli_fname, "libglib-2.0.so");
}

// The main thread's alone. Each pair of readings is taken in the order that can only make the time
// between two of them look shorter.
struct Turn {
    std::int64_t began = 0;  // 0: none has
    std::int64_t waited = 0;

    void begin() {
        waited = waitedForProcessor();
        began = now();
    }
    void end() const {
        if (began == 0) return;
        const std::int64_t away = now() - began;
        const std::int64_t own = away - (waitedForProcessor() - waited);
        report->turns.fetch_add(1);
        if (own > report->longestNanoseconds.load()) report->longestNanoseconds.store(own);
    }
};
Turn turn;

}  // namespace

extern "C" __attribute__((visibility("default"))) int poll(pollfd* descriptors, nfds_t count,
                                                           int timeout) {
    using Poll = int (*)(pollfd*, nfds_t, int);
    static const auto real = reinterpret_cast<Poll>(dlsym(RTLD_NEXT, "poll"));
    const bool watched = report && gettid() == getpid() && isOfTheLoop(__builtin_return_address(0));
    if (!watched) return real(descriptors, count, timeout);
    turn.end();
    const int ready = real(descriptors, count, timeout);
    turn.begin();
    return ready;
}
