#include "formats/fcpxml/Version.h"

#include <array>
#include <charconv>

namespace vornic::fcpxml {

std::optional<Version> Version::parse(std::string_view text) {
    constexpr std::string_view kMajor = "1.";
    if (!text.starts_with(kMajor)) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(kMajor.size());
    // Another program compares the text, so that "1.09" and "1.+9" are no versions.
    if (digits.empty() || digits[0] < '0' || digits[0] > '9' ||
        (digits.size() > 1 && digits[0] == '0')) {
        return std::nullopt;
    }
    int minor = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), minor);
    if (error != std::errc() || end != digits.data() + digits.size() || minor > kNewestMinor) {
        return std::nullopt;
    }
    return Version(minor);
}

std::string Version::text() const {
    return "1." + std::to_string(minor_);
}

std::string_view releaseOf(Version version) {
    // As the maker's reference (1.9 and the bundles of 1.10), its release notes and users' reports
    // name them. Nobody has named those of older versions for certain.
    constexpr std::array<std::string_view, Version::kNewestMinor + 1> kReleases = {
        "",       "",       "",     "",       "",     "",   "10.3", "10.4",
        "10.4.1", "10.4.9", "10.6", "10.6.6", "10.8", "11", "12"};
    return kReleases.at(static_cast<std::size_t>(version.minor()));
}

}  // namespace vornic::fcpxml
