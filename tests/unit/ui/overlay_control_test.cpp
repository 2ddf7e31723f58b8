#include "tests/unit/ui/settings_fixture.h"

namespace skavlo {
namespace {

constexpr int kRunning = 0x100;  // status word of exit status 1

class OverlayControl : public SettingsFixture {};

TEST_F(OverlayControl, SwitchingOnPostsExitWaitsAQuarterSecondAndSpawns) {
    load();
    tap(controller->skv_enableSwitch);
    EXPECT_TRUE(controller->skv_overlayEnabled);
    EXPECT_EQ(controller->skv_lastToggleTime, clock.timeIntervalSince1970());
    EXPECT_TRUE(log.events.empty()) << "all of it belongs on the queue";
    loop.runPosted();
    EXPECT_EQ(log.events, (Events{{0, kExit}, {0.25, "spawn -hud"}}));
    EXPECT_EQ(spawner.spawned.back(), (SpawnDescription{.arguments = {"/bundle/skavlo", "-hud"},
                                                        .ownProcessGroup = true,
                                                        .asRoot = true}));
}

TEST_F(OverlayControl, SwitchingOffPostsExitAndSpawnsNothing) {
    spawner.status = kRunning;
    load();
    ASSERT_TRUE(controller->skv_enableSwitch->isOn());
    tap(controller->skv_enableSwitch);
    EXPECT_FALSE(controller->skv_overlayEnabled);
    loop.runPosted();
    EXPECT_EQ(log.events, (Events{{0, kExit}}));
    EXPECT_EQ(log.now(), 0.25) << "the queue stays shut while the overlay goes";
}

TEST_F(OverlayControl, QuickTogglesKeepTheirOrder) {
    load();
    for (int i = 0; i < 3; ++i) tap(controller->skv_enableSwitch);  // on, off, on
    loop.runPosted();
    EXPECT_EQ(
        log.events,
        (Events{
            {0, kExit}, {0.25, "spawn -hud"}, {0.25, kExit}, {0.5, kExit}, {0.75, "spawn -hud"}}));
}

TEST_F(OverlayControl, TheEnableSwitchActsWhileActionsAreSuppressed) {
    load();
    controller->skv_suppressControlActions = true;
    tap(controller->skv_enableSwitch);
    loop.runPosted();
    EXPECT_EQ(count("spawn -hud"), 1);
}

TEST_F(OverlayControl, TheProbeRunsAsRootInTheCallersGroupAndIsWaitedFor) {
    load();
    EXPECT_EQ(
        spawner.spawned,
        (std::vector{SpawnDescription{.arguments = {"/bundle/skavlo", "-check"}, .asRoot = true}}));
    EXPECT_EQ(spawner.waitedFor, spawner.lastPid);
}

struct ProbeCase {
    const char* name;
    std::optional<int> status;
    bool running;
};
class Probe : public SettingsFixture, public testing::WithParamInterface<ProbeCase> {};

TEST_P(Probe, CountsTheSecondByteOfTheStatusWordAlone) {
    spawner.status = GetParam().status;
    load();
    EXPECT_EQ(controller->skv_overlayEnabled, GetParam().running);
    EXPECT_EQ(controller->skv_enableSwitch->isOn(), GetParam().running);
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, Probe,
    testing::Values(ProbeCase{"Exit0", 0, false}, ProbeCase{"Exit1", 0x100, true},
                    ProbeCase{"Exit2", 0x200, false}, ProbeCase{"Exit3", 0x300, false},
                    ProbeCase{"Signal1", 1, false}, ProbeCase{"Exit1WithASignal", 0x101, true},
                    ProbeCase{"Exit1BelowMore", 0x10100, true},
                    ProbeCase{"NoStatus", std::nullopt, false}),
    [](const auto& suite) { return std::string(suite.param.name); });

TEST_F(OverlayControl, AProbeThatCannotBeStartedCountsAsNotRunning) {
    spawner.status = kRunning;
    load();
    spawner.works = false;
    advance(2);
    EXPECT_FALSE(controller->skv_overlayEnabled);
    EXPECT_FALSE(controller->skv_enableSwitch->isOn());
    EXPECT_EQ(count("wait"), 0);
}

TEST_F(OverlayControl, APollReapsEveryFinishedChildBeforeItProbes) {
    load();
    spawner.finishedChildren = 2;
    advance(2);
    EXPECT_EQ(log.events,
              (Events{{2, "reap"}, {2, "reap"}, {2, "reap"}, {2, "spawn -check"}, {2, "wait"}}));
}

TEST_F(OverlayControl, ThePollSetsTheSwitchWithoutAnimationAndEvent) {
    load();
    std::vector<bool> changes;
    controller->skv_enableSwitch->didChange = [&](bool animated) { changes.push_back(animated); };
    spawner.status = kRunning;
    advance(2);
    EXPECT_TRUE(controller->skv_enableSwitch->isOn());
    EXPECT_EQ(changes, std::vector{false});
    EXPECT_EQ(count("spawn -hud"), 0);
}

TEST_F(OverlayControl, ProbesFollowEveryTwoSecondsFromTheLoad) {
    load();
    advance(6);
    EXPECT_EQ(only("spawn"),
              (Events{{2, "spawn -check"}, {4, "spawn -check"}, {6, "spawn -check"}}));
}

TEST_F(OverlayControl, ATickWithinTheGracePeriodDoesNotProbe) {
    load();
    after(1, [this] { tap(controller->skv_enableSwitch); });
    advance(3.9);
    EXPECT_EQ(count("spawn -check"), 0);
    EXPECT_TRUE(controller->skv_enableSwitch->isOn());
    advance(0.1);
    EXPECT_EQ(only("spawn -check"), (Events{{4, "spawn -check"}}));
}

TEST_F(OverlayControl, TheGracePeriodIsOverAfterExactlyOneAndAHalfSeconds) {
    load();
    after(0.5, [this] { tap(controller->skv_enableSwitch); });
    advance(2);
    EXPECT_EQ(only("spawn -check"), (Events{{2, "spawn -check"}}));
}

TEST_F(OverlayControl, AToggleDuringTheProbeWinsOverItsAnswer) {
    load();
    spawner.duringProbe = [this] { tap(controller->skv_enableSwitch); };
    advance(2);
    EXPECT_EQ(only("spawn -check").size(), 1U);
    EXPECT_TRUE(controller->skv_overlayEnabled);
    EXPECT_TRUE(controller->skv_enableSwitch->isOn());
}

TEST_F(OverlayControl, AFailedStartIsUndoneByTheFirstPollAfterTheGracePeriod) {
    load();
    spawner.works = false;
    after(1, [this] { tap(controller->skv_enableSwitch); });
    advance(3.5);
    EXPECT_TRUE(controller->skv_enableSwitch->isOn());
    advance(0.5);
    EXPECT_FALSE(controller->skv_enableSwitch->isOn());
    EXPECT_FALSE(controller->skv_overlayEnabled);
}

TEST_F(OverlayControl, TheBackgroundStopsPollingAndComingBackStartsOneTimer) {
    load();
    application.post(ApplicationEvent::didEnterBackground);
    EXPECT_EQ(controller->skv_statusTimer, nullptr);
    advance(10);
    EXPECT_EQ(count("spawn -check"), 0);
    application.post(ApplicationEvent::didBecomeActive);
    application.post(ApplicationEvent::didBecomeActive);
    advance(4);
    EXPECT_EQ(only("spawn"), (Events{{12, "spawn -check"}, {14, "spawn -check"}}));
}

TEST_F(OverlayControl, BecomingActiveLeavesARunningTimerAlone) {
    load();
    advance(1);
    const Timer* timer = controller->skv_statusTimer.get();
    controller->skv_appDidBecomeActive();
    EXPECT_EQ(controller->skv_statusTimer.get(), timer);
    advance(1);
    EXPECT_EQ(only("spawn"), (Events{{2, "spawn -check"}}));
}

TEST_F(OverlayControl, OneQueueOfTheGivenLabelIsMadeWhenItIsFirstNeeded) {
    make();
    EXPECT_TRUE(queueLabels.empty());
    controller->viewDidLoad();
    tap(controller->skv_enableSwitch);
    controller->skv_saveSettingsAndNotify();
    EXPECT_EQ(queueLabels, Strings{"com.oxbrel.skavlo.daemonQueue"});
}

TEST_F(OverlayControl, RecordOnlyOnIsSavedAtOnce) {
    load();
    tap(controller->skv_recordOnlySwitch);
    loop.runPosted();
    EXPECT_EQ(log.events, (Events{{0, kWrite}}));
    EXPECT_EQ(stored().at("onlyShowInRecord"), PropertyValue(true));
    EXPECT_EQ(stored().at("forceHide"), PropertyValue(false));
    EXPECT_FALSE(controller->skv_recordOnlySwitch->isLoading());
}

TEST_F(OverlayControl, RecordOnlyOffHidesTheMarkersWhileTheModeChanges) {
    spawner.status = kRunning;
    load({{"onlyShowInRecord", true}});
    const auto itsSwitch = controller->skv_recordOnlySwitch;
    ASSERT_TRUE(itsSwitch->isOn());
    tap(itsSwitch);
    EXPECT_TRUE(itsSwitch->isLoading());
    after(1.4, [&] {
        EXPECT_TRUE(itsSwitch->isLoading());
        EXPECT_EQ(stored().at("forceHide"), PropertyValue(true));
        EXPECT_EQ(stored().at("onlyShowInRecord"), PropertyValue(true));
    });
    loop.runPosted();
    EXPECT_FALSE(itsSwitch->isLoading());
    EXPECT_EQ(stored().at("forceHide"), PropertyValue(false));
    EXPECT_EQ(stored().at("onlyShowInRecord"), PropertyValue(false));
    EXPECT_EQ(log.events, (Events{{0, kWrite},
                                  {0, kReload},
                                  {0, "spawn -check"},
                                  {0, "wait"},
                                  {1.5, kWrite},
                                  {1.5, kReload}}));
}

TEST_F(OverlayControl, ALanguageToggleWhileRecordOnlyTurnsOffLeavesTheNewSwitchOff) {
    load({{"onlyShowInRecord", true}});
    tap(controller->skv_recordOnlySwitch);
    after(1, [this] { controller->skv_toggleLanguage(); });
    advance(2);
    EXPECT_FALSE(controller->skv_recordOnlySwitch->isOn());
    EXPECT_FALSE(controller->skv_recordOnlySwitch->isLoading());
    EXPECT_EQ(stored().at("onlyShowInRecord"), PropertyValue(false));
}

TEST_F(OverlayControl, MultiTouchStoresAnInteger) {
    load();
    tap(controller->skv_multiTouchSwitch);  // off
    EXPECT_TRUE(controller->skv_singleTouchSwitch->isOn());
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(1));
    tap(controller->skv_multiTouchSwitch);  // on
    EXPECT_FALSE(controller->skv_singleTouchSwitch->isOn());
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(0));
    loop.runPosted();
    EXPECT_EQ(count(kWrite), 2);
    EXPECT_EQ(stored().at("singleFingerMode"), PropertyValue(0));
}

