#include "overlay/picture_source.h"

#include <utility>

namespace skavlo {

void PictureSource::request(std::string key, Start start, Done done) {
    if (key == key_) return;
    key_ = std::move(key);
    Wish wish{std::move(start), std::move(done)};
    if (busy_) {
        next_ = std::move(wish);
    } else {
        carryOut(std::move(wish));
    }
}

void PictureSource::carryOut(Wish wish) {
    busy_ = true;
    wish.start([this, alive = std::weak_ptr<bool>(alive_),
                done = std::move(wish.done)](std::shared_ptr<const Bitmap> picture) {
        if (alive.expired()) return;
        busy_ = false;
        if (next_) {
            carryOut(*std::exchange(next_, std::nullopt));
        } else {
            done(std::move(picture));
        }
    });
}

}  // namespace skavlo
