// The settings application on a screen with twice as many pixels to the inch.
#include <gtest/gtest.h>

#include "tests/e2e/settings/settings_rig.h"

namespace skavlo {
namespace {

constexpr PixelSize kDenseDesktop{1000, 1800};
constexpr PixelSize kWindow{2 * 390, 2 * 844};

class SettingsOnADenseScreen : public SettingsRig {
  protected:
    void openDense() {
        ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kDenseDesktop}}));
        ASSERT_NO_FATAL_FAILURE(setFontResolution(192));
        ASSERT_NO_FATAL_FAILURE(startCompositor());
        ASSERT_NO_FATAL_FAILURE(launch(SKAVLO_EXECUTABLE));
    }
    // Squares of two by two pixels that are not of one colour: a picture that is merely drawn
    // larger has none.
    static int detailedSquares(const Bitmap& screen, const PixelRect& area) {
        int count = 0;
        for (int y = area.y / 2 * 2; y + 1 < area.bottom(); y += 2) {
            for (int x = area.x / 2 * 2; x + 1 < area.right(); x += 2) {
                const std::uint32_t first = at(screen, x, y);
                count += at(screen, x + 1, y) != first || at(screen, x, y + 1) != first ||
                         at(screen, x + 1, y + 1) != first;
            }
        }
        return count;
    }
};

TEST_F(SettingsOnADenseScreen, DrawsAndHearsInItsPixels) {
    ASSERT_NO_FATAL_FAILURE(openDense());
    const Bitmap screen = capture();
    // The accessibility bus tells of points.
    const PixelRect points = item(rig::kSwitchRole, "开启 Skavlo").extents;
    const PixelRect toggle{2 * points.x, 2 * points.y, 2 * points.width, 2 * points.height};
    EXPECT_NE(at(screen, kWindow.width - 1, kWindow.height - 1), kBackground);
    EXPECT_EQ(at(screen, kWindow.width, kWindow.height - 1), kBackground);
    EXPECT_EQ(at(screen, kWindow.width - 1, kWindow.height), kBackground);
    EXPECT_GT(detailedSquares(screen, toggle), 20);
    EXPECT_GT(detailedSquares(screen, {0, 0, kWindow.width, toggle.y}), 1000);

    EXPECT_TRUE(
        application().pointer().click({toggle.x + toggle.width / 2, toggle.y + toggle.height / 2}));
    EXPECT_TRUE(overlayComes());
    EXPECT_TRUE(switchBecomes("开启 Skavlo", true));
}

}  // namespace
}  // namespace skavlo