TEST_F(OverlayControl, SingleTouchStoresABoolean) {
    load();
    tap(controller->skv_singleTouchSwitch);  // on
    EXPECT_FALSE(controller->skv_multiTouchSwitch->isOn());
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(true));
    tap(controller->skv_singleTouchSwitch);  // off
    EXPECT_TRUE(controller->skv_multiTouchSwitch->isOn());
    EXPECT_EQ(settings().at("singleFingerMode"), PropertyValue(false));
    loop.runPosted();
    EXPECT_EQ(count(kWrite), 2);
    EXPECT_EQ(stored().at("singleFingerMode"), PropertyValue(false));
}

TEST_F(OverlayControl, TheOtherTouchSwitchGlidesAndSendsNoEvent) {
    load();
    std::vector<bool> changes;
    controller->skv_singleTouchSwitch->didChange = [&](bool animated) {
        changes.push_back(animated);
    };
    tap(controller->skv_multiTouchSwitch);
    loop.runPosted();
    EXPECT_EQ(changes, std::vector{true});
    EXPECT_EQ(count(kWrite), 1);
}

TEST_F(OverlayControl, SuppressedSwitchesChangeNoSetting) {
    load();
    const PropertyDictionary before = settings();
    controller->skv_suppressControlActions = true;
    tap(controller->skv_recordOnlySwitch);
    tap(controller->skv_multiTouchSwitch);
    tap(controller->skv_singleTouchSwitch);
    loop.runPosted();
    EXPECT_EQ(settings(), before);
    EXPECT_TRUE(log.events.empty());
}

