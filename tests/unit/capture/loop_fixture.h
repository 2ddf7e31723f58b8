// A test that lets a run loop work until something is so.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "platform/linux/loop/asio_run_loop.h"

namespace skavlo {

class LoopFixture : public testing::Test {
  protected:
    static constexpr std::chrono::seconds kPatience{20};

    // Runs the loop until the condition holds, which is looked at after each of its steps; false at
    // the deadline.
    bool runUntil(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        loop.context().restart();
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= deadline) return false;
            loop.context().run_one_until(deadline);
        }
        return true;
    }
    // Does what can be done without waiting.
    void runPosted() {
        loop.context().restart();
        loop.context().poll();
    }

    AsioRunLoop loop;
};

}  // namespace skavlo
