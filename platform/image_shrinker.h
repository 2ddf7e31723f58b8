#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace skavlo {

// Makes image files smaller, out of process.
class ImageShrinker {
  public:
    // PNG bytes; empty when the image could not be decoded.
    using Completion = std::function<void(std::string png)>;

    virtual ~ImageShrinker() = default;
    // Decodes the file once, embedded orientation applied, and draws the image at each factor of
    // its size (pixels rounded up) in turn, transparency kept, until the PNG has at most
    // `limitBytes`; the last one counts whatever its length. The completion runs once, on the main
    // thread, never from within the call.
    virtual void shrinkToPng(const std::string& path, const std::vector<double>& factors,
                             std::uint64_t limitBytes, Completion completion) = 0;
};

}  // namespace skavlo
