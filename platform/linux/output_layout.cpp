#include "platform/linux/output_layout.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace skavlo {

bool isInternalConnector(std::string_view name) {
    return name.starts_with("eDP") || name.starts_with("LVDS") || name.starts_with("DSI");
}

std::size_t chooseMainOutput(const std::vector<OutputInfo>& outputs, std::string_view touchOutput) {
    const auto find = [&](auto predicate) {
        return std::find_if(outputs.begin(), outputs.end(), predicate);
    };
    auto found = outputs.end();
    if (!touchOutput.empty()) {
        found = find([&](const OutputInfo& output) { return output.name == touchOutput; });
    }
    if (found == outputs.end()) found = find([](const OutputInfo& o) { return o.internal; });
    if (found == outputs.end()) found = find([](const OutputInfo& o) { return o.primary; });
    return found == outputs.end() ? 0 : static_cast<std::size_t>(found - outputs.begin());
}

bool sameMainScreen(const OutputLayout& before, const OutputLayout& after) {
    const auto screen = [](const OutputLayout& layout) {
        const bool whole = layout.main >= layout.outputs.size();
        OutputInfo main =
            whole ? OutputInfo{.rect = {0, 0, layout.desktop.width, layout.desktop.height}}
                  : layout.outputs[layout.main];
        return std::tuple(std::move(main.name), main.rect.width, main.rect.height, main.rotation,
                          main.reflectX, main.reflectY, layout.scale);
    };
    return screen(before) == screen(after);
}

}  // namespace skavlo
