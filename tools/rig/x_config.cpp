#include "tools/rig/x_config.h"

#include <algorithm>
#include <cstdint>
#include <sstream>

namespace skavlo::rig {

namespace {

// Sixty frames a second with short blanking; only the visible size matters without a screen.
std::string modeLine(PixelSize size) {
    std::ostringstream line;
    const int total = size.width + 30;
    const int lines = size.height + 3;
    line << "  Modeline \"" << modeName(size) << "\" " << 60e-6 * total * lines << ' ' << size.width
         << ' ' << size.width + 10 << ' ' << size.width + 20 << ' ' << total << ' ' << size.height
         << ' ' << size.height + 1 << ' ' << size.height + 2 << ' ' << lines << '\n';
    return line.str();
}

std::string touchSection(const std::string& socket) {
    std::ostringstream section;
    section << "Section \"InputDevice\"\n  Identifier \"touch\"\n  Driver \"inputtest\"\n"
            << "  Option \"DeviceType\" \"Touch\"\n  Option \"TouchCount\" \"" << kTouchContacts
            << "\"\n  Option \"SocketPath\" \"" << socket << "\"\nEndSection\n";
    return section.str();
}

std::string screenSections(const std::vector<PixelSize>& sizes) {
    PixelSize largest;
    std::string modes;
    std::string names;
    for (const PixelSize size : sizes) {
        largest.width = std::max(largest.width, size.width);
        largest.height = std::max(largest.height, size.height);
        modes += modeLine(size);
        names += " \"" + modeName(size) + "\"";
    }
    const std::int64_t kilobytes = std::int64_t{largest.width} * largest.height / 128 + 1024;
    std::ostringstream text;
    text << "Section \"Device\"\n  Identifier \"dummy\"\n  Driver \"dummy\"\n  VideoRam "
         << kilobytes << "\nEndSection\nSection \"Monitor\"\n  Identifier \"monitor\"\n"
         << "  HorizSync 1-5000\n  VertRefresh 1-1000\n"
         << modes << "EndSection\nSection \"Screen\"\n  Identifier \"screen\"\n"
         << "  Device \"dummy\"\n  Monitor \"monitor\"\n  DefaultDepth 24\n"
         << "  SubSection \"Display\"\n    Depth 24\n    Modes" << names
         << "\n  EndSubSection\nEndSection\n";
    return text.str();
}

}  // namespace

std::string modeName(PixelSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string xConfig(const XConfigOptions& options) {
    std::string text = "Section \"ServerFlags\"\n  Option \"AutoAddDevices\" \"";
    text += options.machineDevices ? "true" : "false";
    text +=
        "\"\n  Option \"AutoAddGPU\" \"false\"\n  Option \"DontVTSwitch\" \"true\"\nEndSection\n"
        "Section \"ServerLayout\"\n  Identifier \"layout\"\n  Screen \"screen\"\n";
    if (!options.touchSocket.empty()) {
        text += "  InputDevice \"touch\" \"SendCoreEvents\"\n";
    }
    text += "EndSection\n";
    if (!options.touchSocket.empty()) {
        text += touchSection(options.touchSocket);
    }
    return text + screenSections(options.sizes);
}

}  // namespace skavlo::rig
