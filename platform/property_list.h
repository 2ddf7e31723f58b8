#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace skavlo {

class PropertyValue;
using PropertyArray = std::vector<PropertyValue>;
using PropertyDictionary = std::map<std::string, PropertyValue>;

// Kinds that no setting uses (data, dates, integers that need 64 bits without a sign, ...): they
// read as nothing and are written as they were read. `encoded` belongs to the PropertyLists that
// made it; a value that was never read has none and is written as an empty text.
struct PropertyOpaque {
    std::string encoded;
    bool operator==(const PropertyOpaque&) const = default;
};

// One object of a property list.
class PropertyValue {
  public:
    using Storage = std::variant<PropertyOpaque, bool, std::int64_t, double, std::string,
                                 PropertyArray, PropertyDictionary>;
    PropertyValue() = default;
    PropertyValue(PropertyOpaque value) : storage_(std::move(value)) {}      // NOLINT
    PropertyValue(bool value) : storage_(value) {}                           // NOLINT
    PropertyValue(int value) : storage_(std::int64_t{value}) {}              // NOLINT
    PropertyValue(std::int64_t value) : storage_(value) {}                   // NOLINT
    PropertyValue(double value) : storage_(value) {}                         // NOLINT
    PropertyValue(const char* value) : storage_(std::string(value)) {}       // NOLINT
    PropertyValue(std::string value) : storage_(std::move(value)) {}         // NOLINT
    PropertyValue(PropertyArray value) : storage_(std::move(value)) {}       // NOLINT
    PropertyValue(PropertyDictionary value) : storage_(std::move(value)) {}  // NOLINT

    template <typename T>
    [[nodiscard]] const T* as() const {
        return std::get_if<T>(&storage_);
    }
    bool operator==(const PropertyValue& other) const = default;

  private:
    Storage storage_;
};

class PropertyLists {
  public:
    virtual ~PropertyLists() = default;
    // None when the bytes are no property list (XML or binary) with a dictionary as its root.
    [[nodiscard]] virtual std::optional<PropertyDictionary> parse(
        const std::string& bytes) const = 0;
    // XML form.
    [[nodiscard]] virtual std::string serialize(const PropertyDictionary& dictionary) const = 0;
};

}  // namespace skavlo
