#ifndef VORNIC_CONVERT_VERSION_TEST_H
#define VORNIC_CONVERT_VERSION_TEST_H

#include <optional>
#include <string>
#include <string_view>

#include "base/Exception.h"

namespace vornic {

/// How the test whether a text needs a version has come out.
struct VersionTest {
    /// True when the text holds an element that the version introduced, and for version "1".
    bool isRequired = false;
    /// The first element of the catalogue's list that occurs; nothing when none does, and for
    /// version "1", which is not looked up.
    std::optional<std::string> foundElement = std::nullopt;
    /// True when the catalogue cannot be loaded or does not know the version.
    bool lacksCatalogue = false;
    /// What the test was ended by; it then counts as not required.
    std::optional<platform::Exception> exception = std::nullopt;
};

/// Tests whether a text holds an element that the version introduced. Reads the catalogue, but for
/// "1", which every text requires. Any thread; nothing of the platform's kind is raised.
[[nodiscard]] VersionTest testVersion(std::string_view xmlString, const std::string& version);

}  // namespace vornic

#endif
