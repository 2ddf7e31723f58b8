// Source-over in 16-bit fixed point. A pixel is split into blue and red (even bytes) and green and
// alpha (odd bytes), so that nothing moves between lanes. Included once per SIMD target.
#if defined(SKAVLO_BLEND_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKAVLO_BLEND_INL
#undef SKAVLO_BLEND_INL
#else
#define SKAVLO_BLEND_INL
#endif

#include <hwy/highway.h>

#include <cmath>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace skavlo {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
namespace {

// Eight pixels are enough: wider vectors would mostly hang over the rims of small circles.
constexpr hn::CappedTag<float, 8> kFloats;
constexpr hn::RebindToUnsigned<decltype(kFloats)> kPixels;
constexpr hn::Repartition<std::uint16_t, decltype(kPixels)> kHalves;
using VF = hn::Vec<decltype(kFloats)>;
using VU32 = hn::Vec<decltype(kPixels)>;
using VU16 = hn::Vec<decltype(kHalves)>;
constexpr int kLanes = int(hn::MaxLanes(kFloats));

constexpr hn::RebindToSigned<decltype(kFloats)> kInts;
using VI = hn::Vec<decltype(kInts)>;
constexpr std::uint16_t kCovered = 65535;  // a whole pixel

// The lanes' numbers. Highway's own writes them one by one and then reads them as a whole, which
// waits for the writes.
HWY_ALIGN constexpr float kLaneNumbers[8] = {0, 1, 2, 3, 4, 5, 6, 7};
HWY_INLINE VF laneNumbers() {
    return hn::Load(kFloats, kLaneNumbers);
}

// Two channels of the source, one level being 256, over the pixels under them. `kept` is what
// remains of the latter, 65535 being all of it. Half a level is added so that the top byte rounds.
HWY_INLINE VU16 overHalves(VU16 below, VU16 kept, VU16 sourceAndHalf) {
    return hn::Add(hn::MulHigh(below, kept), sourceAndHalf);
}

HWY_INLINE VU32 overPixels(VU32 below, VU16 kept, VU16 blueRed, VU16 greenAlpha) {
    const VU16 highBytes = hn::Set(kHalves, std::uint16_t{0xFF00});
    const VU16 pixels = hn::BitCast(kHalves, below);
    const VU16 even = overHalves(hn::ShiftLeft<8>(pixels), kept, blueRed);
    const VU16 odd = overHalves(hn::And(pixels, highBytes), kept, greenAlpha);
    return hn::BitCast(kPixels, hn::Or(hn::ShiftRight<8>(even), hn::And(odd, highBytes)));
}

// One colour for whole runs.
struct SolidPaint {
    VU16 kept, blueRed, greenAlpha;
    HWY_INLINE VU32 over(VU32 below) const { return overPixels(below, kept, blueRed, greenAlpha); }
};

// One premultiplied colour (blue, green, red, alpha) as factors of a 16-bit coverage.
struct Factors {
    VU16 blueRed, greenAlpha;  // times 65280: a level is 256
    VU16 alpha;                // times 65535 in both halves

    HWY_INLINE Factors(const float* premultiplied, float opacity)
        : blueRed(pair(premultiplied[0] * opacity, premultiplied[2] * opacity)),
          greenAlpha(pair(premultiplied[1] * opacity, premultiplied[3] * opacity)),
          alpha(hn::Set(kHalves, std::uint16_t(premultiplied[3] * opacity * 65535.0F + 0.5F))) {}

  private:
    static HWY_INLINE VU16 pair(float even, float odd) {
        const auto fixed = [](float v) { return std::uint32_t(v * 65280.0F + 0.5F); };
        return hn::BitCast(kHalves, hn::Set(kPixels, fixed(even) | fixed(odd) << 16));
    }
};

// The two colours of a circle. All products round down and so never make a colour exceed its
// alpha; solid() takes the same steps, so that a run and a fully covered edge pixel are equal.
struct TwoPaints {
    Factors rim, inside;

    HWY_INLINE TwoPaints(const float* rimColour, const float* insideColour, float opacity)
        : rim(rimColour, opacity), inside(insideColour, opacity) {}

    // Coverages by the whole disc and by its inside, in both halves of a pixel.
    HWY_INLINE SolidPaint mixed(VU16 outer, VU16 inner) const {
        const VU16 ring = hn::SaturatedSub(outer, inner);
        const VU16 halfLevel = hn::Set(kHalves, std::uint16_t{128});
        const VU16 blueRed = sum(ring, rim.blueRed, inner, inside.blueRed);
        const VU16 greenAlpha = sum(ring, rim.greenAlpha, inner, inside.greenAlpha);
        return {hn::Not(sum(ring, rim.alpha, inner, inside.alpha)), hn::Add(blueRed, halfLevel),
                hn::Add(greenAlpha, halfLevel)};
    }
    HWY_INLINE VU32 over(VU32 below, VU16 outer, VU16 inner) const {
        return mixed(outer, inner).over(below);
    }
    HWY_INLINE SolidPaint solid(std::uint16_t ring, std::uint16_t inner) const {
        return mixed(hn::Set(kHalves, std::uint16_t(ring | inner)), hn::Set(kHalves, inner));
    }

  private:
    static HWY_INLINE VU16 sum(VU16 a, VU16 factorA, VU16 b, VU16 factorB) {
        return hn::Add(hn::MulHigh(a, factorA), hn::MulHigh(b, factorB));
    }
};

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace skavlo
HWY_AFTER_NAMESPACE();

#endif
