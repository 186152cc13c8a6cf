#include "job/Standing.h"

#include <cerrno>

namespace vornic {

using platform::ContentDigest;

ErrnoOr<Standing> standingOfContents(int descriptor,
                                     const std::optional<ContentDigest::Value>& expected) {
    ErrnoOr<ContentDigest::Value> digest = ContentDigest::ofFile(descriptor);
    if (!digest) {
        digest = ContentDigest::ofFile(descriptor);
    }
    if (!digest) {
        return Errno{digest.errorNumber()};
    }
    return expected == *digest ? Standing::asExpected : Standing::written;
}

ErrnoOr<Standing> standingUnseen(int errorNumber) {
    if (errorNumber == ENOENT) {
        return Standing::nothing;
    }
    return Errno{errorNumber};
}

}  // namespace vornic
