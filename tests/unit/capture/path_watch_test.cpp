#include "platform/linux/capture/path_watch.h"

#include <filesystem>
#include <fstream>

#include "loop_fixture.h"

namespace skavlo {
namespace {

namespace fs = std::filesystem;

class PathWatchTest : public LoopFixture {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "skavlo-watch-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
    }
    void TearDown() override { fs::remove_all(directory); }
    void watch(const fs::path& path) {
        watcher = std::make_unique<PathWatch>(loop.context(), path, [this] { ++made; });
    }
    static void touch(const fs::path& path) { std::ofstream(path) << "x"; }

    fs::path directory;
    std::unique_ptr<PathWatch> watcher;
    int made = 0;
};

TEST_F(PathWatchTest, TellsOfAFileThatIsMade) {
    watch(directory / "file");
    touch(directory / "another");
    runPosted();
    EXPECT_EQ(made, 0);
    touch(directory / "file");
    EXPECT_TRUE(runUntil([&] { return made == 1; }));
}

TEST_F(PathWatchTest, TellsOfAFileThatReplacesAnother) {
    touch(directory / "file");
    watch(directory / "file");
    runPosted();
    EXPECT_EQ(made, 0);
    fs::remove(directory / "file");
    runPosted();
    EXPECT_EQ(made, 0);
    touch(directory / "file");
    EXPECT_TRUE(runUntil([&] { return made == 1; }));
    touch(directory / "next");
    fs::rename(directory / "next", directory / "file");
    EXPECT_TRUE(runUntil([&] { return made == 2; }));
}

TEST_F(PathWatchTest, FollowsDirectoriesThatAreMadeAndRemoved) {
    const fs::path file = directory / "a" / "b" / "file";
    watch(file);
    for (int round = 1; round <= 2; ++round) {
        fs::create_directory(directory / "a");
        runPosted();
        fs::create_directory(directory / "a" / "b");
        runPosted();
        EXPECT_EQ(made, round - 1);
        touch(file);
        EXPECT_TRUE(runUntil([&] { return made == round; }));
        fs::remove_all(directory / "a");
        runPosted();
    }
}

TEST_F(PathWatchTest, SeesWhatWasMadeAllAtOnce) {
    const fs::path file = directory / "a" / "b" / "file";
    watch(file);
    fs::create_directories(file.parent_path());
    touch(file);
    EXPECT_TRUE(runUntil([&] { return made == 1; }));
}

TEST_F(PathWatchTest, AFileInTheWayIsWaitedOut) {
    touch(directory / "a");
    watch(directory / "a" / "file");
    fs::remove(directory / "a");
    fs::create_directory(directory / "a");
    touch(directory / "a" / "file");
    EXPECT_TRUE(runUntil([&] { return made == 1; }));
}

}  // namespace
}  // namespace skavlo
