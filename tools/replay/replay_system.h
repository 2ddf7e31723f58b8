// The parts of a system that the replayed overlay sees besides the headless ones.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/files.h"
#include "platform/linux/image/raster_client.h"
#include "platform/linux/loop/asio_run_loop.h"
#include "platform/linux/posix/posix_files.h"

namespace skavlo {

// The real files, except that one path names given contents and that nothing is ever changed.
class ReplayFiles final : public Files {
  public:
    // Without contents there is no such file.
    ReplayFiles(std::string path, std::optional<std::string> contents)
        : path_(std::move(path)), contents_(std::move(contents)) {}

    [[nodiscard]] std::optional<std::string> read(const std::string& path) const override {
        return path == path_ ? contents_ : files_.read(path);
    }
    [[nodiscard]] std::optional<std::uint64_t> sizeOf(const std::string& path) const override {
        if (path != path_) return files_.sizeOf(path);
        return contents_ ? std::optional(contents_->size()) : std::nullopt;
    }
    bool writeAtomically(const std::string& /*path*/, const std::string& /*contents*/) override {
        return false;
    }
    [[nodiscard]] bool fileExistsAtPath(const std::string& path) const override {
        return path == path_ ? contents_.has_value() : files_.fileExistsAtPath(path);
    }
    [[nodiscard]] std::string versionOf(const std::string& path) const override {
        return path == path_ ? std::string() : files_.versionOf(path);
    }
    void chown(const std::string& /*path*/, unsigned /*uid*/, unsigned /*gid*/) override {}
    void unlink(const std::string& /*path*/) override {}

  private:
    PosixFiles files_;
    std::string path_;
    std::optional<std::string> contents_;
};

// Has pictures drawn by the raster child and can wait for them, so that they are there before any
// virtual time passes.
class ReplayRasterizer final : public Rasterizer {
  public:
    // The path of skavlo-raster.
    explicit ReplayRasterizer(const std::string& program);

    void rasterizeImageFile(const std::string& path, int box, Completion completion) override;
    void rasterizeText(const std::string& utf8, int box, double fontPixels,
                       Completion completion) override;
    // Returns once every completion has run.
    void waitForAll();
    // Paths and texts of which there is no picture.
    [[nodiscard]] const std::vector<std::string>& failed() const { return failed_; }

  private:
    Completion counted(const std::string& what, Completion completion);

    AsioRunLoop loop_;
    RasterClient client_;
    int waitingFor_ = 0;
    std::vector<std::string> failed_;
};

}  // namespace skavlo
