#ifndef VORNIC_FORMATS_START_TAG_H
#define VORNIC_FORMATS_START_TAG_H

#include <cstddef>
#include <string_view>

#include "xml/text/TextSpan.h"

namespace vornic {

/// Goes through the attributes of a start tag in a text that was read before, mended or not: values
/// may lack quotes or be missing, and there may be characters that XML forbids.
class StartTag {
  public:
    /// @param offset of the tag's `<`.
    StartTag(std::string_view text, std::size_t offset);

    /// Goes to the next attribute. @return false when there is none; `end` is then known.
    [[nodiscard]] bool next();
    [[nodiscard]] std::string_view name() const { return text_.substr(name_.offset, name_.length); }
    /// The raw value, without quotes; empty when it is missing.
    [[nodiscard]] TextSpan value() const { return value_; }
    /// From the name to behind the value's closing quote.
    [[nodiscard]] TextSpan attribute() const { return {name_.offset, at_ - name_.offset}; }

    /// The element's name.
    [[nodiscard]] std::string_view elementName() const { return elementName_; }
    /// The offset behind the tag's `>`, once `next` has said that there are no more attributes.
    [[nodiscard]] std::size_t end() const { return at_; }

  private:
    [[nodiscard]] bool isAtEnd() const { return at_ == text_.size(); }
    void skipName();
    void skipBlanks();
    void readValue();

    std::string_view text_;
    std::string_view elementName_;
    std::size_t at_;
    TextSpan name_;
    TextSpan value_;
};

}  // namespace vornic

#endif
