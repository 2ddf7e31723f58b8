#include "platform/linux/capture/capture_monitor.h"

#include <gtest/gtest.h>

#include "platform/linux/capture/mirror_source.h"

namespace skavlo {
namespace {

class SwitchSource final : public CaptureSource {
  public:
    void set(bool captures) { setCaptures(captures); }
};

class Monitor : public testing::Test {
  protected:
    Monitor() {
        for (SwitchSource** source : {&first, &second}) {
            auto owned = std::make_unique<SwitchSource>();
            *source = owned.get();
            monitor.add(std::move(owned));
        }
        monitor.setDidChangeHandler([this] { ++changes; });
    }
    CaptureMonitor monitor;
    SwitchSource* first = nullptr;
    SwitchSource* second = nullptr;
    int changes = 0;
};

TEST(CaptureMonitor, WithoutSourcesNothingIsCaptured) {
    EXPECT_FALSE(CaptureMonitor().isCaptured());
}

TEST_F(Monitor, OneSourceIsEnough) {
    first->set(true);
    EXPECT_TRUE(monitor.isCaptured());
    second->set(true);
    first->set(false);
    EXPECT_TRUE(monitor.isCaptured());
    second->set(false);
    EXPECT_FALSE(monitor.isCaptured());
}

TEST_F(Monitor, OnlyChangesOfTheWholeAreTold) {
    first->set(true);
    EXPECT_EQ(changes, 1);
    first->set(true);
    second->set(true);
    second->set(false);
    EXPECT_EQ(changes, 1);
    first->set(false);
    EXPECT_EQ(changes, 2);
}

TEST_F(Monitor, TheNewStateIsThereWhenTheHandlerAsks) {
    bool seen = false;
    monitor.setDidChangeHandler([&] { seen = monitor.isCaptured(); });
    second->set(true);
    EXPECT_TRUE(seen);
}

TEST_F(Monitor, ASourceThatCapturesAlreadyCountsAtOnce) {
    auto owned = std::make_unique<SwitchSource>();
    owned->set(true);
    monitor.add(std::move(owned));
    EXPECT_TRUE(monitor.isCaptured());
    EXPECT_EQ(changes, 1);
}

TEST_F(Monitor, WithoutAHandlerChangesAreFollowedAllTheSame) {
    monitor.setDidChangeHandler({});
    first->set(true);
    EXPECT_TRUE(monitor.isCaptured());
    EXPECT_EQ(changes, 0);
}

OutputInfo output(PixelRect rect) {
    OutputInfo info;
    info.rect = rect;
    return info;
}

constexpr PixelRect kLeft{0, 0, 1920, 1080};
constexpr PixelRect kRight{1920, 0, 1920, 1080};

struct MirrorCase {
    const char* name;
    std::vector<PixelRect> rects;
    std::size_t main;
    bool mirrored;
};

class Mirroring : public testing::TestWithParam<MirrorCase> {};

TEST_P(Mirroring, IsToldByThePlacesOfTheOutputs) {
    OutputLayout layout;
    for (const PixelRect& rect : GetParam().rects) layout.outputs.push_back(output(rect));
    layout.main = GetParam().main;
    EXPECT_EQ(isMirrored(layout), GetParam().mirrored);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, Mirroring,
    testing::Values(MirrorCase{"NoOutput", {}, 0, false}, MirrorCase{"One", {kLeft}, 0, false},
                    MirrorCase{"SideBySide", {kLeft, kRight}, 0, false},
                    MirrorCase{"Same", {kLeft, kLeft}, 0, true},
                    MirrorCase{"SameAndMainIsTheSecond", {kLeft, kLeft}, 1, true},
                    MirrorCase{"OverlapOnly", {kLeft, {0, 0, 1280, 720}}, 0, false},
                    MirrorCase{"TheOthersMirrorEachOther", {kLeft, kRight, kRight}, 0, false},
                    MirrorCase{"NoMainAndTwoSame", {kLeft, kRight, kRight}, 7, true},
                    MirrorCase{"TwoThatAreOff", {{}, {}}, 0, false}),
    [](const auto& instance) { return instance.param.name; });

TEST(MirrorSource, FollowsTheLayout) {
    OutputLayout layout;
    layout.outputs = {output(kLeft), output(kRight)};
    MirrorSource source([&] { return layout; });
    EXPECT_FALSE(source.captures());
    layout.outputs[1].rect = kLeft;
    source.layoutChanged();
    EXPECT_TRUE(source.captures());
    layout.outputs.pop_back();
    source.layoutChanged();
    EXPECT_FALSE(source.captures());
}

}  // namespace
}  // namespace skavlo
