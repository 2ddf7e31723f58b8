// What is on the screen, as data: markers, their trail copies, and when they fade.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "overlay/animation.h"
#include "overlay/look.h"
#include "platform/geometry.h"

namespace skavlo {

// Names one marker for as long as it is live; never used again.
using MarkerId = std::uint64_t;

struct TrailCopy {
    Point centre;
    MachTime born = 0;
};

// A marker from touch-down to the end of its lift, with the trail it dropped, which may outlive it.
struct Generation {
    MarkerId id = 0;
    std::shared_ptr<const Look> look;
    double trailSeconds = 0;          // every copy fades for this long
    std::deque<TrailCopy> copies;     // oldest first, which is also the order in which they expire
    std::uint64_t expiredCopies = 0;  // so that the n-th copy ever dropped keeps its name n
    bool hasMarker = true;
    bool lifting = false;
    Point centre;
    Animation scale;
    Animation opacity = Animation::constant(1);
};

class MarkerScene {
  public:
    // Called after every change that wants a new frame.
    explicit MarkerScene(std::function<void()> needsDisplay);

    // Pops in from half size. Later markers lie above earlier ones.
    MarkerId addMarker(std::shared_ptr<const Look> look, Point centre, MachTime now);
    void moveMarker(MarkerId id, Point centre);
    // A copy of the marker's look below it, that fades and shrinks away at its place.
    void dropTrailCopy(MarkerId id, Point centre, double seconds, MachTime now);
    // Scales from what it is now to `scale`, fades, and is gone after `seconds`.
    void liftMarker(MarkerId id, double scale, double seconds, MachTime now);
    void clear();
    void setHidden(bool hidden);
    // The content of the screen's first point changed (see the canvas's heartbeat).
    void touchHeartbeat();

    // Drops what has ended.
    void expire(MachTime now);

    [[nodiscard]] bool hidden() const { return hidden_; }
    // Something moves by itself: another frame is wanted at the next refresh.
    [[nodiscard]] bool animating(MachTime now) const;
    // In drawing order, bottom first.
    [[nodiscard]] std::span<const Generation> generations() const { return generations_; }
    [[nodiscard]] std::uint64_t heartbeats() const { return heartbeats_; }

  private:
    Generation* find(MarkerId id);

    std::function<void()> needsDisplay_;
    std::vector<Generation> generations_;  // by id, ascending
    MarkerId lastId_ = 0;
    bool hidden_ = false;
    std::uint64_t heartbeats_ = 0;
};

// Scale and opacity of a trail copy at a time: 1 to 0.01 and 1 to 0, ease-out.
struct TrailState {
    double scale;
    double opacity;
};
TrailState trailState(const TrailCopy& copy, double seconds, MachTime now);

}  // namespace skavlo
