#ifndef VORNIC_FOUNDATION_COPIES_FILE_COPY_SETTINGS_H
#define VORNIC_FOUNDATION_COPIES_FILE_COPY_SETTINGS_H

#include <any>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vornic {

/// What belongs to one copy, by keys. There is one object for each copy, by which a delegate can
/// tell copies apart. Any thread.
///
/// | key                   | value                                                               |
/// |-----------------------|---------------------------------------------------------------------|
/// | kFileCopySource       | `std::string`: path                                                 |
/// | kFileCopyDestinations | `std::vector<std::string>`: paths                                   |
/// | kFileCopyOperation    | `std::string`: "copy"                                               |
/// | kFileCopyDelegate     | `std::weak_ptr<FileCopyDelegate>`, when there is one                |
/// | kFileCopyObject       | the caller's first object, when given                               |
/// | kFileCopyObject2      | the caller's second object, when given                              |
/// | kFileCopyChecksum     | `std::string`: the source's checksum, set when verifying            |
/// | kFileCopyMismatch     | `std::string`: the checksum of a destination, set before it is told |
/// |                       | that it is not the source's                                         |
/// | kFileCopyChecksums    | `std::vector<std::string>`: the checksums of all destinations in    |
/// |                       | their order, set when they have been compared                       |
class FileCopySettings {
  public:
    /// The value under a key; empty when there is none.
    [[nodiscard]] std::any objectForKey(std::string_view key) const;
    /// Puts a value in place of an older one.
    void setObject(std::any object, std::string_view forKey);
    /// The value under a key when there is one of that type.
    template <typename Value>
    [[nodiscard]] std::optional<Value> valueForKey(std::string_view key) const {
        const std::any object = objectForKey(key);
        const auto* value = std::any_cast<Value>(&object);
        return value != nullptr ? std::optional<Value>(*value) : std::nullopt;
    }

  private:
    mutable std::mutex mutex_;
    std::map<std::string, std::any, std::less<>> objects_;
};

inline constexpr std::string_view kFileCopySource = "source";
inline constexpr std::string_view kFileCopyDestinations = "destinations";
inline constexpr std::string_view kFileCopyOperation = "operationtype";
inline constexpr std::string_view kFileCopyDelegate = "delegate";
inline constexpr std::string_view kFileCopyObject = "object";
inline constexpr std::string_view kFileCopyObject2 = "object2";
inline constexpr std::string_view kFileCopyChecksum = "sourceChecksum";
inline constexpr std::string_view kFileCopyMismatch = "destChecksum";
inline constexpr std::string_view kFileCopyChecksums = "destChecksums";

}  // namespace vornic

#endif
