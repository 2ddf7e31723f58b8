#pragma once

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "overlay/marker_scene.h"
#include "overlay/render/render.h"
#include "overlay/tile_mask.h"
#include "platform/window_server.h"

namespace skavlo {

// Draws the scene into frames, and of each frame only what differs from the one before.
class ScenePainter {
  public:
    // `scale`: pixels per point; `time`: when animations are looked at. Returns what was drawn,
    // rectangles that do not overlap; nothing when the frame already shows the scene.
    std::span<const PixelRect> paint(const MarkerScene& scene, const Frame& frame, double scale,
                                     MachTime time);

  private:
    using Style = std::variant<CircleStyle, const Sprite*>;
    struct Item {
        MarkerId generation;
        std::uint64_t copy;  // n-th copy of the generation, or kMarker
        std::size_t style;
        Instance instance;
        PixelRect bounds;
    };

    void collect(const MarkerScene& scene, double scale, MachTime time);
    void addItem(MarkerId generation, std::uint64_t copy, Point centre, double scale,
                 double opacity);
    void noteChanges(TileMask& changed) const;
    void draw(const RenderTarget& target, const TileMask& damage);
    void drawBatch(const RenderTarget& target, const PixelRect& clip, std::size_t style);

    static constexpr std::uint64_t kMarker = UINT64_MAX;

    DamageHistory history_;
    PixelSize size_;
    double pixelsPerPoint_ = 1;
    std::uint64_t heartbeats_ = 0;
    std::vector<Style> styles_;
    std::vector<Item> items_;  // being collected for the next frame, in drawing order
    std::vector<Item> shown_;  // of the last frame
    std::vector<Instance> batch_;
    std::vector<PixelRect> rects_;
};

}  // namespace skavlo
