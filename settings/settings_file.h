// The settings file, the only thing that settings application and overlay share.
#pragma once

#include <optional>

#include "platform/files.h"
#include "platform/property_list.h"
#include "settings/settings_directory.h"

namespace skavlo {

// None when there is no file, or none that is a property list with a dictionary as its root.
std::optional<PropertyDictionary> readSettings(const Files& files, const PropertyLists& lists,
                                               const SettingsDirectory& directory);

// A write that fails is silent and leaves the file as it was.
void writeSettings(Files& files, const PropertyLists& lists, const SettingsDirectory& directory,
                   const PropertyDictionary& settings);

// What the settings screen opens with: the file's entries, unknown ones too, over the defaults;
// nothing is forced to hide.
PropertyDictionary loadedSettings(const std::optional<PropertyDictionary>& stored);

// The defaults again, but for the language, the display mode as it is, and the choice to show
// markers only in recordings, which the caller knows.
PropertyDictionary restoredSettings(const PropertyDictionary& current, bool onlyShowInRecord);

}  // namespace skavlo
