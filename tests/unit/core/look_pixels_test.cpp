// From the settings to the pixels that a marker has on the screen.
#include "look_table.h"
#include "overlay_fixture.h"

namespace skavlo {
namespace {

constexpr double kRounding = 2;  // levels

class PicturePixels : public OverlayFixture {
  protected:
    // Until it has its full size and its trail has faded.
    void touchAndWait() {
        canvas().skv_handleTouch(1, {kFinger.x + 0.5, kFinger.y + 0.5});
        play(1);
    }
    void expectSpot(const Spot& spot) {
        const auto place = static_cast<std::size_t>(
            (kFinger.y + spot.below) * screen.pixels().width + kFinger.x + spot.right);
        const std::uint32_t pixel = windowServer.pixels().at(place);
        const auto expected = blended(spot.layers);
        const std::array<unsigned, 4> shifts{16, 8, 0, 24};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(pixel >> shifts[i] & 255U, 255 * expected[i], kRounding)
                << "the component at bit " << shifts[i] << ", " << spot.right << " to the right, "
                << spot.below << " below";
        }
    }

    static constexpr PixelPoint kFinger{100, 200};
};

class LookPixels : public PicturePixels, public testing::WithParamInterface<LookCase> {};

TEST_P(LookPixels, AreAsTheSettingsSay) {
    writeSettings(GetParam().settings);
    launch();
    // The text has nothing to draw.
    if (!rasterizer.requests.empty()) rasterizer.answer(false);
    touchAndWait();
    for (const Spot& spot : GetParam().spots) expectSpot(spot);
}

INSTANTIATE_TEST_SUITE_P(Of, LookPixels, testing::ValuesIn(lookCases()),
                         [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(PicturePixels, OfAnImageHaveItsAlphaAndNoDisc) {
    files.writeAtomically("/library/image", "picture");
    writeSettings({{"displayMode", 1}, {"imagePath", "/library/image"}, {"emojiShowBorder", true}});
    launch();
    rasterizer.answer();
    touchAndWait();
    const Layer faded{0, 0, 1, 0.55};
    expectSpot({0, 0, {faded}});
    expectSpot({37, -37, {faded}});
    expectSpot({42, 0, {}});
}

TEST_F(PicturePixels, OfAnEmojiHaveItsAlpha) {
    writeSettings({{"displayMode", 2}});
    launch();
    rasterizer.answer();
    touchAndWait();
    expectSpot({0, 0, {{0, 0, 1, 0.8}}});
    expectSpot({27, 27, {{0, 0, 1, 0.8}}});
    expectSpot({32, 0, {}});
}

// Each with an alpha of its own; the disc lies over the text.
TEST_F(PicturePixels, OfAnEmojiWithADiscHaveBoth) {
    writeSettings({{"displayMode", 2}, {"emojiShowBorder", true}});
    launch();
    rasterizer.answer();
    touchAndWait();
    const Layer label{0, 0, 1, 0.8};
    const Layer disc{kLightGrey, kLightGrey, kLightGrey, 0.5};
    expectSpot({0, 0, {label, disc}});
    expectSpot({-27, 0, {label, disc, {1, 1, 1, 0.5}}});
    expectSpot({27, 27, {label}});
}

}  // namespace
}  // namespace skavlo
