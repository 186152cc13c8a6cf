#ifndef VORNIC_JOB_PROJECT_TEXT_H
#define VORNIC_JOB_PROJECT_TEXT_H

#include <memory>
#include <optional>
#include <string>

#include "base/Error.h"
#include "formats/ElementIndex.h"
#include "mend/EditList.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

/// A project file as text, and the index of its elements.
class ProjectText {
  public:
    /// Decodes and reads the bytes of a file, tolerant.
    /// @return null, with the slot filled, when they are no text.
    [[nodiscard]] static std::unique_ptr<ProjectText> read(std::string bytes, ErrorSlot& error);

    explicit ProjectText(DecodedText source);
    ProjectText(const ProjectText&) = delete;
    ProjectText& operator=(const ProjectText&) = delete;

    [[nodiscard]] const DecodedText& source() const { return source_; }
    [[nodiscard]] const ElementIndex& index() const { return *index_; }
    /// The fault that ended the reading: what follows it is not in the index.
    [[nodiscard]] const ErrorSlot& fault() const { return fault_; }

  private:
    DecodedText source_;
    std::optional<ElementIndex> index_;
    ErrorSlot fault_;
};

/// Edits of a project's text as those of the bytes of its file, in its encoding.
/// @return nothing when a text cannot be written in that encoding.
[[nodiscard]] std::optional<EditList> editsOfFile(EditList edits, const DecodedText& source);

}  // namespace vornic

#endif
