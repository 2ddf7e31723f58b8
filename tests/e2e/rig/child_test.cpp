#include "tools/rig/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace skavlo::rig {
namespace {

constexpr std::chrono::seconds kPatience(20);

// What a shell command prints.
std::string outputOf(const std::string& command, const std::vector<std::string>& environment) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    auto child = Child::start({{"sh", "-c", command}, environment, {}, writeEnd.get()});
    EXPECT_TRUE(child) << child.error().message;
    writeEnd.reset();
    std::string output;
    char byte = 0;
    while (read(readEnd.get(), &byte, 1) == 1) {
        output += byte;
    }
    return output;
}

TEST(Child, reportsItsStatus) {
    auto child = Child::start({{"sh", "-c", "exit 3"}, {}, {}, -1});
    ASSERT_TRUE(child) << child.error().message;
    const auto status = child->wait(Deadline(kPatience));
    ASSERT_TRUE(status);
    EXPECT_EQ(describeStatus(*status), "exited with status 3");
    EXPECT_FALSE(child->running());
    EXPECT_EQ(child->stop(), std::nullopt);
}

TEST(Child, thatDoesNotExistIsAnError) {
    auto child = Child::start({{"/nonexistent/program"}, {}, {}, -1});
    ASSERT_FALSE(child);
    EXPECT_EQ(child.error().message,
              "cannot start /nonexistent/program: No such file or directory");
}

TEST(Child, isStoppedBySigterm) {
    auto child = Child::start({{"sleep", "1000"}, {}, {}, -1});
    ASSERT_TRUE(child) << child.error().message;
    EXPECT_TRUE(child->running());
    const auto status = child->stop();
    ASSERT_TRUE(status);
    EXPECT_EQ(describeStatus(*status), "was ended by signal 15");
}

TEST(Child, isKilledWhenItDoesNotObey) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const FileDescriptor readEnd(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    auto child = Child::start(
        {{"sh", "-c", "trap '' TERM; echo; while :; do sleep 1; done"}, {}, {}, writeEnd.get()});
    ASSERT_TRUE(child) << child.error().message;
    ASSERT_TRUE(waitReadable({readEnd.get()}, Deadline(kPatience)));
    const auto status = child->stop(std::chrono::milliseconds(1));
    ASSERT_TRUE(status);
    EXPECT_EQ(describeStatus(*status), "was ended by signal 9");
}

TEST(Child, getsItsOwnEnvironmentOverTheParents) {
    setenv("SKAVLO_TEST_KEPT", "kept", 1);
    setenv("SKAVLO_TEST_REPLACED", "old", 1);
    setenv("SKAVLO_TEST_REMOVED", "old", 1);
    EXPECT_EQ(outputOf("echo $SKAVLO_TEST_KEPT,$SKAVLO_TEST_REPLACED,${SKAVLO_TEST_REMOVED-unset}",
                       {"SKAVLO_TEST_REPLACED=new", "SKAVLO_TEST_REMOVED"}),
              "kept,new,unset\n");
}

}  // namespace
}  // namespace skavlo::rig
