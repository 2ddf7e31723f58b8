#include "tests/unit/ui/settings_fixture.h"
#include "ui/text_table.h"

namespace skavlo {
namespace {

constexpr Text kExpectedTexts[] = {
    {"应用介绍", "App Intro"},
    {"这是一个可以个性化显示屏幕触摸轨迹的应用。",
     "This is an application that can personalize the display of screen touch trajectories."},
    {"确定", "OK"},
    {"版本: %@\n作者: %@\n频道: %@\n支持: iOS14-17",
     "Version: %@\nAuthor: %@\nChannel: %@\nSupport: iOS14-17"},
    {"成功", "Success"},
    {"自定义图片已载入！", "Custom image loaded!"},
    {"启动设置", "Launch Settings"},
    {"触摸设置", "Touch Settings"},
    {"显示设置", "Display Settings"},
    {"开启 Skavlo", "Enable Skavlo"},
    {"仅录屏显示", "Show in Record Only"},
    {"多指显示", "Multi-Touch"},
    {"单指显示", "Single-Touch"},
    {"恢复设置", "Restore Settings"},
    {"以颜色显示", "Color Mode"},
    {"以图片显示", "Image Mode"},
    {"以表情显示", "Emoji Mode"},
    {"填充颜色", "Fill Color"},
    {"边框颜色", "Border Color"},
    {"跟随跟踪残影", "Trailing Effect"},
    {"透明度", "Opacity"},
    {"圆圈大小", "Circle Size"},
    {"边框宽度", "Border Width"},
    {"抬起缩放", "Lift Scale"},
    {"动画持续", "Duration"},
    {"选择自定义图片...", "Select Custom Image..."},
    {"图片大小", "Image Size"},
    {"设置表情", "Set Emoji"},
    {"颜色边框", "Color Border"},
    {"表情填充色", "Emoji Fill"},
    {"表情边框色", "Emoji Border"},
    {"表情大小", "Emoji Size"},
    {"填充透明度", "Fill Opacity"},
    {"边框透明度", "Border Opacity"},
    {"确定要将所有显示设置恢复为默认值吗？",
     "Are you sure you want to restore all display settings to default?"},
    {"取消", "Cancel"},
    {"恢复", "Restore"},
};

TEST(TextTable, HoldsEveryPair) {
    ASSERT_EQ(std::size(kExpectedTexts), kTextCount);
    for (std::size_t i = 0; i < kTextCount; ++i) {
        EXPECT_STREQ(textPair(static_cast<TextId>(i)).zh, kExpectedTexts[i].zh);
        EXPECT_STREQ(textPair(static_cast<TextId>(i)).en, kExpectedTexts[i].en);
    }
}

TEST(TextTable, FillInTakesOneArgumentAPlaceAndLooksIntoNone) {
    EXPECT_EQ(fillIn("a %@ b %@", {"%@", "2"}), "a %@ b 2");
    EXPECT_EQ(fillIn("%@ %@", {"1"}), "1 %@");
    EXPECT_EQ(fillIn("none", {"1"}), "none");
}

class Localization : public SettingsFixture {};

TEST_F(Localization, AMissingKeyIsChinese) {
    make();
    EXPECT_TRUE(settings().empty());
    EXPECT_STREQ(controller->L("确定", "OK"), "确定");
}

TEST_F(Localization, IsLookedUpAtEveryCall) {
    load();
    EXPECT_STREQ(controller->L("确定", "OK"), "确定");
    settings()["isEnglish"] = 1;
    EXPECT_STREQ(controller->L("确定", "OK"), "OK");
}

TEST_F(Localization, TheToggleWritesLoadsAgainAndReloads) {
    load();
    controller->skv_overlayEnabled = true;
    controller->skv_toggleLanguage();
    EXPECT_EQ(log.whats(), (Strings{kWrite, "setHeader", kWrite, "reloadData"}));
    EXPECT_EQ(stored().at("isEnglish"), PropertyValue(1));
    loop.runPosted();
    EXPECT_EQ(count(kReload), 0);
}

TEST_F(Localization, TogglingTwiceReturnsToChineseAsIntegerZero) {
    load();
    controller->skv_toggleLanguage();
    controller->skv_toggleLanguage();
    EXPECT_STREQ(controller->L("确定", "OK"), "确定");
    EXPECT_EQ(stored().at("isEnglish"), PropertyValue(0));
}

TEST_F(Localization, TheToggleDoesNothingWhileARestoreSuppressesActions) {
    load();
    controller->skv_restoreDefaults();
    advance(0.25);
    log.restart();
    controller->skv_toggleLanguage();
    EXPECT_TRUE(log.events.empty());
    EXPECT_EQ(settings().at("isEnglish"), PropertyValue(false));
    advance(0.25);
    controller->skv_toggleLanguage();
    EXPECT_EQ(settings().at("isEnglish"), PropertyValue(1));
}

TEST_F(Localization, RestoreKeepsTheLanguage) {
    load();
    controller->skv_toggleLanguage();
    controller->skv_restoreDefaults();
    EXPECT_STREQ(controller->L("确定", "OK"), "OK");
}

TEST_F(Localization, TheToggleEndsTheGracePeriod) {
    load();
    tap(controller->skv_enableSwitch);
    controller->skv_toggleLanguage();
    EXPECT_EQ(controller->skv_lastToggleTime, 0);
    loop.runPosted();
    EXPECT_EQ(count("spawn -check"), 1);
}

TEST_F(Localization, TheToggleMakesNewSwitchesThatActAndShowTheSame) {
    spawner.status = 0x100;
    load({{"onlyShowInRecord", true}, {"singleFingerMode", true}});
    const auto old = controller->skv_enableSwitch;
    const auto oldMulti = controller->skv_multiTouchSwitch;
    controller->skv_toggleLanguage();
    EXPECT_NE(controller->skv_enableSwitch, old);
    EXPECT_NE(controller->skv_multiTouchSwitch, oldMulti);
    EXPECT_TRUE(controller->skv_enableSwitch->isOn());
    EXPECT_TRUE(controller->skv_recordOnlySwitch->isOn());
    EXPECT_TRUE(controller->skv_singleTouchSwitch->isOn());
    tap(controller->skv_multiTouchSwitch);
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(0));
    EXPECT_FALSE(controller->skv_singleTouchSwitch->isOn());
}

TEST_F(Localization, TheToggleLeavesTheStatusTimerAlone) {
    load();
    const Timer* timer = controller->skv_statusTimer.get();
    controller->skv_toggleLanguage();
    EXPECT_EQ(controller->skv_statusTimer.get(), timer);
}

// Whoever finds the timer invalidates it; comes back for the next one.
class CountingTimer final : public Timer {
  public:
    CountingTimer(SettingsViewController& itsController, int& itsCount)
        : controller(itsController), count(itsCount) {}
    ~CountingTimer() override {
        if (invalidated) {
            controller.skv_statusTimer = std::make_unique<CountingTimer>(controller, count);
        }
    }
    CountingTimer(const CountingTimer&) = delete;
    CountingTimer& operator=(const CountingTimer&) = delete;
    void setFireDate(FireDate /*date*/) override {}
    void invalidate() override {
        ++count;
        invalidated = true;
    }

