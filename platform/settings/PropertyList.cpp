#include "platform/settings/PropertyList.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include <plist/plist.h>

#include "base/PathText.h"
#include "base/Utf8.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/PropertyListGuard.h"

namespace vornic::platform {
namespace {

constexpr std::string_view kBinaryMagic = "bplist00";
constexpr std::size_t kLargestList = std::size_t{16} << 20U;
/// Seconds from 1970 to 2001, where the library's dates begin.
constexpr double kLibraryEpoch = 978307200;
constexpr double kMicroseconds = 1e6;

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

struct MemoryDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Memory = std::unique_ptr<T, MemoryDeleter>;

/// The library reads and writes numbers by the locale's rules; here the decimal point is a point.
class PointLocale {
  public:
    PointLocale() : before_(uselocale(plain())) {}
    ~PointLocale() { uselocale(before_); }
    PointLocale(const PointLocale&) = delete;
    PointLocale& operator=(const PointLocale&) = delete;

  private:
    static locale_t plain() {
        static const locale_t made = newlocale(LC_ALL_MASK, "C", nullptr);
        return made;
    }
    locale_t before_;
};

// From the library --------------------------------------------------------------------------------

/// @param isWhole becomes false when something would be lost
std::optional<PropertyList> fromNode(void* node, bool& isWhole);

PropertyList::Array arrayFrom(void* node, bool& isWhole) {
    PropertyList::Array array;
    array.reserve(plist_array_get_size(node));
    plist_array_iter rawIterator = nullptr;
    plist_array_new_iter(node, &rawIterator);
    const Memory<void> iterator(rawIterator);
    for (plist_t item = nullptr; iterator;) {
        plist_array_next_item(node, iterator.get(), &item);
        if (item == nullptr) {
            break;
        }
        if (std::optional<PropertyList> value = fromNode(item, isWhole)) {
            array.push_back(std::move(*value));
        }
    }
    return array;
}

PropertyList::Dictionary dictionaryFrom(void* node, bool& isWhole) {
    PropertyList::Dictionary dictionary;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const Memory<void> iterator(rawIterator);
    while (iterator) {
        char* rawKey = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &item);
        const Memory<char> key(rawKey);
        if (!key || item == nullptr) {
            break;
        }
        if (std::optional<PropertyList> value = fromNode(item, isWhole)) {
            dictionary.insert_or_assign(std::string(key.get()), std::move(*value));
        }
    }
    return dictionary;
}

PropertyList::Value dateFrom(void* node) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    // The library cuts the seconds off towards 2001, on both sides of it.
    const double fraction = microseconds / kMicroseconds;
    return PropertyList::Date{kLibraryEpoch + seconds + (seconds < 0 ? -fraction : fraction)};
}

std::string xmlOf(void* node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    const Memory<char> owner(text);
    return text != nullptr ? std::string(text, length) : std::string();
}

/// A number or date that has a range here which the library's is wider than.
PropertyList ranged(PropertyList value, void* node, bool& isWhole) {
    isWhole = isWhole && value.toXML() == xmlOf(node);
    return value;
}

/// Nothing for what has no counterpart here (the identifiers of archived objects).
std::optional<PropertyList> fromNode(void* node, bool& isWhole) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t flag = 0;
            plist_get_bool_val(node, &flag);
            return PropertyList(PropertyList::Value(flag != 0));
        }
        case PLIST_UINT: {
            // Negative numbers come as their two's complement.
            std::uint64_t number = 0;
            plist_get_uint_val(node, &number);
            const PropertyList value(PropertyList::Value(static_cast<std::int64_t>(number)));
            return *value.integer() < 0 ? ranged(value, node, isWhole) : value;
        }
        case PLIST_REAL: {
            double number = 0;
            plist_get_real_val(node, &number);
            return PropertyList(PropertyList::Value(number));
        }
        case PLIST_STRING: {
            std::uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return PropertyList(
                PropertyList::Value(std::string(text != nullptr ? text : "", length)));
        }
        case PLIST_DATA: {
            std::uint64_t length = 0;
            const char* bytes = plist_get_data_ptr(node, &length);
            return PropertyList(PropertyList::Value(
                PropertyList::Data{std::string(bytes != nullptr ? bytes : "", length)}));
        }
        case PLIST_DATE:
            return ranged(dateFrom(node), node, isWhole);
        case PLIST_ARRAY:
            return PropertyList(PropertyList::Value(arrayFrom(node, isWhole)));
        case PLIST_DICT:
            return PropertyList(PropertyList::Value(dictionaryFrom(node, isWhole)));
        default:
            isWhole = false;
            return std::nullopt;
    }
}

// To the library ----------------------------------------------------------------------------------

Node toNode(const PropertyList& list);

Node dateNode(double secondsSince1970) {
    constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    const double seconds = std::clamp(secondsSince1970 - kLibraryEpoch, kLeast, kMost);
    const double whole = std::floor(seconds);
    return Node(plist_new_date(static_cast<std::int32_t>(whole),
                               static_cast<std::int32_t>((seconds - whole) * kMicroseconds)));
}

Node integerNode(std::int64_t number) {
    if (number >= 0) {
        return Node(plist_new_uint(static_cast<std::uint64_t>(number)));
    }
    // Releases of the library differ in how they make a negative number, but not in how they read
    // it.
    const std::string text = "<plist><integer>" + std::to_string(number) + "</integer></plist>";
    plist_t node = nullptr;
    plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &node);
    return Node(node);
}

