#include "tests/unit/replay/replay_fixture.h"

#include <fcntl.h>
#include <png.h>
#include <poll.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/posix/child_process.h"

namespace skavlo {

namespace {

constexpr int kDeadlineMilliseconds = 100'000;

std::string newDirectory(const char* name) {
    std::string path = testing::TempDir() + name + ".XXXXXX";
    return std::string(mkdtemp(path.data())) + "/";
}

int premultiplied(int colour, int alpha) {
    return (colour * alpha + 127) / 255;
}

}  // namespace

ReplayTest::ReplayTest()
    : directory_(newDirectory("skavlo-replay")), logs_(newDirectory("skavlo-replay-logs")) {}

ReplayTest::~ReplayTest() {
    std::filesystem::remove_all(directory_);
    std::filesystem::remove_all(logs_);
}

Outcome ReplayTest::run(const Words& arguments, const Words& environment) {
    const std::string output = logs_ + "output";
    const std::string errors = logs_ + "errors";
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    const UniqueDescriptor out(open(output.c_str(), kFlags, 0600));
    const UniqueDescriptor err(open(errors.c_str(), kFlags, 0600));
    ChildDescription description;
    description.arguments = arguments;
    description.environment = environment;
    description.descriptors = {{1, out.get()}, {2, err.get()}};
    auto child = spawnChild(description);
    if (!child) {
        ADD_FAILURE() << child.error().message;
        return {};
    }
    pollfd end{child->pidfd(), POLLIN, 0};
    EXPECT_EQ(poll(&end, 1, kDeadlineMilliseconds), 1) << "still running";
    const auto ended = child->reap();
    return {ended && ended->exited ? ended->code : -1, read(output), read(errors)};
}

Outcome ReplayTest::replay(const Words& arguments, const Words& environment) {
    Words all{SKAVLO_REPLAY};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return run(all, environment);
}

void ReplayTest::interrupt(const Words& arguments, const std::string& file) {
    ChildDescription description;
    description.arguments = {SKAVLO_REPLAY};
    description.arguments.insert(description.arguments.end(), arguments.begin(), arguments.end());
    auto child = spawnChild(description);
    ASSERT_TRUE(child) << child.error().message;
    pollfd end{child->pidfd(), POLLIN, 0};
    constexpr int kLook = 5;  // milliseconds from one look at the file to the next
    while (!std::filesystem::exists(file)) ASSERT_EQ(poll(&end, 1, kLook), 0) << "it ended";
    ASSERT_EQ(kill(child->pid(), SIGINT), 0);
    ASSERT_EQ(poll(&end, 1, kDeadlineMilliseconds), 1) << "still running";
    const auto ended = child->reap();
    ASSERT_TRUE(ended);
    EXPECT_FALSE(ended->exited);
    EXPECT_EQ(ended->code, SIGINT);
}

std::string ReplayTest::writeFile(const std::string& name, const std::string& text) const {
    std::ofstream(pathOf(name), std::ios::binary) << text;
    return pathOf(name);
}

ReplayTest::Words ReplayTest::files() const {
    Words names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReplayTest::pictureAt(const std::string& milliseconds, const std::string& recording,
                                  const Words& more, const Words& environment) {
    const std::string file = pathOf("picture.png");
    Words arguments{"--at", milliseconds, "--output", file};
    arguments.insert(arguments.end(), more.begin(), more.end());
    arguments.push_back(recording);
    const Outcome result = replay(arguments, environment);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::string bytes = read(file);
    std::filesystem::remove(file);
    return bytes;
}

std::string ReplayTest::read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Decoded decode(const std::string& png) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0) << image.message;
    image.format = PNG_FORMAT_RGBA;
    Decoded decoded{{static_cast<int>(image.width), static_cast<int>(image.height)}, {}};
    decoded.bytes.resize(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, decoded.bytes.data(), 0, nullptr), 0)
        << image.message;
    return decoded;
}

std::string differenceOf(const Decoded& left, const Decoded& right) {
    if (left.size != right.size) return "the sizes differ";
    for (std::size_t i = 0; i + 3 < left.bytes.size(); i += 4) {
        const int alphas[] = {left.bytes[i + 3], right.bytes[i + 3]};
        int largest = std::abs(alphas[0] - alphas[1]);
        for (std::size_t c = i; c < i + 3; ++c) {
            largest = std::max(largest, std::abs(premultiplied(left.bytes[c], alphas[0]) -
                                                 premultiplied(right.bytes[c], alphas[1])));
        }
        if (largest > 1) {
            const std::size_t pixel = i / 4;
            const auto width = static_cast<std::size_t>(left.size.width);
            return "by " + std::to_string(largest) + " at " + std::to_string(pixel % width) + "," +
                   std::to_string(pixel / width);
        }
    }
    return "";
}

}  // namespace skavlo
