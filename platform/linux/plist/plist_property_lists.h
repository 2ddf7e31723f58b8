#pragma once

#include "platform/property_list.h"

namespace skavlo {

// Property lists by libplist. Nesting beyond 64 levels, which no settings file has, is refused.
class PlistPropertyLists final : public PropertyLists {
  public:
    [[nodiscard]] std::optional<PropertyDictionary> parse(const std::string& bytes) const override;
    [[nodiscard]] std::string serialize(const PropertyDictionary& dictionary) const override;
};

}  // namespace skavlo
