#include "platform/linux/posix/worker_queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <numeric>
#include <thread>
#include <vector>

namespace skavlo {
namespace {

TEST(WorkerQueue, RunsInOrderOnOneOtherThread) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    {
        WorkerQueue queue("com.example.a.rather.longLabelForAThread");
        for (int i = 0; i < 1000; ++i)
            queue.async([&, i] {
                order.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
    }
    std::vector<int> expected(1000);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
    EXPECT_EQ(threads, std::vector<std::thread::id>(1000, threads.front()));
}

TEST(WorkerQueue, TakesBlocksFromManyThreads) {
    int sum = 0;
    {
        WorkerQueue queue;
        std::vector<std::thread> posters;
        for (int t = 0; t < 4; ++t)
            posters.emplace_back([&] {
                for (int i = 0; i < 500; ++i) queue.async([&sum] { ++sum; });
            });
        for (std::thread& each : posters) each.join();
    }
    EXPECT_EQ(sum, 2000);
}

TEST(WorkerQueue, SleepsAndLetsTheOthersWait) {
    WorkerQueue queue;
    std::promise<std::chrono::steady_clock::time_point> next;
    const auto begin = std::chrono::steady_clock::now();
    queue.async([&] { queue.usleep(30'000); });
    queue.async([&] { next.set_value(std::chrono::steady_clock::now()); });
    EXPECT_GE(next.get_future().get() - begin, std::chrono::milliseconds(30));
}

TEST(WorkerQueue, DestructionRunsTheRestAndSleepsNoMore) {
    std::vector<int> order;
    std::promise<void> begun;
    {
        WorkerQueue queue;
        queue.async([&] {
            begun.set_value();
            queue.usleep(4'000'000'000);
            order.push_back(1);
        });
        queue.async([&] {
            queue.usleep(4'000'000'000);
            queue.async([&] { order.push_back(3); });
            order.push_back(2);
        });
        begun.get_future().wait();
    }
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

}  // namespace
}  // namespace skavlo
