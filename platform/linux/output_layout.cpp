#include "platform/linux/output_layout.h"

#include <algorithm>

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

}  // namespace skavlo
