#pragma once

#include "platform/property_list.h"

namespace skavlo {

// A fresh dictionary of every key with the writer's default. The overlay, which reads the file,
// keeps fallbacks of its own for missing keys; the two differ in the fill colours.
PropertyDictionary defaultSettings();

}  // namespace skavlo
