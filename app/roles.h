// The three roles that meet through the process-id file. Each returns the process's exit status.
#pragma once

#include "platform/files.h"
#include "platform/overlay_system.h"
#include "platform/process.h"
#include "settings/settings_directory.h"

namespace skavlo {

// 1 when the process named in the file exists, else 0. The number's sign is not tested: 0, also
// from a file without a number, names the caller's own process group, which exists.
int check(const Files& files, Process& process, const SettingsDirectory& directory);

// Kills the process named in the file and removes the file.
int exitOverlay(Files& files, Process& process, const SettingsDirectory& directory);

// The overlay, from start to end.
int hud(OverlaySystem& system, const SettingsDirectory& directory);

}  // namespace skavlo
