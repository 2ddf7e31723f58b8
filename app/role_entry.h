// What the modules export to the executable. They hold copies of the core of their own, so nothing
// but the arguments and the exit status passes, and no exception.
#pragma once

namespace skavlo {

using RoleEntry = int(int argc, char** argv);

inline constexpr const char* kHudEntry = "skavlo_hud_main";
inline constexpr const char* kUiEntry = "skavlo_ui_main";

}  // namespace skavlo
