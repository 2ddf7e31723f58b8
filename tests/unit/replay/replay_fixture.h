// Runs skavlo-replay and reads what it made.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace skavlo {

struct Outcome {
    int status = -1;  // -1: it did not exit by itself
    std::string output;
    std::string errors;
};

// Straight alpha, four bytes a pixel.
struct Decoded {
    PixelSize size;
    std::vector<std::uint8_t> bytes;
    bool operator==(const Decoded&) const = default;
};

class ReplayTest : public testing::Test {
  protected:
    using Words = std::vector<std::string>;

    ReplayTest();
    ~ReplayTest() override;

    Outcome replay(const Words& arguments, const Words& environment = {});
    Outcome run(const Words& arguments, const Words& environment = {});
    // Sends a SIGINT once this file is there, and expects that to be what ended the program.
    void interrupt(const Words& arguments, const std::string& file);
    // A name in the test's own directory.
    [[nodiscard]] std::string pathOf(const std::string& name) const { return directory_ + name; }
    std::string writeFile(const std::string& name, const std::string& text) const;
    // Everything in the test's own directory but what the fixture needs, sorted.
    [[nodiscard]] Words files() const;
    // Runs it for one picture; the bytes of the file.
    std::string pictureAt(const std::string& milliseconds, const std::string& recording,
                          const Words& more = {}, const Words& environment = {});

    static std::string read(const std::string& path);
    static std::string golden(const std::string& name) { return SKAVLO_GOLDEN + name; }

  private:
    std::string directory_;  // with its slash
    std::string logs_;
};

Decoded decode(const std::string& png);
// "" when the two differ by no more than one level in any premultiplied channel or in alpha.
std::string differenceOf(const Decoded& left, const Decoded& right);

}  // namespace skavlo
