#include "formats/fcpxml/Version.h"

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

}  // namespace vornic::fcpxml
