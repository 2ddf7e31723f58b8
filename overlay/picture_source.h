#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/bitmap.h"

namespace skavlo {

// Asks the rasteriser for one picture at a time; of several wishes made meanwhile only the last is
// carried out, and a wish that repeats the one before costs nothing.
class PictureSource {
  public:
    using Start = std::function<void(Rasterizer::Completion)>;
    using Done = std::function<void(std::shared_ptr<const Bitmap>)>;

    // `key` says what is wished, in full: equal keys give equal pictures.
    void request(std::string key, Start start, Done done);
    [[nodiscard]] bool busy() const { return busy_; }

  private:
    struct Wish {
        Start start;
        Done done;
    };
    void carryOut(Wish wish);

    std::string key_;
    bool busy_ = false;
    std::optional<Wish> next_;
    // Completions that arrive after the source is gone find this expired.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace skavlo
