// Reads settings whatever kind of object stands under their keys.
#pragma once

#include <cstdint>

#include "platform/property_list.h"

namespace skavlo {

// Numbers convert, strings are scanned for a leading number, booleans are 1 and 0; null, arrays,
// dictionaries and everything else read as 0 and false.
bool boolValue(const PropertyValue* value);
std::int32_t intValue(const PropertyValue* value);
std::int64_t integerValue(const PropertyValue* value);
float floatValue(const PropertyValue* value);

// The value under the key, or null.
const PropertyValue* lookUp(const PropertyDictionary& dictionary, const char* key);

}  // namespace skavlo
