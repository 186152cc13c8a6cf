#include "job/SavedCopy.h"

#include <cerrno>

namespace vornic {

using platform::ContentDigest;

Standing SavedCopy::glanceAt(const std::string& place, int& errorNumber) const {
    const auto there = platform::versionAt(place, errorNumber);
    if (!there) {
        return errorNumber == ENOENT ? Standing::nothing : Standing::unknown;
    }
    if (there->identity != version.identity) {
        return Standing::another;
    }
    return there->size == version.size && there->modified == version.modified ? Standing::asExpected
                                                                              : Standing::written;
}

Standing SavedCopy::standingAt(const std::string& place, int& errorNumber) const {
    const Standing glance = glanceAt(place, errorNumber);
    if (glance != Standing::asExpected && glance != Standing::written) {
        return glance;
    }
    auto now = ContentDigest::ofFile(file.get(), errorNumber);
    if (!now) {
        now = ContentDigest::ofFile(file.get(), errorNumber);
    }
    if (!now) {
        return Standing::unknown;
    }
    return *now == digest ? Standing::asExpected : Standing::written;
}

}  // namespace vornic
