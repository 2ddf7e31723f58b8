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

PropertyValue fromPlist(plist_t node, int depth, bool& tooDeep);

PropertyArray arrayFrom(plist_t node, int depth, bool& tooDeep) {
    PropertyArray result;
    const std::uint32_t count = plist_array_get_size(node);
    result.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        result.push_back(fromPlist(plist_array_get_item(node, i), depth + 1, tooDeep));
    }
    return result;
}

PropertyDictionary dictionaryFrom(plist_t node, int depth, bool& tooDeep) {
    PropertyDictionary result;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    while (iterator) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        if (!value) break;
        result[key] = fromPlist(value, depth + 1, tooDeep);
        std::free(key);
    }
    std::free(iterator);
    return result;
}

// As the binary form of a property list that is this node alone, which loses nothing.
PropertyOpaque opaqueFrom(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    PropertyOpaque opaque;
    if (bytes) opaque.encoded.assign(bytes, length);
    plist_to_bin_free(bytes);
    return opaque;
}

plist_t fromOpaque(const PropertyOpaque& opaque) {
    plist_t node = nullptr;
    if (!opaque.encoded.empty())
        plist_from_bin(opaque.encoded.data(), static_cast<std::uint32_t>(opaque.encoded.size()),
                       &node);
    return node ? node : plist_new_string("");
}

// The library tells the bits of an integer and not whether they are signed. Its binary form does:
// 16 bytes are for what needs 64 bits without a sign.
PropertyValue integerFrom(plist_t node, std::uint64_t value) {
    const auto number = static_cast<std::int64_t>(value);
    if (number >= 0) return number;
    PropertyOpaque opaque = opaqueFrom(node);
    constexpr char kSixteenBytes = 0x14;
    constexpr std::size_t kFirstObject = 8;
    const std::string& encoded = opaque.encoded;
    if (encoded.size() <= kFirstObject || encoded[kFirstObject] != kSixteenBytes) return number;
    return opaque;
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
            return integerFrom(node, value);
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
            return opaqueFrom(node);
    }
}

PropertyValue fromPlist(plist_t node, int depth, bool& tooDeep) {
    tooDeep = tooDeep || depth > kDeepest;
    if (tooDeep) return {};
    switch (plist_get_node_type(node)) {
        case PLIST_ARRAY:
            return arrayFrom(node, depth, tooDeep);
        case PLIST_DICT:
            return dictionaryFrom(node, depth, tooDeep);
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
    return fromOpaque(*value.as<PropertyOpaque>());
}

}  // namespace

std::optional<PropertyDictionary> PlistPropertyLists::parse(const std::string& bytes) const {
    const bool binary = bytes.starts_with("bplist");
    if (binary ? bytes.size() > kLargestBinary : nestsTooDeep(bytes)) return std::nullopt;
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    const OwnedPlist owner(root);
    if (!root || plist_get_node_type(root) != PLIST_DICT) return std::nullopt;
    bool tooDeep = false;
    PropertyDictionary dictionary = dictionaryFrom(root, 0, tooDeep);
    if (tooDeep) return std::nullopt;
    return dictionary;
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
