#include "platform/linux/plist/plist_property_lists.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace skavlo {

namespace {

constexpr int kDeepest = 64;
// libplist recurses without a limit of its own. A binary file's depth is bounded by its size, and
// a settings file has a few kilobytes.
constexpr std::size_t kLargestBinary = std::size_t{64} << 10U;

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using OwnedPlist = std::unique_ptr<void, PlistDeleter>;

// Depth of open elements, from the tags alone: never less than the depth of the parsed tree.
bool nestsTooDeep(std::string_view xml) {
    int depth = 0;
    for (std::size_t at = xml.find('<'); at != std::string_view::npos; at = xml.find('<', at + 1)) {
        const std::string_view tag = xml.substr(at + 1, 6);
        if (tag.starts_with("array>") || tag.starts_with("dict>")) ++depth;
        if (tag.starts_with("/array") || tag.starts_with("/dict>")) --depth;
        // Also with attributes or spaces, which the writer never makes.
        if (tag.starts_with("array ") || tag.starts_with("dict ")) ++depth;
        if (depth > kDeepest) return true;
    }
    return false;
}

PropertyValue fromPlist(plist_t node, int depth);

PropertyArray arrayFrom(plist_t node, int depth) {
    PropertyArray result;
    const std::uint32_t count = plist_array_get_size(node);
    result.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        result.push_back(fromPlist(plist_array_get_item(node, i), depth + 1));
    }
    return result;
}

PropertyDictionary dictionaryFrom(plist_t node, int depth) {
    PropertyDictionary result;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    while (iterator) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        if (!value) break;
        result[key] = fromPlist(value, depth + 1);
        std::free(key);
    }
    std::free(iterator);
    return result;
}

PropertyValue scalarFrom(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return value != 0;
        }
        case PLIST_UINT: {
            std::uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return static_cast<std::int64_t>(value);
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return value;
        }
        case PLIST_STRING: {
            std::uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return text ? std::string(text, length) : std::string();
        }
        default:
            return {};
    }
}

PropertyValue fromPlist(plist_t node, int depth) {
    if (depth > kDeepest) return {};
    switch (plist_get_node_type(node)) {
        case PLIST_ARRAY:
            return arrayFrom(node, depth);
        case PLIST_DICT:
            return dictionaryFrom(node, depth);
        default:
            return scalarFrom(node);
    }
}

plist_t toPlist(const PropertyValue& value) {
    if (const auto* flag = value.as<bool>()) return plist_new_bool(*flag ? 1 : 0);
    if (const auto* number = value.as<std::int64_t>()) {
        return plist_new_uint(static_cast<std::uint64_t>(*number));
    }
    if (const auto* real = value.as<double>()) return plist_new_real(*real);
    if (const auto* text = value.as<std::string>()) return plist_new_string(text->c_str());
    if (const auto* array = value.as<PropertyArray>()) {
        plist_t node = plist_new_array();
        for (const PropertyValue& item : *array) plist_array_append_item(node, toPlist(item));
        return node;
    }
    if (const auto* dictionary = value.as<PropertyDictionary>()) {
        plist_t node = plist_new_dict();
        for (const auto& [key, item] : *dictionary) {
            plist_dict_set_item(node, key.c_str(), toPlist(item));
        }
        return node;
    }
    return plist_new_string("");
}

}  // namespace

std::optional<PropertyDictionary> PlistPropertyLists::parse(const std::string& bytes) const {
    const bool binary = bytes.starts_with("bplist");
    if (binary ? bytes.size() > kLargestBinary : nestsTooDeep(bytes)) return std::nullopt;
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    const OwnedPlist owner(root);
    if (!root || plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
    return dictionaryFrom(root, 0);
}

std::string PlistPropertyLists::serialize(const PropertyDictionary& dictionary) const {
    const OwnedPlist root(toPlist(dictionary));
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    std::string result(xml ? xml : "", length);
    plist_to_xml_free(xml);
    return result;
}

}  // namespace skavlo
