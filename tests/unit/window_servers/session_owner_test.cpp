#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/linux/x11/connect_to_x.h"

namespace skavlo {
namespace {

TEST(SessionOwner, IsTheOwnerOfTheRuntimeDirectoryUnlessThatIsRoot) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
    std::string directory = std::filesystem::temp_directory_path() / "skavlo-owner-XXXXXX";
    ASSERT_TRUE(mkdtemp(directory.data()));
    EXPECT_EQ(sessionOwner(directory.c_str()), std::nullopt);
    constexpr uid_t kSomebody = 60'001;
    ASSERT_EQ(chown(directory.c_str(), kSomebody, kSomebody), 0);
    EXPECT_EQ(sessionOwner(directory.c_str()), kSomebody);
    std::filesystem::remove(directory);
    EXPECT_EQ(sessionOwner(directory.c_str()), std::nullopt);
}

TEST(SessionOwner, IsNobodyWithoutADirectory) {
    EXPECT_EQ(sessionOwner(nullptr), std::nullopt);
    EXPECT_EQ(sessionOwner(""), std::nullopt);
}

}  // namespace
}  // namespace skavlo
