// Qt's loop as the main queue.
#include <gtest/gtest.h>

#include <QtTest/QTest>
#include <thread>

#include "platform/linux/qt/qt_run_loop.h"

namespace skavlo {
namespace {

constexpr int kDeadlineMilliseconds = 10'000;

TEST(QtRunLoop, RunsBlocksInOrderOfPostingFromAnyThread) {
    QtRunLoop loop;
    std::vector<int> ran;
    bool onMainThread = false;
    bool offMainThread = true;
    loop.async([&] { ran.push_back(1); });
    loop.async([&] { ran.push_back(2); });
    std::thread([&] {
        offMainThread = loop.isMainThread();
        loop.async([&] {
            onMainThread = loop.isMainThread();
            ran.push_back(3);
        });
    }).join();
    EXPECT_TRUE(ran.empty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return ran.size() == 3; }, kDeadlineMilliseconds));
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
    EXPECT_TRUE(onMainThread);
    EXPECT_FALSE(offMainThread);
}

TEST(QtRunLoop, TimerRepeatsUntilInvalidated) {
    QtRunLoop loop;
    int fired = 0;
    const auto timer = loop.scheduledTimer(0.001, true, [&] { ++fired; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return fired >= 3; }, kDeadlineMilliseconds));
    timer->invalidate();
    const int before = fired;
    bool later = false;
    const auto other = loop.scheduledTimer(0.02, false, [&] { later = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return later; }, kDeadlineMilliseconds));
    EXPECT_EQ(fired, before);
}

TEST(QtRunLoop, ParkedTimerWaitsUntilItIsSetAgain) {
    QtRunLoop loop;
    int fired = 0;
    const auto timer = loop.scheduledTimer(3600, true, [&] { ++fired; });
    timer->setFireDate(FireDate::now);
    EXPECT_EQ(fired, 0);  // never from within the call
    ASSERT_TRUE(QTest::qWaitFor([&] { return fired == 1; }, kDeadlineMilliseconds));
    timer->setFireDate(FireDate::now);
    timer->setFireDate(FireDate::distantFuture);
    bool later = false;
    loop.async([&] { later = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return later; }, kDeadlineMilliseconds));
    EXPECT_EQ(fired, 1);
}

TEST(QtRunLoop, TimerMayDestroyItself) {
    QtRunLoop loop;
    bool fired = false;
    std::unique_ptr<Timer> timer;
    timer = loop.scheduledTimer(0, false, [&] {
        timer.reset();
        fired = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return fired; }, kDeadlineMilliseconds));
}

TEST(QtRunLoop, WhatHasNotRunByItsEndIsDropped) {
    bool ran = false;
    {
        QtRunLoop loop;
        loop.async([&] { ran = true; });
    }
    QCoreApplication::processEvents();
    EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace skavlo
