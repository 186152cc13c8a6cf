#ifndef VORNIC_APP_WINDOW_SOURCE_TEXT_H
#define VORNIC_APP_WINDOW_SOURCE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xml/text/TextDecoding.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// The text of a file in rows, to be shown: any row is found at once, and so is what it begins
/// inside of. A row is a line, or a part of one that is longer than a screen is wide. It never
/// changes, so that any thread may read it.
class SourceText {
  public:
    /// What a part of a line is, for its colour.
    enum class Kind : std::uint8_t {
        text,
        tag,
        attributeName,
        attributeValue,
        reference,
        comment,
        cdata,
        instruction,
        declaration,
    };
    struct Piece {
        /// Bytes of the row.
        std::size_t offset = 0;
        std::size_t length = 0;
        Kind kind = Kind::text;
        friend bool operator==(const Piece&, const Piece&) = default;
    };

    /// The longest row, in bytes.
    static constexpr std::size_t kLongestRow = 2000;

    /// Decodes the bytes of a file and finds its rows. Bytes that are no text in the encoding that
    /// the file declares are shown as UTF-8, and invalid bytes show as U+FFFD. Linear: some
    /// tenths of a second for 50 MB.
    [[nodiscard]] static std::shared_ptr<const SourceText> of(std::string bytes);

    [[nodiscard]] std::string_view text() const { return source_.text; }
    [[nodiscard]] const DecodedText& decoded() const { return source_; }
    /// Whether the bytes fit the encoding.
    [[nodiscard]] bool isDecoded() const { return isDecoded_; }

    /// At least one.
    [[nodiscard]] std::size_t rowCount() const { return rows_.size(); }
    [[nodiscard]] std::size_t lineCount() const { return rows_.size() - continued_.size(); }
    /// The bytes of a row, without the end of its line.
    [[nodiscard]] std::string_view row(std::size_t row) const;
    /// Its length in bytes, with the end of its line.
    [[nodiscard]] std::size_t lengthOf(std::size_t row) const { return endOf(row) - offsetOf(row); }
    /// Where in the text a row begins.
    [[nodiscard]] std::size_t offsetOf(std::size_t row) const { return rows_[row] & kOffset; }
    /// The line that a row belongs to, from 1.
    [[nodiscard]] std::size_t lineOf(std::size_t row) const;
    /// Whether the line begins with this row.
    [[nodiscard]] bool beginsLine(std::size_t row) const;
    /// The row that a line begins with. @param line from 1; beyond the last one: the last row.
    [[nodiscard]] std::size_t rowOfLine(std::size_t line) const;
    /// The row that holds a byte of the text.
    [[nodiscard]] std::size_t rowAt(std::size_t offset) const;
    /// A whole line, without its end.
    [[nodiscard]] std::string_view line(std::size_t line) const;
    /// The parts of a row by their kinds, in order, without gaps; a piece is as long as it can be.
    [[nodiscard]] std::vector<Piece> piecesOf(std::size_t row) const;
    /// Finds a text from a place on, upper and lower case of ASCII letters alike.
    /// @return where it begins, or npos.
    [[nodiscard]] std::size_t find(std::string_view wanted, std::size_t from) const;
    /// The last place of a text that begins before an offset, or npos.
    [[nodiscard]] std::size_t findBefore(std::string_view wanted, std::size_t before) const;

  private:
    static constexpr std::uint64_t kOffset = (std::uint64_t{1} << 56U) - 1;

    explicit SourceText(DecodedText source, bool isDecoded);
    void findRows();
    [[nodiscard]] std::size_t endOf(std::size_t row) const;

    DecodedText source_;
    bool isDecoded_;
    // Offset, and in the highest byte what the row begins inside of.
    std::vector<std::uint64_t> rows_;
    // Rows that go on with the line of the row before, ascending.
    std::vector<std::size_t> continued_;
};

}  // namespace vornic

#endif
