#include <algorithm>
#include <fstream>

#include "tests/unit/replay/replay_fixture.h"

namespace skavlo {
namespace {

struct Golden {
    const char* name;
    const char* recording;
    const char* milliseconds;
    const char* settings;  // null: none
};

class GoldenTest : public ReplayTest, public testing::WithParamInterface<Golden> {};

// A picture that differs is kept, to be looked at and, when it is right, to take the old one's
// place.
TEST_P(GoldenTest, looksAsItDid) {
    const Golden& wanted = GetParam();
    std::vector<std::string> more;
    if (wanted.settings != nullptr) more = {"--settings", golden(wanted.settings)};
    const std::string png = pictureAt(wanted.milliseconds, golden(wanted.recording), more);
    const std::string name = std::string(wanted.name) + ".png";
    const std::string expected = read(golden(name));
    const std::string kept = testing::TempDir() + "skavlo-replay-" + name;
    std::string difference = "there is no such golden picture";
    if (!expected.empty()) difference = differenceOf(decode(png), decode(expected));
    if (!difference.empty()) std::ofstream(kept, std::ios::binary) << png;
    EXPECT_EQ(difference, "") << "see " << kept;
}

INSTANTIATE_TEST_SUITE_P(Golden, GoldenTest,
                         testing::Values(Golden{"touch-down", "drag.txt", "50", nullptr},
                                         Golden{"mid-drag", "drag.txt", "300", nullptr},
                                         Golden{"mid-lift", "drag.txt", "600", nullptr},
                                         Golden{"star", "drag.txt", "300", "star.settings.plist"},
                                         Golden{"lift-all", "lift-all.txt", "450", nullptr}),
                         [](const auto& place) {
                             std::string name = place.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// So that a golden picture cannot agree with just anything.
TEST_F(ReplayTest, momentsDiffer) {
    const Decoded early = decode(pictureAt("290", golden("drag.txt")));
    const Decoded late = decode(pictureAt("300", golden("drag.txt")));
    EXPECT_NE(differenceOf(early, late), "");
}

}  // namespace
}  // namespace skavlo