struct NodeMaker {
    Node operator()(const std::string& text) const { return Node(plist_new_string(text.c_str())); }
    Node operator()(std::int64_t number) const { return integerNode(number); }
    Node operator()(double number) const { return Node(plist_new_real(number)); }
    Node operator()(bool flag) const {
        return Node(plist_new_bool(static_cast<std::uint8_t>(flag ? 1 : 0)));
    }
    Node operator()(const PropertyList::Date& date) const {
        return dateNode(date.secondsSince1970);
    }
    Node operator()(const PropertyList::Data& data) const {
        return Node(plist_new_data(data.bytes.data(), data.bytes.size()));
    }
    Node operator()(const PropertyList::Array& items) const {
        Node array(plist_new_array());
        for (const PropertyList& item : items) {
            plist_array_append_item(array.get(), toNode(item).release());
        }
        return array;
    }
    Node operator()(const PropertyList::Dictionary& entries) const {
        Node dictionary(plist_new_dict());
        for (const auto& [key, value] : entries) {
            plist_dict_set_item(dictionary.get(), key.c_str(), toNode(value).release());
        }
        return dictionary;
    }
};

Node toNode(const PropertyList& list) {
    return std::visit(NodeMaker{}, list.value());
}

/// The library does not survive a lack of memory, which is therefore met before it is called.
/// @throws std::bad_alloc
void requireMemoryFor(std::string_view bytes) {
    constexpr std::size_t kTimes = 16;
    constexpr std::size_t kAtLeast = std::size_t{256} * 1024;
    const auto probe = std::make_unique_for_overwrite<char[]>(bytes.size() * kTimes + kAtLeast);
    // What is never looked at may never be asked for.
    *static_cast<volatile char*>(probe.get()) = 0;
}

Node parseNode(std::string_view bytes) {
    requireMemoryFor(bytes);
    plist_t node = nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (bytes.starts_with(kBinaryMagic)) {
        if (isHarmlessBinary(bytes)) {
            plist_from_bin(bytes.data(), size, &node);
        }
    } else if (bytes.find('<') != std::string_view::npos && isHarmlessXML(bytes)) {
        plist_from_xml(bytes.data(), size, &node);
    }
    return Node(node);
}

std::optional<PropertyList> parseNoting(std::string_view bytes, bool& isWhole) {
    if (bytes.empty() || bytes.size() > kLargestList) {
        return std::nullopt;
    }
    const PointLocale locale;
    const Node node = parseNode(bytes);
    return node ? fromNode(node.get(), isWhole) : std::nullopt;
}

bool isUtf8(std::string_view text) {
    std::string valid;
    appendAsValidUtf8(valid, text);
    return valid == text;
}

/// The binary form counts the characters of texts: one that is no UTF-8 cannot be read again there.
bool hasOnlyUtf8(const PropertyList& list) {
    if (const std::string* text = list.string()) {
        return isUtf8(*text);
    }
    if (const PropertyList::Array* items = list.array()) {
        return std::all_of(items->begin(), items->end(), hasOnlyUtf8);
    }
    const PropertyList::Dictionary* entries = list.dictionary();
    return entries == nullptr ||
           std::all_of(entries->begin(), entries->end(), [](const auto& entry) {
               return isUtf8(entry.first) && hasOnlyUtf8(entry.second);
           });
}

/// The list with every date cut to whole seconds.
PropertyList withWholeSeconds(PropertyList list) {
    if (auto* date = std::get_if<PropertyList::Date>(&list.value())) {
        date->secondsSince1970 = std::floor(date->secondsSince1970);
    } else if (auto* items = std::get_if<PropertyList::Array>(&list.value())) {
        std::transform(items->begin(), items->end(), items->begin(), withWholeSeconds);
    } else if (auto* entries = std::get_if<PropertyList::Dictionary>(&list.value())) {
        for (auto& [key, value] : *entries) {
            value = withWholeSeconds(std::move(value));
        }
    }
    return list;
}

/// What a file is to hold of the list.
std::string fileForm(const PropertyList& list) {
    const PropertyList whole = withWholeSeconds(list);
    if (whole != list) {
        std::string binary = list.toBinary();
        const std::optional<PropertyList> kept = PropertyList::parse(binary);
        if (kept && withWholeSeconds(*kept) == whole) {
            return binary;
        }
    }
    return list.toXML();
}

}  // namespace

const PropertyList* PropertyList::find(std::string_view key) const {
    const Dictionary* entries = dictionary();
    if (entries == nullptr) {
        return nullptr;
    }
    const auto found = entries->find(std::string(key));
    return found == entries->end() ? nullptr : &found->second;
}

std::optional<PropertyList> PropertyList::parse(std::string_view bytes) {
    bool isWhole = true;
    return parseNoting(bytes, isWhole);
}

bool PropertyList::canBeWrittenAgain(std::string_view bytes) {
    bool isWhole = true;
    return parseNoting(bytes, isWhole) && isWhole;
}

std::optional<PropertyList> PropertyList::readFile(const std::string& path, ErrorSlot& error) {
    const std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        return std::nullopt;
    }
    std::optional<PropertyList> list = parse(*bytes);
    if (!list) {
        failFileBecause(error, path, "read", EINVAL, "it is no property list");
    }
    return list;
}

std::string PropertyList::toXML() const {
    const PointLocale locale;
    return xmlOf(toNode(*this).get());
}

std::string PropertyList::toBinary() const {
    if (!hasOnlyUtf8(*this)) {
        return "";
    }
    const PointLocale locale;
    const Node node = toNode(*this);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node.get(), &bytes, &length);
    const Memory<char> owner(bytes);
    return bytes != nullptr ? std::string(bytes, length) : std::string();
}

bool PropertyList::writeFile(const std::string& path, ErrorSlot& error) const {
    return createDirectory(parentFolder(path), error) &&
           writeFileAtomically(path, fileForm(*this), Durability::buffered, error);
}

}  // namespace vornic::platform
