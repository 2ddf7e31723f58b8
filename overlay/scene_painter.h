#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "overlay/marker_scene.h"
#include "overlay/render/render.h"
#include "overlay/tile_mask.h"
#include "platform/window_server.h"

namespace skavlo {

// Draws the scene into frames, and of each frame only what differs from the one before.
//
// Between two refreshes of the display only markers move. So the trail copies are drawn aside as
// well, in the trail layer: where nothing but markers lies above it, it is copied into the frame
// instead of drawing dozens of copies again for each touch.
class ScenePainter {
  public:
    // `scale`: pixels per point; `time`: when animations are looked at. Returns what was drawn,
    // rectangles that do not overlap; nothing when the frame already shows the scene.
    std::span<const PixelRect> paint(const MarkerScene& scene, const Frame& frame, double scale,
                                     MachTime time);

  private:
    using Style = std::variant<PreparedCircle, const Sprite*>;
    struct Item {
        MarkerId generation;
        std::uint64_t copy;  // n-th copy of the generation, or kMarker
        std::size_t style;
        Instance instance;
        PixelRect bounds;

        [[nodiscard]] bool isMarker() const { return copy == kMarker; }
    };
    enum class Items { all, copies, markers };
    struct Pass {
        RenderTarget target;
        const TileMask& tiles;  // what is to be drawn again
        Items items;
        const std::uint32_t* ground = nullptr;  // under them, as large as the target; or nothing
    };

    void collect(const MarkerScene& scene, double scale, MachTime time);
    void addItem(MarkerId generation, std::uint64_t copy, Point centre, double scale,
                 double opacity);
    struct Changes {
        TileMask all;
        TileMask copies;  // in the trail layer, but for those that only came on top of it
        std::vector<std::size_t> copiesOnTop;
    };
    [[nodiscard]] Changes changes() const;
    [[nodiscard]] bool underAnotherCopy(std::size_t copy) const;
    void updateTrail(Changes& changes);
    [[nodiscard]] TileMask copiesAboveMarkers() const;
    void draw(const Pass& pass);
    void drawBatch(const RenderTarget& target, const PixelRect& clip, std::size_t style);

    static constexpr std::uint64_t kMarker = UINT64_MAX;

    DamageHistory history_;
    PixelSize size_;
    double pixelsPerPoint_ = 1;
    std::uint64_t heartbeats_ = 0;
    std::vector<Style> styles_;
    std::vector<Item> items_;  // being collected for the next frame, in drawing order
    std::vector<Item> shown_;  // of the last frame
    struct Free {
        void operator()(std::uint32_t* pixels) const { std::free(pixels); }
    };
    // The trail layer, once there was a copy. Pages that never had one take no memory.
    std::unique_ptr<std::uint32_t, Free> trail_;
    std::vector<Instance> batch_;
    std::vector<PixelRect> rects_;  // of the last frame's damage
};

}  // namespace skavlo
