#include "check/VersionMend.h"

#include "formats/fcpxml/Version.h"
#include "formats/xmeml/Version.h"

namespace vornic {

namespace {

bool isVersionOf(FileKind kind, const std::string& version) {
    return kind == FileKind::fcpxml  ? fcpxml::Version::parse(version).has_value()
           : kind == FileKind::xmeml ? xmeml::parseVersion(version).has_value()
                                     : false;
}

}  // namespace

std::optional<Mend> versionMend(const ElementIndex& index,
                                const std::optional<std::string>& version) {
    if (!version || !isVersionOf(index.kind(), *version)) {
        return std::nullopt;
    }
    Edit edit{index.startTagOf(0).offset + 1 + index.nameOf(0).size(), 0,
              " version=\"" + *version + "\""};
    if (const std::optional<TextSpan> empty = index.attributeOf(0, "version")) {
        edit = {empty->offset, empty->length, *version};
    }
    return Mend{Confidence::ask, "write version=\"" + *version + "\"", {std::move(edit)}};
}

}  // namespace vornic
