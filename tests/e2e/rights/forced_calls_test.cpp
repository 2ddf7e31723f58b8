// The overlay as it runs, taken over by somebody who has it call the system as he likes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "tests/e2e/overlay/overlay_rig.h"
#if defined(__x86_64__)
#include "tests/e2e/rights/tracee.h"
#endif

namespace skavlo {
namespace {

#if !defined(__x86_64__)

TEST(ForcedCalls, AreMadeThroughTheRegistersOfX86) {
    GTEST_SKIP() << "knows the registers of x86-64 only";
}

#else

using rig::Deadline;

constexpr auto kHere = static_cast<std::uint64_t>(AT_FDCWD);

class ForcedCalls : public OverlayRig {
  protected:
    // Until it has answered a touch, and so is through with its start.
    void startAndTouch() {
        ASSERT_NO_FATAL_FAILURE(start({{"colorTracking", false}}));
        ASSERT_EQ(contents(pidFile()), std::to_string(overlay().pid()));
        showMarker();
    }
    void showMarker() {
        touch().begin(0, {400, 300});
        captureUntil([](const Bitmap& screen) { return at(screen, 400, 300) != kBackground; },
                     "a marker");
        touch().end(0);
        captureUntil(isClean, "the background alone");
    }
    // Skips the test where nothing can be traced.
    std::optional<Tracee> takeOver() {
        auto taken = Tracee::stop(overlay().pid(), Deadline(kPatience));
        if (taken) return std::move(*taken);
        [&] { GTEST_SKIP() << taken.error().message; }();
        return std::nullopt;
    }
};

TEST_F(ForcedCalls, WhatIsRefusedFailsAndTheOverlayGoesOn) {
    ASSERT_NO_FATAL_FAILURE(startAndTouch());
    const std::string wanted = testing::TempDir() + "skavlo-forced-" + std::to_string(getpid());
    const std::string existing = wanted + "-existing";
    write(existing, "contents");
    {
        auto taken = takeOver();
        if (!taken) return;
        const auto call = [&](long number, std::initializer_list<std::uint64_t> arguments) {
            return taken->call(number, arguments, Deadline(kPatience));
        };
        // That it is the overlay which calls, and may.
        EXPECT_EQ(call(SYS_getpid, {}), overlay().pid());
        const auto local = call(SYS_socket, {AF_UNIX, SOCK_DGRAM, 0});
        ASSERT_TRUE(local);
        EXPECT_GE(*local, 0);
        EXPECT_EQ(call(SYS_close, {static_cast<std::uint64_t>(*local)}), 0);

        for (const std::uint64_t family : {AF_INET, AF_INET6, AF_PACKET})
            EXPECT_EQ(call(SYS_socket, {family, SOCK_DGRAM, 0}), -EACCES) << family;
        const std::uint64_t path = taken->put(wanted);
        EXPECT_EQ(call(SYS_openat, {kHere, path, O_WRONLY | O_CREAT, 0600}), -EACCES);
        EXPECT_EQ(call(SYS_creat, {path, 0600}), -EACCES);
        EXPECT_EQ(call(SYS_mkdir, {path, 0700}), -EACCES);
        EXPECT_EQ(call(SYS_openat2, {kHere, path}), -ENOSYS);
        const std::uint64_t other = taken->put(existing);
        EXPECT_EQ(call(SYS_openat, {kHere, other, O_WRONLY | O_TRUNC}), -EACCES);
        EXPECT_EQ(call(SYS_chmod, {other, 04755}), -EACCES);
        EXPECT_EQ(call(SYS_prctl, {PR_CAPBSET_READ, CAP_SYS_ADMIN}), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(wanted));
    EXPECT_EQ(contents(existing), "contents");
    std::filesystem::remove(wanted);
    std::filesystem::remove(existing);
    EXPECT_TRUE(overlay().running());
    showMarker();
}

// Arguments that do no harm where the call is let through.
struct Attack {
    const char* name;
    long number;
    std::uint64_t first = 0;
};
void PrintTo(const Attack& attack, std::ostream* out) {
    *out << attack.name;
}
class ForcedAttack : public ForcedCalls, public testing::WithParamInterface<Attack> {};

TEST_P(ForcedAttack, EndsTheOverlay) {
    ASSERT_NO_FATAL_FAILURE(startAndTouch());
    auto taken = takeOver();
    if (!taken) return;
    const auto result = taken->call(GetParam().number, {GetParam().first}, Deadline(kPatience));
    ASSERT_FALSE(result) << "the call returned " << *result;
    taken.reset();
    const auto status = overlay().wait(Deadline(kPatience));
    ASSERT_TRUE(status) << "the overlay lives";
    EXPECT_TRUE(WIFSIGNALED(*status));
    EXPECT_EQ(WTERMSIG(*status), SIGSYS);
}

constexpr auto kNobody = ~0ULL;  // as a process or a descriptor
INSTANTIATE_TEST_SUITE_P(With, ForcedAttack,
                         testing::Values(Attack{"Mount", SYS_mount},
                                         Attack{"ReadMemory", SYS_process_vm_readv, kNobody},
                                         Attack{"Ptrace", SYS_ptrace, kNobody},
                                         Attack{"Unshare", SYS_unshare},
                                         Attack{"LoadModule", SYS_finit_module, kNobody},
                                         Attack{"IoUring", SYS_io_uring_setup}),
                         [](const auto& suite) { return std::string(suite.param.name); });

#endif

}  // namespace
}  // namespace skavlo
