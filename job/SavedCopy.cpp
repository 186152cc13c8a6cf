#include "job/SavedCopy.h"

#include <cerrno>

namespace vornic {

using platform::ContentDigest;

bool SavedCopy::isUntouched() const {
    int ignored = 0;
    const auto now = platform::versionOf(file.get(), ignored);
    return now && now->size == version.size && now->modified == version.modified;
}

Standing SavedCopy::standingAt(const std::string& place, int& errorNumber) const {
    const auto there = platform::versionAt(place, errorNumber);
    if (!there) {
        return errorNumber == ENOENT ? Standing::nothing : Standing::unknown;
    }
    if (there->identity != version.identity) {
        return Standing::another;
    }
    if (there->size != version.size) {
        return Standing::written;
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
