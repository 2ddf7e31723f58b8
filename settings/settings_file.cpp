#include "settings/settings_file.h"

#include "settings/default_settings.h"
#include "settings/loose_value.h"

namespace skavlo {

std::optional<PropertyDictionary> readSettings(const Files& files, const PropertyLists& lists,
                                               const SettingsDirectory& directory) {
    const auto bytes = files.read(directory.settingsFile());
    return bytes ? lists.parse(*bytes) : std::nullopt;
}

void writeSettings(Files& files, const PropertyLists& lists, const SettingsDirectory& directory,
                   const PropertyDictionary& settings) {
    files.writeAtomically(directory.settingsFile(), lists.serialize(settings));
}

PropertyDictionary loadedSettings(const std::optional<PropertyDictionary>& stored) {
    PropertyDictionary settings = defaultSettings();
    if (stored) {
        for (const auto& [key, value] : *stored) settings[key] = value;
    }
    settings["forceHide"] = false;
    return settings;
}

PropertyDictionary restoredSettings(const PropertyDictionary& current, bool onlyShowInRecord) {
    PropertyDictionary settings = defaultSettings();
    settings["isEnglish"] = boolValue(lookUp(current, "isEnglish"));
    settings["onlyShowInRecord"] = onlyShowInRecord;
    if (const PropertyValue* mode = lookUp(current, "displayMode")) settings["displayMode"] = *mode;
    return settings;
}

}  // namespace skavlo