  private:
    SettingsViewController& controller;
    int& count;
    bool invalidated = false;
};

TEST_F(Localization, EveryToggleAddsTheObserversOnceMore) {
    load();
    for (int toggles = 0; toggles < 3; ++toggles) {
        int told = 0;
        controller->skv_statusTimer = std::make_unique<CountingTimer>(*controller, told);
        application.post(ApplicationEvent::didEnterBackground);
        EXPECT_EQ(told, toggles + 1);
        controller->skv_statusTimer = loop.scheduledTimer(100, true, [] {});
        controller->skv_toggleLanguage();
    }
    controller->skv_statusTimer.reset();
}

// A run loop that never gives a timer, so that each observer asks for one.
class TimerlessRunLoop final : public RunLoop {
  public:
    explicit TimerlessRunLoop(HeadlessRunLoop& itsLoop) : loop(itsLoop) {}
    void async(std::function<void()> block) override { loop.async(std::move(block)); }
    [[nodiscard]] bool isMainThread() const override { return loop.isMainThread(); }
    std::unique_ptr<Timer> scheduledTimer(double seconds, bool repeats,
                                          std::function<void()> /*action*/) override {
        asked.emplace_back(seconds, repeats);
        return nullptr;
    }
    HeadlessRunLoop& loop;
    std::vector<std::pair<double, bool>> asked;
};

TEST_F(Localization, EveryToggleObservesTheForegroundOnceMore) {
    TimerlessRunLoop timerless(loop);
    SettingsSystem other{.mainQueue = timerless,
                         .dispatch_queue_create = system.dispatch_queue_create,
                         .clock = clock,
                         .files = files,
                         .propertyLists = lists,
                         .notifications = notifications,
                         .spawner = spawner,
                         .imageShrinker = imageShrinker,
                         .application = application,
                         .directory = directory,
                         .executablePath = "/bundle/skavlo",
                         .about = system.about};
    SettingsViewController screen(other, view);
    screen.viewDidLoad();
    screen.skv_toggleLanguage();
    screen.skv_toggleLanguage();
    timerless.asked.clear();
    application.post(ApplicationEvent::didBecomeActive);
    EXPECT_EQ(timerless.asked, (std::vector<std::pair<double, bool>>(3, {2.0, true})));
}

class Header : public SettingsFixture {};

TEST_F(Header, IsChineseWithoutAFile) {
    load();
    EXPECT_EQ(view.header.languageButtonTitle, "中 / EN");
    EXPECT_EQ(view.header.aboutText,
              "版本: 2.5\n作者: The Author\n频道: https://channel.example\n支持: iOS14-17");
    EXPECT_EQ(view.header.channel, "https://channel.example");
}

TEST_F(Header, IsEnglishAfterARestartInEnglish) {
    load({{"isEnglish", 1}});
    EXPECT_EQ(view.header.languageButtonTitle, "EN / 中");
    EXPECT_EQ(
        view.header.aboutText,
        "Version: 2.5\nAuthor: The Author\nChannel: https://channel.example\nSupport: iOS14-17");
}

TEST_F(Header, ChangesWithTheLanguageAtOnce) {
    load();
    controller->skv_toggleLanguage();
    EXPECT_EQ(view.header.languageButtonTitle, "EN / 中");
    EXPECT_TRUE(view.header.aboutText.starts_with("Version: 2.5\n"));
    controller->skv_toggleLanguage();
    EXPECT_EQ(view.header.languageButtonTitle, "中 / EN");
    EXPECT_TRUE(view.header.aboutText.starts_with("版本: 2.5\n"));
}

TEST_F(Header, WithoutAVersionItIsOnePointZero) {
    system.about.version.reset();
    load();
    EXPECT_TRUE(view.header.aboutText.starts_with("版本: 1.0\n"));
    controller->skv_toggleLanguage();
    EXPECT_TRUE(view.header.aboutText.starts_with("Version: 1.0\n"));
}

TEST_F(Header, TheInfoButtonTellsWhatTheProgramIs) {
    load();
    for (const bool english : {false, true}) {
        controller->skv_infoBtnClicked();
        const Alert& alert = view.alerts.back();
        EXPECT_EQ(alert.title, english ? "App Intro" : "应用介绍");
        EXPECT_EQ(alert.message, english ? kExpectedTexts[1].en : kExpectedTexts[1].zh);
        ASSERT_EQ(alert.actions.size(), 1U);
        EXPECT_EQ(alert.actions[0].title, english ? "OK" : "确定");
        EXPECT_EQ(alert.actions[0].style, AlertActionStyle::standard);
        EXPECT_FALSE(alert.actions[0].handler);
        controller->skv_toggleLanguage();
    }
}

}  // namespace
}  // namespace skavlo
