#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/linux/image/raster_client.h"
#include "platform/linux/posix/child_process.h"

namespace skavlo {

using Answer = std::shared_ptr<const Bitmap>;

// A loop, a directory of its own, and requests that wait for their answer.
class RasterTest : public testing::Test {
  protected:
    RasterTest();
    ~RasterTest() override;

    [[nodiscard]] std::string pathOf(const std::string& name) const;
    std::string writeFile(const std::string& name, const std::string& bytes) const;
    // An executable shell script.
    std::string writeProgram(const std::string& name, const std::string& body) const;

    // Runs the loop until the condition holds; false when a generous deadline passes before.
    bool runUntil(const std::function<bool()>& condition);
    // Null and a failure when there is no answer at all.
    Answer image(RasterClient& client, const std::string& path, int box);
    Answer image(const std::string& path, int box);
    Answer text(const std::string& utf8, int box, double fontPixels);

    AsioRunLoop loop_;
    std::string directory_;
    RasterClient client_;

  private:
    Answer wait(const std::function<void(Rasterizer::Completion)>& request);
};

// One pixel taken apart, premultiplied.
struct Pixel {
    int red;
    int green;
    int blue;
    int alpha;
};
Pixel pixelAt(const Bitmap& bitmap, int x, int y);

// The smallest rectangle that holds every pixel of at least this alpha; empty when there is none.
PixelRect inkOf(const Bitmap& bitmap, int leastAlpha = 1);

// Waits for the child's end with a generous deadline and reaps it.
ChildEnd waitForEnd(ChildProcess& child);

bool isRoot();

}  // namespace skavlo
