#ifndef VORNIC_XML_TEXT_PLACE_H
#define VORNIC_XML_TEXT_PLACE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vornic {

/// Finds line and column of byte offsets. Lines end at LF, CR LF or CR; columns count Unicode
/// characters; both begin with 1. Offsets that ascend are found in one pass over the text, however
/// many they are.
class TextPlace {
  public:
    explicit TextPlace(std::string_view text) : text_(text) {}

    /// Goes to an offset. Going back starts again at the beginning of the text.
    void moveTo(std::size_t offset);

    [[nodiscard]] std::size_t line() const { return line_; }
    [[nodiscard]] std::size_t column() const { return column_; }

  private:
    std::string_view text_;
    std::size_t offset_ = 0;
    std::size_t line_ = 1;
    std::size_t column_ = 1;
};

/// "Line 12, column 40: " followed by the sentence.
[[nodiscard]] std::string sentenceWithPlace(std::size_t line, std::size_t column,
                                            std::string_view sentence);

/// The text cut to about 40 characters (with an ellipsis when it was cut), for use in messages. No
/// character is cut in half.
[[nodiscard]] std::string excerpt(std::string_view text);

}  // namespace vornic

#endif
