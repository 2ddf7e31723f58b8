#include "tools/replay/frame_directory.h"

#include <cstdio>
#include <filesystem>
#include <string_view>

namespace skavlo {

namespace {

std::string frameName(std::size_t number) {
    char name[32];
    std::snprintf(name, sizeof name, "frame-%05zu.png", number);
    return name;
}

bool isFrameName(std::string_view name) {
    return name.substr(0, 6) == "frame-" && name.size() > 4 &&
           name.substr(name.size() - 4) == ".png";
}

}  // namespace

Result<FrameDirectory> FrameDirectory::open(const std::string& path, Transparency transparency) {
    std::error_code failure;
    const bool made = std::filesystem::create_directory(path, failure);
    if (failure) return Error{"cannot make the directory " + path + ": " + failure.message()};
    FrameDirectory directory(path, transparency, made);
    for (const auto& entry : std::filesystem::directory_iterator(path, failure)) {
        if (isFrameName(entry.path().filename().string())) {
            return Error{path + " holds frames already"};
        }
    }
    return directory;
}

FrameDirectory::~FrameDirectory() {
    std::error_code ignored;
    for (const std::string& file : written_) std::filesystem::remove(file, ignored);
    if (made_) std::filesystem::remove(path_, ignored);
}

std::optional<Error> FrameDirectory::add(const Bitmap& frame) {
    const std::string file = path_ + "/" + frameName(written_.size() + 1);
    auto error = writePng(file, frame, transparency_);
    if (!error) written_.push_back(file);
    return error;
}

void FrameDirectory::keep() {
    written_.clear();
    made_ = false;
}

}  // namespace skavlo
