// What holds for every look: clipping, bounds, odd numbers, all SIMD targets.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "overlay/render/render.h"
#include "overlay/render/sprite.h"
#include "reference.h"

namespace skavlo {
namespace {

constexpr PixelSize kSize{96, 80};
constexpr PixelRect kWhole{0, 0, kSize.width, kSize.height};

struct Look {
    const char* name;
    std::function<void(const RenderTarget&, const PixelRect&, std::span<const Instance>)> draw;
    std::function<PixelRect(const Instance&)> bounds;
};

void PrintTo(const Look& look, std::ostream* out) {
    *out << look.name;
}

Look circle(const char* name, const CircleStyle& style) {
    return {name,
            [style](auto& target, auto& clip, auto all) { drawCircles(target, clip, style, all); },
            [style](auto& i) { return circleBounds(style, i); }};
}

Look picture(const char* name, int texels) {
    const auto sprite = std::make_shared<Sprite>(starBitmap(texels), 40);
    return {
        name,
        [sprite](auto& target, auto& clip, auto all) { drawSprites(target, clip, *sprite, all); },
        [sprite](auto& i) { return spriteBounds(*sprite, i); }};
}

std::vector<Look> looks() {
    const Colour grey{0.66, 0.66, 0.66, 0.55};
    const Colour white{1, 1, 1, 0.55};
    const Colour red{1, 0, 0, 1};
    return {circle("plain", {40, 0, grey, white}),
            circle("bordered", {40, 4, grey, white}),
            circle("wideBorder", {40, 16, red, white}),
            circle("allBorder", {40, 30, red, white}),
            picture("coarse", 23),
            picture("fine", 131)};
}

class LookTest : public testing::TestWithParam<Look> {
  protected:
    static Bitmap noise() {
        std::mt19937 engine(7);
        const auto random = [&engine] { return std::uint32_t(engine()); };
        Bitmap bitmap = reference::blank(kSize);
        for (std::uint32_t& pixel : bitmap.pixels) {
            const std::uint32_t alpha = random() & 255;
            pixel = alpha << 24;
            for (int shift = 0; shift < 24; shift += 8) pixel |= random() % (alpha + 1) << shift;
        }
        return bitmap;
    }
    static std::vector<Instance> scattered() {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> unit(0, 1);
        std::vector<Instance> all;
        for (int i = 0; i < 60; ++i) {
            all.push_back({unit(random) * 120 - 12, unit(random) * 104 - 12,
                           unit(random) * unit(random) * 2.5F, unit(random)});
        }
        return all;
    }
    void draw(Bitmap& bitmap, const PixelRect& clip, std::span<const Instance> all) const {
        GetParam().draw(reference::targetOf(bitmap), clip, all);
    }
    Bitmap drawn(std::span<const Instance> all) const {
        Bitmap bitmap = noise();
        draw(bitmap, kWhole, all);
        return bitmap;
    }
    // Pixels inside `clip` are those of `inside`, all others those of `outside`.
    static void expectClipped(const Bitmap& found, const PixelRect& clip, const Bitmap& inside,
                              const Bitmap& outside) {
        int wrong = 0;
        for (int y = 0; y < kSize.height; ++y) {
            for (int x = 0; x < kSize.width; ++x) {
                const auto at = std::size_t(y * kSize.width + x);
                const bool in = x >= clip.x && x < clip.right() && y >= clip.y && y < clip.bottom();
                if (found.pixels[at] != (in ? inside : outside).pixels[at]) ++wrong;
            }
        }
        EXPECT_EQ(wrong, 0);
    }
};

TEST_P(LookTest, DrawsTheSamePixelsWithinAClip) {
    const auto all = scattered();
    const Bitmap whole = drawn(all);
    ASSERT_NE(whole.pixels, noise().pixels);
    for (const PixelRect clip : {PixelRect{17, 13, 41, 29},
                                 {40, 0, 1, 80},
                                 {0, 33, 96, 1},
                                 {-5, -9, 50, 40},
                                 {60, 50, 500, 500},
                                 {90, 3, 5, 70}}) {
        Bitmap bitmap = noise();
        draw(bitmap, clip, all);
        expectClipped(bitmap, clip, whole, noise());
    }
}

TEST_P(LookTest, DrawsTheSamePixelsAtTheTargetsSides) {
    const auto all = scattered();
    constexpr int kRoom = 100;
    Bitmap wide = reference::blank({kSize.width + 2 * kRoom, kSize.height + 2 * kRoom});
    auto moved = all;
    for (Instance& i : moved) i = {i.x + kRoom, i.y + kRoom, i.scale, i.opacity};
    draw(wide, {0, 0, wide.size.width, wide.size.height}, moved);
    Bitmap bitmap = reference::blank(kSize);
    draw(bitmap, kWhole, all);
    int most = 0;  // moving rounds the centres, so that levels may differ by one
    for (int y = 0; y < kSize.height; ++y) {
        for (int x = 0; x < kSize.width; ++x) {
            const std::uint32_t a = bitmap.pixels[std::size_t(y * kSize.width + x)];
            const std::uint32_t b =
                wide.pixels[std::size_t((y + kRoom) * wide.size.width + x + kRoom)];
            for (int s = 0; s < 32; s += 8) {
                most = std::max(most, std::abs(int(a >> s & 255) - int(b >> s & 255)));
            }
        }
    }
    EXPECT_LE(most, 1);
}

TEST_P(LookTest, WritesNothingOutsideItsBounds) {
    for (const Instance& instance : scattered()) {
        const Bitmap bitmap = drawn({&instance, 1});
        const PixelRect bounds = GetParam().bounds(instance);
        expectClipped(bitmap, bounds, bitmap, noise());
    }
}

TEST_P(LookTest, KeepsWithinAStrideAndAWindow) {
    constexpr int kStride = 120;
    const std::uint32_t sentinel = 0x01234567;
    std::vector<std::uint32_t> memory(std::size_t(kStride * kSize.height), sentinel);
    const RenderTarget target{memory.data(), kStride, kSize};
    GetParam().draw(target, {-1000, -1000, 5000, 5000}, scattered());
    int touched = 0;
    for (int y = 0; y < kSize.height; ++y) {
        for (int x = kSize.width; x < kStride; ++x) {
            if (memory[std::size_t(y * kStride + x)] != sentinel) ++touched;
        }
    }
    EXPECT_EQ(touched, 0);
}

TEST_P(LookTest, DrawsTwiceTheSame) {
    EXPECT_EQ(drawn(scattered()).pixels, drawn(scattered()).pixels);
}

TEST_P(LookTest, LeavesInvisibleInstancesOut) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const Instance odd[] = {{40, 40, 0, 1},        {40, 40, -1, 1},       {40, 40, 1, 0},
                            {40, 40, 1, -1},       {nan, 40, 1, 1},       {40, nan, 1, 1},
                            {40, 40, nan, 1},      {40, 40, 1, nan},      {infinity, 40, 1, 1},
                            {40, -infinity, 1, 1}, {40, 40, infinity, 1}, {40, 40, 1, infinity},
                            {40, 40, 0.01F, 1},    {40, 40, 1, 0.003F}};
    for (const Instance& instance : odd) {
        EXPECT_TRUE(GetParam().bounds(instance).empty());
        EXPECT_EQ(drawn({&instance, 1}).pixels, noise().pixels);
    }
}

TEST_P(LookTest, BearsHugeNumbers) {
    const float huge = 1e9F;
    const Instance far[] = {{huge, 40, 1, 1}, {40, -huge, 1, 1}, {-huge, -huge, 1, 1}};
    EXPECT_EQ(drawn(far).pixels, noise().pixels);
    const float most = std::numeric_limits<float>::max();
    const Instance large[] = {{40, 40, huge, 0.5F},
                              {huge, huge, huge, 1},
                              {40, 40, most, 1},
                              {most, most, most, 1},
                              {40, 40, 5e4F, 2}};
    for (const Instance& instance : large) {
        const PixelRect bounds = GetParam().bounds(instance);
        EXPECT_FALSE(bounds.empty());
        EXPECT_GE(bounds.right(), bounds.x);
        EXPECT_EQ(drawn({&instance, 1}).pixels, drawn({&instance, 1}).pixels);
    }
}

TEST_P(LookTest, CoversTheWholeTargetWhenHuge) {
    const Instance middle{48, 40, 1e6F, 1};
    Bitmap bitmap = reference::blank(kSize);
    draw(bitmap, kWhole, {&middle, 1});
    const auto [least, most] = std::minmax_element(bitmap.pixels.begin(), bitmap.pixels.end());
    EXPECT_EQ(*least, *most);
    EXPECT_NE(*least, 0U);
}

TEST_P(LookTest, NeverExceedsItsAlphaInManyLayers) {
    Bitmap bitmap = noise();
    std::vector<Instance> layers(255, Instance{48.3F, 40.6F, 1.5F, 0.02F});
    draw(bitmap, kWhole, layers);
    layers.assign(255, Instance{48.3F, 40.6F, 1.5F, 0.3F});
    draw(bitmap, kWhole, layers);
    int wrong = 0;
    for (const std::uint32_t pixel : bitmap.pixels) {
        for (int shift = 0; shift < 24; shift += 8) {
            if ((pixel >> shift & 255) > pixel >> 24) ++wrong;
        }
    }
    EXPECT_EQ(wrong, 0);
    const std::uint32_t middle = bitmap.pixels[40 * kSize.width + 48];
    EXPECT_GE(middle >> 24, 252U);
}

// Runs the test's body once per target that this processor has, best first.
class Targets {
  public:
    ~Targets() { use(0); }
    static std::vector<std::int64_t> all() {
        std::vector<std::int64_t> found;
        for (const std::int64_t target :
             {HWY_AVX3, HWY_AVX2, HWY_SSE4, HWY_SSSE3, HWY_NEON, HWY_EMU128}) {
            if ((HWY_TARGETS & hwy::SupportedTargets() & target) != 0) found.push_back(target);
        }
        // The portable fallback is always there, listed or not.
        if (found.empty() || found.back() != HWY_EMU128) found.push_back(HWY_EMU128);
        return found;
    }
    void use(std::int64_t target) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};

TEST_P(LookTest, IsTheSameOnEverySimdTarget) {
    const auto all = scattered();
    const auto targets = Targets::all();
    ASSERT_GE(targets.size(), 2U);
    Targets use;
    use.use(targets.front());
    for (const std::int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        for (const Instance& instance : all) {
            use.use(targets.front());
            const Bitmap expected = drawn({&instance, 1});
            use.use(target);
            const Bitmap found = drawn({&instance, 1});
            int most = 0;
            for (std::size_t i = 0; i < found.pixels.size(); ++i) {
                for (int s = 0; s < 32; s += 8) {
                    most = std::max(most, std::abs(int(found.pixels[i] >> s & 255) -
                                                   int(expected.pixels[i] >> s & 255)));
                }
            }
            EXPECT_LE(most, 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, LookTest, testing::ValuesIn(looks()),
                         [](const auto& look) { return std::string(look.param.name); });

// So many that they are drawn in bands of rows, beside the same in portions too small for that.
TEST(ManyCircles, AreDrawnAsFewAre) {
    constexpr PixelSize kLarge{900, 700};
    constexpr PixelRect kClip{30, 40, 850, 630};
    const CircleStyle style{60, 5, {1, 0, 0, 0.3}, {0, 1, 1, 0.6}};
    std::mt19937 random(5);
    std::uniform_real_distribution<float> unit(-0.1F, 1.1F);
    std::vector<Instance> all;
    for (int i = 0; i < 6000; ++i) {
        all.push_back({kLarge.width * unit(random), kLarge.height * unit(random), unit(random),
                       unit(random)});
    }
    all[77].x = std::numeric_limits<float>::quiet_NaN();
    all[78].scale = 1e30F;
    Bitmap atOnce = reference::blank(kLarge);
    drawCircles(reference::targetOf(atOnce), kClip, style, all);
    Bitmap inPortions = reference::blank(kLarge);
    for (std::size_t i = 0; i < all.size(); i += 500) {
        drawCircles(reference::targetOf(inPortions), kClip, style, std::span(all).subspan(i, 500));
    }
    EXPECT_EQ(atOnce.pixels, inPortions.pixels);
    EXPECT_NE(atOnce.pixels, reference::blank(kLarge).pixels);
}

TEST(Clear, EmptiesARectangleAndNothingElse) {
    Bitmap bitmap = reference::blank(kSize);
    std::fill(bitmap.pixels.begin(), bitmap.pixels.end(), 0xFFFFFFFFU);
    clear(reference::targetOf(bitmap), {90, -4, 100, 10});
    for (int y = 0; y < kSize.height; ++y) {
        for (int x = 0; x < kSize.width; ++x) {
            ASSERT_EQ(bitmap.pixels[std::size_t(y * kSize.width + x)],
                      x >= 90 && y < 6 ? 0U : 0xFFFFFFFFU);
        }
    }
}

TEST(Targets, NothingToDrawOn) {
    const Instance instance{1, 1, 1, 1};
    const CircleStyle style{10, 1, {1, 1, 1, 1}, {1, 1, 1, 1}};
    const Sprite none(nullptr, 10);
    Bitmap bitmap = reference::blank(kSize);
    drawCircles({}, kWhole, style, {&instance, 1});
    drawCircles(reference::targetOf(bitmap), {}, style, {&instance, 1});
    drawCircles(reference::targetOf(bitmap), kWhole, CircleStyle{-1, 0, {}, {}}, {&instance, 1});
    drawCircles(reference::targetOf(bitmap), kWhole, CircleStyle{NAN, NAN, {1, 1, 1, 1}, {}},
                {&instance, 1});
    drawSprites(reference::targetOf(bitmap), kWhole, none, {&instance, 1});
    EXPECT_TRUE(spriteBounds(none, instance).empty());
    EXPECT_EQ(bitmap.pixels, reference::blank(kSize).pixels);
}

}  // namespace
}  // namespace skavlo
