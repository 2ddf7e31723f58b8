#include "platform/linux/capture/process_source.h"

#include <csignal>
#include <filesystem>
#include <optional>

#include "loop_fixture.h"
#include "tools/rig/child.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;

// The program is "sleep" under a name that nothing else has, so that no overlay that runs
// meanwhile is disturbed.
class Processes : public LoopFixture {
  protected:
    void SetUp() override {
        if (auto events = ProcessEvents::open(); !events)
            GTEST_SKIP() << "the kernel does not tell of processes: " << events.error().message;
        std::string pattern = fs::temp_directory_path() / "skavlo-process-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
        program = directory / directory.filename();
        fs::copy_file("/bin/sleep", program);
    }
    void TearDown() override {
        child.reset();
        if (!directory.empty()) fs::remove_all(directory);
    }

    void open(const std::string& argument = {}) {
        auto opened = ProcessSource::open(loop, {{"another"}, {program.filename(), argument}});
        ASSERT_TRUE(opened) << opened.error().message;
        source = std::move(*opened);
    }
    [[nodiscard]] static rig::Child start(const std::vector<std::string>& arguments) {
        auto started = rig::Child::start({arguments, {}, {}, -1});
        EXPECT_TRUE(started) << started.error().message;
        return std::move(*started);
    }
    bool waitFor(bool captures) {
        return runUntil([&] { return source->captures() == captures; });
    }

    fs::path directory;
    fs::path program;
    std::optional<rig::Child> child;
    std::unique_ptr<ProcessSource> source;
};

TEST_F(Processes, ARecorderCapturesUntilItIsKilled) {
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_FALSE(source->captures());
    child = start({program, "3600"});
    EXPECT_TRUE(waitFor(true));
    child->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
}

TEST_F(Processes, OneThatRunsAlreadyIsFound) {
    child = start({program, "3600"});
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_TRUE(source->captures());
}

TEST_F(Processes, OfTwoTheLastOneEndsIt) {
    ASSERT_NO_FATAL_FAILURE(open());
    child = start({program, "3600"});
    EXPECT_TRUE(waitFor(true));
    int changes = 0;
    source->setChangeHandler([&] { ++changes; });
    {
        rig::Child second = start({program, "3601"});
        source.reset();
        ASSERT_NO_FATAL_FAILURE(open());
        source->setChangeHandler([&] { ++changes; });
    }
    child->signal(SIGKILL);
    EXPECT_TRUE(waitFor(false));
    EXPECT_EQ(changes, 1);
}

TEST_F(Processes, AnArgumentMayDecide) {
    ASSERT_NO_FATAL_FAILURE(open("3601"));
    child = start({program, "3600"});
    const rig::Child recorder = start({program, "3601"});
    EXPECT_TRUE(waitFor(true));
    source.reset();
    ASSERT_NO_FATAL_FAILURE(open("3602"));
    EXPECT_FALSE(source->captures());
}

TEST_F(Processes, ANameThatIsLongerThanTheKernelsIsComparedInFull) {
    const fs::path longer = directory / (program.filename().string() + "-and-more");
    fs::copy_file(program, longer);
    child = start({longer, "3600"});
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_FALSE(source->captures());
}

TEST_F(Processes, AProgramThatIsReplacedOnTheDiskStillCounts) {
    child = start({program, "3600"});
    fs::remove(program);
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_TRUE(source->captures());
}

TEST_F(Processes, ManyOthersDoNotHideOne) {
    ASSERT_NO_FATAL_FAILURE(open());
    constexpr int kOthers = 200;
    for (int i = 0; i < kOthers; ++i) {
        rig::Child other = start({"/bin/true"});
        ASSERT_TRUE(other.wait(rig::Deadline(kPatience)));
    }
    child = start({program, "3600"});
    EXPECT_TRUE(waitFor(true));
}

}  // namespace
}  // namespace skavlo
