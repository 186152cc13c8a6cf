#ifndef VORNIC_FORMATS_FILE_KIND_H
#define VORNIC_FORMATS_FILE_KIND_H

#include <string_view>

namespace vornic {

/// Which of the two formats a file is in.
enum class FileKind {
    /// Final Cut Pro 7's XML Interchange Format.
    xmeml,
    /// Final Cut Pro X's.
    fcpxml,
    /// XML with another root element.
    other,
    /// No root element.
    none,
};

/// By the extension alone: fcpxml for "fcpxml" in any case of its letters, xmeml for all others.
/// For a repair, which takes a file for what its name says.
[[nodiscard]] FileKind fileKindOfPath(std::string_view path);

/// By the name of the root element, as everything but a repair does. @param root "" for none.
[[nodiscard]] FileKind fileKindOfRoot(std::string_view root);

/// "xmeml", "fcpxml", "other", "none": in reports, and for the first two the name of the root
/// element and of the document type.
[[nodiscard]] std::string_view nameOf(FileKind kind);

/// The number that `Document` has for it: 1 for FCPXML, 0 for all others.
[[nodiscard]] constexpr int xmlTypeOf(FileKind kind) {
    return kind == FileKind::fcpxml ? 1 : 0;
}
/// The kind for such a number: XMEML for 0, FCPXML for any other.
[[nodiscard]] constexpr FileKind fileKindOfType(int xmlType) {
    return xmlType == 0 ? FileKind::xmeml : FileKind::fcpxml;
}

}  // namespace vornic

#endif
