#ifndef VORNIC_CONVERT_CONVERSION_OFFER_H
#define VORNIC_CONVERT_CONVERSION_OFFER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "convert/VersionTest.h"

namespace vornic {

/// What the conversion dialog offers for a file.
struct ConversionOffer {
    /// A version of the catalogue.
    struct Version {
        /// The catalogue's key, such as "5".
        std::string key;
        /// What the menu shows, such as "5 (Final Cut Pro 7+)".
        std::string title;
        /// Whether the file needs the version.
        VersionTest test;
        /// How often the version stands in the menu, in a row.
        int menuItems = 1;
    };

    /// The version that the file declares, and the Final Cut Pro release that reads it
    /// ("Unknown Version" when the catalogue doesn't say).
    std::string version;
    std::string release;
    /// The versions from the highest down, the order of the menu.
    std::vector<Version> versions;
    /// The index of the lowest version that holds the file without loss; nothing when the file
    /// needs none of the versions.
    std::optional<std::size_t> lowest;

    /// The lowest version without loss as a number; 1 when the file needs none of the versions.
    [[nodiscard]] std::int64_t lowestVersion() const;
    /// What the dialog says of it: "Can be downgraded without changes to version: " and its title.
    [[nodiscard]] std::string lowestText() const;
};

}  // namespace vornic

#endif
