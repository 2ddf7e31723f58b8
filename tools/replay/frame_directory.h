#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/bitmap.h"
#include "platform/result.h"
#include "tools/picture/png.h"

namespace skavlo {

// A directory of numbered pictures. Unless they are kept in the end, those that were written, and
// the directory when it was made for them, go again.
class FrameDirectory {
  public:
    static constexpr std::size_t kMostFrames = 99'999;  // of five digits

    // Refuses a directory that holds numbered pictures already: what is left over of a longer
    // sequence would lengthen this one.
    static Result<FrameDirectory> open(const std::string& path, Transparency transparency);

    FrameDirectory(FrameDirectory&& other) noexcept
        : path_(std::move(other.path_)),
          transparency_(other.transparency_),
          made_(std::exchange(other.made_, false)),
          written_(std::exchange(other.written_, {})) {}
    FrameDirectory& operator=(FrameDirectory&&) = delete;
    ~FrameDirectory();

    // None: written.
    std::optional<Error> add(const Bitmap& frame);
    void keep();

  private:
    FrameDirectory(std::string path, Transparency transparency, bool made)
        : path_(std::move(path)), transparency_(transparency), made_(made) {}

    std::string path_;
    Transparency transparency_;
    bool made_;
    std::vector<std::string> written_;  // not to be kept so far
};

}  // namespace skavlo
