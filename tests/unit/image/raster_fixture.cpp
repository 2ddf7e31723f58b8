#include "tests/unit/image/raster_fixture.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace skavlo {

namespace {

constexpr std::chrono::seconds kDeadline{60};

std::string makeDirectory() {
    std::string name = testing::TempDir() + "/skavlo-image-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) std::abort();
    return name;
}

}  // namespace

RasterTest::RasterTest() : directory_(makeDirectory()), client_(loop_, SKAVLO_RASTER) {}

RasterTest::~RasterTest() {
    std::filesystem::remove_all(directory_);
}

std::string RasterTest::pathOf(const std::string& name) const {
    return directory_ + "/" + name;
}

std::string RasterTest::writeFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(pathOf(name), std::ios::binary) << bytes;
    return pathOf(name);
}

std::string RasterTest::writeProgram(const std::string& name, const std::string& body) const {
    const std::string path =
        writeFile(name, "#!/bin/sh\nPATH=/usr/local/bin:/usr/bin:/bin\n" + body + "\n");
    chmod(path.c_str(), 0755);
    return path;
}

bool RasterTest::runUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!condition())
        if (loop_.context().run_one_until(deadline) == 0) return false;
    return true;
}

Answer RasterTest::wait(const std::function<void(Rasterizer::Completion)>& request) {
    int calls = 0;
    Answer answer;
    request([&](Answer bitmap) {
        ++calls;
        answer = std::move(bitmap);
    });
    EXPECT_EQ(calls, 0) << "completed from within the request";
    EXPECT_TRUE(runUntil([&] { return calls > 0; })) << "no completion";
    loop_.context().poll();
    EXPECT_EQ(calls, 1);
    return answer;
}

Answer RasterTest::image(RasterClient& client, const std::string& path, int box) {
    return wait([&](Rasterizer::Completion completion) {
        client.rasterizeImageFile(path, box, std::move(completion));
    });
}

Answer RasterTest::image(const std::string& path, int box) {
    return image(client_, path, box);
}

Answer RasterTest::text(const std::string& utf8, int box, double fontPixels) {
    return wait([&](Rasterizer::Completion completion) {
        client_.rasterizeText(utf8, box, fontPixels, std::move(completion));
    });
}

Pixel pixelAt(const Bitmap& bitmap, int x, int y) {
    const std::uint32_t value =
        bitmap.pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(bitmap.size.width) +
                         static_cast<std::size_t>(x));
    const auto byte = [value](int shift) { return static_cast<int>(value >> shift & 0xff); };
    return {byte(16), byte(8), byte(0), byte(24)};
}

PixelRect inkOf(const Bitmap& bitmap, int leastAlpha) {
    int left = bitmap.size.width;
    int top = bitmap.size.height;
    int right = 0;
    int bottom = 0;
    for (int y = 0; y < bitmap.size.height; ++y)
        for (int x = 0; x < bitmap.size.width; ++x) {
            if (pixelAt(bitmap, x, y).alpha < leastAlpha) continue;
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    return right > left ? PixelRect{left, top, right - left, bottom - top} : PixelRect{};
}

ChildEnd waitForEnd(ChildProcess& child) {
    pollfd waiting{child.pidfd(), POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 1000 * static_cast<int>(kDeadline.count())), 1);
    const auto end = child.reap();
    EXPECT_TRUE(end.has_value());
    return end.value_or(ChildEnd{});
}

bool isRoot() {
    return geteuid() == 0;
}

}  // namespace skavlo
