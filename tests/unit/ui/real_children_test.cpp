// The status poll with a real spawner and real programs; only the time is made up.
#include <sys/wait.h>

#include <map>

#include "platform/linux/posix/posix_spawner.h"
#include "tests/unit/posix/leftovers.h"
#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

class CountingSpawner final : public Spawner {
  public:
    std::optional<int> posix_spawn(const SpawnDescription& description) override {
        const auto pid = spawner.posix_spawn(description);
        if (pid) ++started[description.arguments.at(1)];
        return pid;
    }
    std::optional<int> waitpid(int pid) override { return spawner.waitpid(pid); }
    bool reapFinished() override {
        const bool one = spawner.reapFinished();
        reaped += one ? 1 : 0;
        return one;
    }

    PosixSpawner spawner;
    std::map<std::string, int> started;  // by role
    int reaped = 0;
};

class RealChildren : public SettingsFixture {
  protected:
    ~RealChildren() override { controller.reset(); }

    // The program that stands for the product's ends at once, whatever its role.
    void loadWith(const std::string& program) {
        realSystem.executablePath = program;
        controller = std::make_unique<SettingsViewController>(realSystem, view);
        controller->viewDidLoad();
        loop.runPosted();
    }
    // Until a child has ended that nobody has waited for yet.
    static void waitForZombie() {
        siginfo_t info{};
        ASSERT_EQ(waitid(P_ALL, 0, &info, WEXITED | WNOWAIT), 0);
    }

    CountingSpawner realSpawner;
    SettingsSystem realSystem{.mainQueue = loop,
                              .dispatch_queue_create = system.dispatch_queue_create,
                              .clock = clock,
                              .files = files,
                              .propertyLists = lists,
                              .notifications = notifications,
                              .spawner = realSpawner,
                              .imageShrinker = imageShrinker,
                              .application = application,
                              .directory = directory,
                              .executablePath = {},
                              .about = system.about};
};

TEST_F(RealChildren, AThousandPollsLeaveNoZombieAndNoDescriptorBehind) {
    loadWith("/bin/false");  // the status of a probe that has found the overlay
    EXPECT_TRUE(controller->skv_overlayEnabled);
    const std::size_t before = openDescriptors();
    advance(2000);
    EXPECT_EQ(realSpawner.started["-check"], 1 + 1000);
    EXPECT_TRUE(controller->skv_overlayEnabled);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

TEST_F(RealChildren, ThePollReapsAnOverlayThatHasEnded) {
    loadWith("/bin/true");
    const std::size_t before = openDescriptors();
    tap(controller->skv_enableSwitch);
    loop.runPosted();
    ASSERT_EQ(realSpawner.started["-hud"], 1);
    waitForZombie();
    EXPECT_EQ(realSpawner.reaped, 0);
    advance(4);
    EXPECT_EQ(realSpawner.reaped, 1);
    EXPECT_FALSE(controller->skv_enableSwitch->isOn()) << "the probe has not found it";
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

}  // namespace
}  // namespace skavlo
