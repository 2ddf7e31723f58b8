// The settings application worked with the keyboard alone, and by assistive technology.
#include <gmock/gmock.h>

#include "tests/e2e/settings/settings_rig.h"
#include "tools/rig/desktop_portal.h"

namespace skavlo {
namespace {

// The X protocol's names of keys.
enum Key : std::uint32_t {
    kTab = 0xff09,
    kReturn = 0xff0d,
    kEscape = 0xff1b,
    kUp = 0xff52,
    kRight = 0xff53,
    kDown = 0xff54,
    kSpace = 0x0020
};

constexpr const char* kChooseEmoji = "选择表情";
constexpr const char* kLinkRole = "link";

class WithoutPointer : public SettingsRig {
  protected:
    void openMode(int mode) {
        PropertyDictionary settings;
        settings["displayMode"] = mode;
        writeSettings(settings);
        ASSERT_NO_FATAL_FAILURE(open());
        const auto somewhere = item("heading", "Skavlo");
        ASSERT_TRUE(application().pointer().focusWindowAt(somewhere.center()));
    }
    [[nodiscard]] std::string focused() {
        return application().tree().focused().value_or(rig::AccessibleItem{}).name;
    }
    bool focusBecomes(const std::string& name) {
        return becomesTrue([&] { return focused() == name; });
    }
    void type(Key key) { EXPECT_TRUE(application().pointer().type(key)); }
    // What has the focus once this key has moved it.
    std::string typeAndFollow(Key key) {
        const std::string before = focused();
        std::string now;
        type(key);
        EXPECT_TRUE(becomesTrue([&] { return (now = focused()) != before; })) << "at " << before;
        return now;
    }
    // Tab until it has the focus.
    bool tabTo(const std::string& name) {
        constexpr int kMostTabs = 40;
        for (int tab = 0; tab < kMostTabs; ++tab) {
            if (typeAndFollow(kTab) == name) return true;
            if (HasFailure()) return false;
        }
        return false;
    }
    bool emojiBecomes(const std::string& emoji) {
        return settingBecomes("emojiString", PropertyValue(emoji));
    }
};

TEST_F(WithoutPointer, TheKeyboardChoosesAnEmojiFromTheGrid) {
    ASSERT_NO_FATAL_FAILURE(openMode(2));
    ASSERT_TRUE(tabTo(kChooseEmoji));
    type(kReturn);
    ASSERT_TRUE(focusBecomes("🍎")) << "the first of the grid";
    EXPECT_EQ(typeAndFollow(kRight), "👆");
    const std::string chosen = typeAndFollow(kDown);
    EXPECT_NE(chosen, "👉") << "that beside it";
    EXPECT_TRUE(application().tree().find(rig::kButtonRole, chosen)->focused);
    type(kSpace);
    EXPECT_TRUE(emojiBecomes(chosen));
    EXPECT_TRUE(focusBecomes(kChooseEmoji));
    type(kSpace);
    ASSERT_TRUE(focusBecomes(chosen)) << "where it was left";
    type(kEscape);
    EXPECT_TRUE(focusBecomes(kChooseEmoji));
    EXPECT_TRUE(emojiBecomes(chosen));
}

TEST_F(WithoutPointer, AssistiveTechnologyChoosesAnyEmojiOfTheGrid) {
    ASSERT_NO_FATAL_FAILURE(openMode(2));
    for (const char* emoji : {"🌈", "👀"}) {  // in sight, and the last one
        ASSERT_TRUE(application().tree().press(rig::kButtonRole, kChooseEmoji));
        const auto shown = item(rig::kButtonRole, emoji);
        EXPECT_THAT(shown.actions, testing::Contains(rig::kPressAction));
        EXPECT_TRUE(shown.focusable);
        ASSERT_TRUE(application().tree().press(rig::kButtonRole, emoji));
        EXPECT_TRUE(emojiBecomes(emoji));
    }
}

TEST_F(WithoutPointer, TheKeyboardWorksSwitchesSlidersAndAlerts) {
    ASSERT_NO_FATAL_FAILURE(openMode(0));
    ASSERT_TRUE(tabTo("单指显示"));
    type(kSpace);
    EXPECT_TRUE(settingBecomes("singleFingerMode", true));
    ASSERT_TRUE(tabTo("圆圈大小"));
    EXPECT_EQ(application().tree().focused()->role, rig::kSliderRole);
    type(kRight);
    EXPECT_TRUE(settingBecomes("colorSize", 56.0));
    type(kDown);
    EXPECT_TRUE(settingBecomes("colorSize", 55.0));
    type(kUp);
    EXPECT_TRUE(settingBecomes("colorSize", 56.0));
    ASSERT_TRUE(tabTo("恢复设置"));
    type(kReturn);
    ASSERT_TRUE(focusBecomes("取消"));
    type(kEscape);
    EXPECT_TRUE(goes("alert", "恢复设置"));
    EXPECT_TRUE(focusBecomes("恢复设置"));
    EXPECT_EQ(settings()["colorSize"], PropertyValue(56.0));
    type(kReturn);
    ASSERT_TRUE(focusBecomes("取消"));
    EXPECT_EQ(typeAndFollow(kTab), "恢复");
    type(kSpace);
    EXPECT_TRUE(settingBecomes("colorSize", 55.0));
}

TEST_F(WithoutPointer, TheLinkIsOpenedByTheDesktop) {
    ASSERT_NO_FATAL_FAILURE(openMode(0));
    auto portal = rig::DesktopPortal::start(false);
    ASSERT_TRUE(portal) << portal.error().message;
    ASSERT_TRUE(tabTo(SKAVLO_CHANNEL));
    EXPECT_EQ(application().tree().focused()->role, kLinkRole);
    const auto opened = [&](std::size_t count) {
        return becomesTrue([&] { return portal->openedLinks().size() == count; });
    };
    type(kReturn);
    EXPECT_TRUE(opened(1));
    type(kSpace);
    EXPECT_TRUE(opened(2));
    EXPECT_TRUE(application().tree().press(kLinkRole, SKAVLO_CHANNEL));
    EXPECT_TRUE(opened(3));
    EXPECT_THAT(portal->openedLinks(), testing::Each(SKAVLO_CHANNEL));
}

}  // namespace
}  // namespace skavlo
