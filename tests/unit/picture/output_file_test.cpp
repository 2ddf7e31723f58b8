#include "tools/picture/output_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace skavlo {
namespace {

class OutputFileTest : public testing::Test {
  protected:
    OutputFileTest() {
        std::string path = testing::TempDir() + "skavlo-output.XXXXXX";
        directory_ = std::string(mkdtemp(path.data())) + "/";
    }
    ~OutputFileTest() override { std::filesystem::remove_all(directory_); }

    static std::string read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::ptrdiff_t files() const {
        return std::distance(std::filesystem::directory_iterator(directory_), {});
    }

    std::string directory_;
};

TEST_F(OutputFileTest, replacesWholeFiles) {
    EXPECT_FALSE(writeFile(directory_ + "a", "a long text"));
    EXPECT_FALSE(writeFile(directory_ + "a", "short"));
    EXPECT_EQ(read(directory_ + "a"), "short");
    EXPECT_EQ(files(), 1);
}

TEST_F(OutputFileTest, leavesLinksInPlace) {
    std::ofstream(directory_ + "target") << "old";
    std::filesystem::create_symlink("target", directory_ + "link");
    EXPECT_FALSE(writeFile(directory_ + "link", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(directory_ + "link"));
    EXPECT_EQ(read(directory_ + "target"), "new");
}

TEST_F(OutputFileTest, writesToDevicesAsTheyStand) {
    EXPECT_FALSE(writeFile("/dev/null", "x"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    const auto error = writeFile("/dev/full", "x");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->message, "cannot write /dev/full: No space left on device");
}

TEST_F(OutputFileTest, aDirectoryIsNoFile) {
    const auto error = writeFile(directory_, "x");
    ASSERT_TRUE(error);
    EXPECT_EQ(error->message, "cannot write " + directory_ + ": Is a directory");
    EXPECT_EQ(files(), 0);
}

}  // namespace
}  // namespace skavlo
