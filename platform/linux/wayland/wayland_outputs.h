#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/output_layout.h"
#include "platform/linux/wayland/geometry.h"
#include "platform/linux/wayland/wayland_connection.h"
#include "platform/screen.h"

namespace skavlo {

// The compositor's outputs, kept up to date. Wayland knows no primary output.
class WaylandOutputs final : public Screen {
  public:
    // What there is is known after a round trip.
    explicit WaylandOutputs(WaylandConnection& connection);
    ~WaylandOutputs() override;
    WaylandOutputs(const WaylandOutputs&) = delete;
    WaylandOutputs& operator=(const WaylandOutputs&) = delete;

    [[nodiscard]] Rect bounds() const override;
    [[nodiscard]] double scale() const override;

    [[nodiscard]] const OutputLayout& layout() const { return layout_; }
    // See chooseMainOutput().
    void setTouchOutput(const std::string& name);
    // The main output, once the compositor has told all about it; null: there is none.
    [[nodiscard]] wl_output* main() const;
    // The number of the main output's global; 0: there is none.
    [[nodiscard]] std::uint32_t mainName() const;

    // What the compositor prefers for a surface on the main output, in 120ths.
    void setPreferredScale(std::optional<std::uint32_t> scale);
    // Whether surfaces can have a viewport.
    void setHasViewports(bool has) { hasViewports_ = has; }

    // Called after each change of the layout or of an output's scale.
    void addChangeHandler(std::function<void()> handler) {
        changeHandlers_.push_back(std::move(handler));
    }

  private:
    struct State {
        WaylandOutputSize size;
        PixelPoint position;  // in points
        std::string name;
        bool operator==(const State&) const = default;
    };
    struct Output {
        WaylandOutputs& outputs;
        std::uint32_t global;
        WaylandPointer<wl_output> output;
        WaylandPointer<zxdg_output_v1> extended;
        State pending;
        std::optional<State> current;  // none before its first "done"
        bool positionFromExtended = false;
    };

    void add(const WaylandConnection::Global& global);
    void remove(const WaylandConnection::Global& global);
    void listen(Output& output);
    void listenExtended(Output& output);
    static void done(Output& output);
    void changed();
    [[nodiscard]] const Output* mainOutput() const;

    WaylandConnection& connection_;
    WaylandPointer<zxdg_output_manager_v1> manager_;
    std::vector<std::unique_ptr<Output>> outputs_;
    OutputLayout layout_;
    std::vector<const Output*> inLayout_;  // in the order of layout_.outputs
    std::string touchOutput_;
    std::optional<std::uint32_t> preferredScale_;
    bool hasViewports_ = false;
    std::vector<std::function<void()>> changeHandlers_;
};

}  // namespace skavlo
