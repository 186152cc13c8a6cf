#ifndef VORNIC_CONVERT_MARKUP_EDITS_H
#define VORNIC_CONVERT_MARKUP_EDITS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "formats/ElementIndex.h"
#include "mend/EditList.h"

namespace vornic {

/// Adds edits of markup to a list that grows in the order of the text. Bytes that need not change
/// do not. What is added may be taken back (`truncate`). One thread.
class MarkupEdits {
  public:
    /// @param index of the text that is edited; must outlive this.
    explicit MarkupEdits(const ElementIndex& index) : index_(index) {}

    [[nodiscard]] std::size_t size() const { return edits_.size(); }
    /// Takes back all but the first edits.
    void truncate(std::size_t size) { edits_.resize(size); }
    /// In the order of the text.
    [[nodiscard]] EditList take();
    /// The edits of a tag's attributes that came since a number of edits, taken back and applied.
    [[nodiscard]] std::string takeTag(TextSpan tag, std::size_t since);

    void add(std::size_t offset, std::size_t length, std::string_view text);
    void replaceText(std::size_t edit, std::string_view text) { edits_[edit].text = text; }
    /// With its line where nothing else stands on it.
    void remove(TextSpan span);
    /// The same, but only the span itself: white space around it is content.
    void removeInText(TextSpan span) { add(span.offset, span.length, ""); }
    /// Everything in a span, in place of the edits that were made in it.
    void removeInside(TextSpan span);
    /// With the white space in front of it.
    void removeAttribute(TextSpan attribute);
    /// Behind the last attribute. Comes after edits of the element's other attributes.
    /// @param quote what `rawValue` was written in, or may be written in.
    void insertAttribute(ElementNumber element, std::string_view name, std::string_view rawValue,
                         char quote = '"');
    void renameStartTag(ElementNumber element, std::string_view name);
    /// Nothing for an element that is closed at once.
    void renameEndTag(ElementNumber element, std::string_view name);
    /// In the root element's attribute "version". Nothing where it says so already.
    void writeVersion(std::string_view version);
    /// In front of everything in the element, which is opened where it was closed at once. On a
    /// line of its own where the element begins one.
    void insertFirstChild(ElementNumber element, std::string_view markup);

    /// The end tag; empty for an element that is closed at once.
    [[nodiscard]] TextSpan endTagOf(ElementNumber element) const;
    [[nodiscard]] bool isClosedAtOnce(ElementNumber element) const;
    /// The quote that a value of the text stands in.
    [[nodiscard]] char quoteOf(TextSpan value) const;

  private:
    [[nodiscard]] TextSpan lineOf(TextSpan span) const;
    [[nodiscard]] std::size_t endOfAttributes(ElementNumber element) const;
    [[nodiscard]] std::string lineBreakBefore(ElementNumber element) const;

    const ElementIndex& index_;
    EditList edits_;
};

/// What a message shows of what is lost: its beginning, where it is long.
[[nodiscard]] std::string shortened(std::string_view content);

}  // namespace vornic

#endif
