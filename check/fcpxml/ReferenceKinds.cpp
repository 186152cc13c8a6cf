#include "check/fcpxml/ReferenceKinds.h"

#include "check/fcpxml/Naming.h"
#include "formats/fcpxml/Catalogue.h"

namespace vornic {

namespace {

constexpr std::array kKinds = {
    ReferenceKinds{"ref", "asset-clip", "asset"},
    ReferenceKinds{"ref", "ref-clip", "media"},
    ReferenceKinds{"ref", "mc-clip", "media"},
    ReferenceKinds{"ref", "video", "asset", "effect"},
    ReferenceKinds{"ref", "audio", "asset", "effect"},
    ReferenceKinds{"ref", "title", "effect"},
    ReferenceKinds{"ref", "filter", "effect"},
    ReferenceKinds{"ref", "filter-video", "effect"},
    ReferenceKinds{"ref", "filter-audio", "effect"},
    ReferenceKinds{"ref", "filter-color", "effect"},
    ReferenceKinds{"ref", "transition", "effect"},
    ReferenceKinds{"ref", "text-style", "text-style-def"},
    ReferenceKinds{"format", "", "format"},
    ReferenceKinds{"tracking", "", "tracking-shape"},
    ReferenceKinds{"dataLocator", "", "locator"},
    ReferenceKinds{"projectRef", "", "projectRef", "project", true},
};

}  // namespace

std::string ReferenceKinds::inVersion(fcpxml::Version version) const {
    const fcpxml::Catalogue& catalogue = fcpxml::Catalogue::shared();
    if (isReplaced) {
        const bool isOld = catalogue.element(catalogue.idOf(kind)).isIn(version);
        return withArticle(isOld ? kind : otherKind);
    }
    return withArticle(kind) + (otherKind.empty() ? "" : " or " + withArticle(otherKind));
}

const ReferenceKinds* referenceKindsOf(std::string_view attribute, std::string_view element) {
    for (const ReferenceKinds& kinds : kKinds) {
        if (kinds.attribute == attribute && (kinds.element.empty() || kinds.element == element)) {
            return &kinds;
        }
    }
    return nullptr;
}

}  // namespace vornic
