#include "job/SavedCopy.h"

#include <cerrno>

namespace vornic {

ErrnoOr<Standing> SavedCopy::glanceAt(const std::string& place) const {
    const ErrnoOr<platform::FileVersion> there = platform::versionAt(place);
    if (!there) {
        return standingUnseen(there.errorNumber());
    }
    if (there->identity != version.identity) {
        return Standing::another;
    }
    return there->size == version.size && there->modified == version.modified ? Standing::asExpected
                                                                              : Standing::written;
}

ErrnoOr<Standing> SavedCopy::standingAt(const std::string& place) const {
    const ErrnoOr<Standing> glance = glanceAt(place);
    if (!glance || (*glance != Standing::asExpected && *glance != Standing::written)) {
        return glance;
    }
    return standingOfContents(file.get(), digest);
}

}  // namespace vornic
