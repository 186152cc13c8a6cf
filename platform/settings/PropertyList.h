#ifndef VORNIC_PLATFORM_SETTINGS_PROPERTY_LIST_H
#define VORNIC_PLATFORM_SETTINGS_PROPERTY_LIST_H

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/Error.h"
#include "platform/files/AtomicFile.h"

namespace vornic::platform {

class PropertyList;

/// A value of a property list. Strings are UTF-8; dates are seconds since 1970-01-01 UTC. Integers
/// above the range of `std::int64_t` wrap around to negative ones. Written, a string or key ends
/// before its first NUL byte, and a date lies between 1932 and 2069.
class PropertyList {
  public:
    using Dictionary = std::map<std::string, PropertyList>;
    using Array = std::vector<PropertyList>;
    struct Date {
        double secondsSince1970 = 0;
        friend bool operator==(const Date&, const Date&) = default;
    };
    struct Data {
        std::string bytes;
        friend bool operator==(const Data&, const Data&) = default;
    };
    using Value =
        std::variant<std::string, std::int64_t, double, bool, Date, Data, Array, Dictionary>;

    PropertyList() : value_(Dictionary{}) {}
    PropertyList(Value value) : value_(std::move(value)) {}  // NOLINT: a value is a property list
    PropertyList(const char* text) : value_(std::string(text)) {}  // NOLINT: likewise
    PropertyList(bool boolean) : value_(boolean) {}                // NOLINT: likewise
    PropertyList(double number) : value_(number) {}                // NOLINT: likewise
    template <std::integral T>
    PropertyList(T number) : value_(static_cast<std::int64_t>(number)) {}  // NOLINT: likewise

    [[nodiscard]] const Value& value() const { return value_; }
    [[nodiscard]] Value& value() { return value_; }

    /// Typed views: a null pointer when the value is of another type.
    [[nodiscard]] const std::string* string() const { return std::get_if<std::string>(&value_); }
    [[nodiscard]] const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
    [[nodiscard]] const bool* boolean() const { return std::get_if<bool>(&value_); }
    [[nodiscard]] const Array* array() const { return std::get_if<Array>(&value_); }
    [[nodiscard]] const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }

    /// The entry of a dictionary, or a null pointer (no dictionary, no such key).
    [[nodiscard]] const PropertyList* find(std::string_view key) const;

    friend bool operator==(const PropertyList&, const PropertyList&) = default;

    /// Parses XML or binary property list bytes, told apart by their first bytes. Values of kinds
    /// that have no place here (identifiers of archived objects) are left out.
    /// @return nothing when they are neither, larger than 16 MB, nested more than 512 deep, or made
    /// to take more memory or time than their size explains.
    [[nodiscard]] static std::optional<PropertyList> parse(std::string_view bytes);
    /// Whether what `parse` makes of the bytes can be written without a loss: all of its values
    /// have a place here and are within the ranges above. False when they are no property list.
    [[nodiscard]] static bool canBeWrittenAgain(std::string_view bytes);
    /// Reads a property list file (links followed). @return nothing, with the slot filled, when the
    /// file cannot be read or holds no property list.
    [[nodiscard]] static std::optional<PropertyList> readFile(const std::string& path,
                                                              ErrorSlot& error);
    /// The XML form, in which dates have whole seconds.
    [[nodiscard]] std::string toXML() const;
    /// The binary form, in which dates have microseconds.
    /// @return "" when it cannot be made: of a list with a string or key that is no UTF-8.
    [[nodiscard]] std::string toBinary() const;
    /// Writes the list atomically, not synced; folders above it are made. The form is XML, or the
    /// binary one where a date has a part of a second and nothing is lost by it.
    [[nodiscard]] bool writeFile(const std::string& path, ErrorSlot& error) const;

  private:
    Value value_;
};

}  // namespace vornic::platform

#endif
