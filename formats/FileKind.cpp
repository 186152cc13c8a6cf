#include "formats/FileKind.h"

#include "base/PathText.h"
#include "base/Text.h"

namespace vornic {

FileKind fileKindOfPath(std::string_view path) {
    return lowercased(pathExtension(path)) == "fcpxml" ? FileKind::fcpxml : FileKind::xmeml;
}

FileKind fileKindOfRoot(std::string_view root) {
    if (root.empty()) {
        return FileKind::none;
    }
    if (root == "xmeml") {
        return FileKind::xmeml;
    }
    return root == "fcpxml" ? FileKind::fcpxml : FileKind::other;
}

std::string_view nameOf(FileKind kind) {
    switch (kind) {
        case FileKind::xmeml:
            return "xmeml";
        case FileKind::fcpxml:
            return "fcpxml";
        case FileKind::other:
            return "other";
        default:
            return "none";
    }
}

}  // namespace vornic