TEST_F(OverlayControl, LayoutShowsTheTitleForTheScrollPosition) {
    load();
    view.scrollPosition = {.adjustedContentInsetTop = 91, .contentOffsetY = -26};
    controller->viewDidLayoutSubviews();
    EXPECT_DOUBLE_EQ(view.navTitleAlpha, 0.5);
}

// The end of the screen: what the queue still holds is done, but finds no screen any more.
TEST_F(OverlayControl, WhatWasAskedForBeforeTheEndIsStillDone) {
    load({{"onlyShowInRecord", true}});
    tap(controller->skv_enableSwitch);
    controller->skv_saveSettingsAndNotify();
    controller->skv_pollOverlayStatus();
    tap(controller->skv_recordOnlySwitch);
    log.restart();
    controller.reset();
    EXPECT_EQ(log.whats(), (Strings{kExit, "spawn -hud", kWrite, kReload, kWrite, kReload,
                                    "spawn -check", "wait"}));
    loop.runPosted();
    advance(10);
    EXPECT_EQ(log.events.size(), 8U) << "neither timer nor answer may come back";
}

TEST_F(OverlayControl, AfterTheEndNoApplicationEventArrives) {
    load();
    controller.reset();
    application.post(ApplicationEvent::didBecomeActive);
    application.post(ApplicationEvent::didEnterBackground);
    advance(10);
    EXPECT_TRUE(log.events.empty());
}

TEST_F(OverlayControl, AControlThatOutlivesTheScreenActsOnNothing) {
    load();
    const auto enable = controller->skv_enableSwitch;
    const auto well = displayControl<ColorWell>(3);
    const auto row = displayCell(5)->sliderRow;
    controller.reset();
    tap(enable);
    well->valueChanged(*well);
    row->plusTapped(row->plus);
    loop.runPosted();
    EXPECT_TRUE(log.events.empty());
    EXPECT_FLOAT_EQ(row->slider.value(), 0.55F);
}

}  // namespace
}  // namespace skavlo
