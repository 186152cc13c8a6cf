#ifndef VORNIC_XML_XML_INPUT_H
#define VORNIC_XML_XML_INPUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "xml/XMLCharacters.h"
#include "xml/XMLErrorCode.h"
#include "xml/XMLReader.h"

namespace vornic {

/// Ends a reading: what is wrong and where. Thrown by `XMLInput::fault`, caught by `readXML`.
struct XMLReadingFault {
    XMLErrorCode code;
    std::size_t offset;
    std::string sentence;
};

struct XMLInstruction {
    std::string_view target;
    std::string_view data;
};

/// The text that a reading goes through, with what the readers of its parts (content, document type
/// declaration) have in common: the position, the findings, and the constructs that occur in both.
/// Mends are stored with their offset alone; `readXML` adds line and column.
class XMLInput {
  public:
    XMLInput(std::string_view text, XMLMode mode, XMLReaderEvents* events, XMLReading& reading)
        : begin_(text.data()),
          end_(begin_ + text.size()),
          at_(begin_),
          tolerant_(mode == XMLMode::tolerant),
          events_(events),
          reading_(reading) {}

    [[nodiscard]] const char* begin() const { return begin_; }
    [[nodiscard]] const char* end() const { return end_; }
    [[nodiscard]] const char* at() const { return at_; }
    void moveTo(const char* place) { at_ = place; }
    [[nodiscard]] bool atEnd() const { return at_ == end_; }
    [[nodiscard]] bool tolerant() const { return tolerant_; }
    [[nodiscard]] XMLReaderEvents* events() const { return events_; }
    [[nodiscard]] XMLReading& reading() { return reading_; }
    [[nodiscard]] std::size_t offsetOf(const char* place) const {
        return static_cast<std::size_t>(place - begin_);
    }
    /// The offset that a place before which everything has been read has in the mended text.
    [[nodiscard]] std::size_t mendedOffsetOf(const char* place) const {
        return offsetOf(place) + growth_;
    }
    /// The line of a place, counted from the beginning: for messages only.
    [[nodiscard]] std::size_t lineOf(const char* place) const;

    [[nodiscard]] bool startsWith(const char* place, std::string_view expected) const {
        return std::string_view(place, static_cast<std::size_t>(end_ - place))
            .starts_with(expected);
    }
    [[nodiscard]] bool startsWith(std::string_view expected) const {
        return startsWith(at_, expected);
    }
    [[nodiscard]] bool isAt(char expected) const { return at_ != end_ && *at_ == expected; }

    /// Passes over white space. @return false when there was none.
    bool skipSpace() {
        const char* const start = at_;
        at_ = afterSpace(at_);
        return at_ != start;
    }
    [[nodiscard]] const char* afterSpace(const char* place) const {
        return xmlchars::afterSpace(place, end_);
    }
    /// Reads a name; "" when none begins at the position.
    [[nodiscard]] std::string_view readName();

    [[noreturn]] void fault(XMLErrorCode code, const char* place, std::string sentence) const;
    /// Notes a mend; `edit` says what changes. Both in the order of the text.
    void mend(const char* place, std::string_view what);
    void edit(const char* place, std::size_t length, std::string_view replacement);
    /// In strict mode a fault, in tolerant mode a mend.
    void mendOrFault(XMLErrorCode code, const char* place, const char* sentence,
                     std::string_view what);

    /// Checks the character at `place`, which is in no class of plain bytes.
    /// @return the place after it.
    [[nodiscard]] const char* passCharacter(const char* place) const;
    /// Checks the reference that the ampersand at `place` begins; mends or refuses it when it is
    /// none. @return the place after what was read.
    [[nodiscard]] const char* passReference(const char* place);

    /// Reads the comment that begins with `<!--` at the position. @return its content.
    std::string_view readComment();
    /// Reads the processing instruction that begins with `<?` at the position.
    XMLInstruction readProcessingInstruction();

  private:
    [[nodiscard]] const char* passHyphens(const char* comment, const char* place);
    [[nodiscard]] const char* passInstructionData(const char* instruction, const char* place) const;
    void limit(std::size_t count, const char* place) const;

    const char* begin_;
    const char* end_;
    const char* at_;
    bool tolerant_;
    XMLReaderEvents* events_;
    XMLReading& reading_;
    // How much longer the mended text is up to here; wraps round when it is shorter.
    std::size_t growth_ = 0;
};

/// A tag, reference or other piece of markup for a message: cut when it is long.
[[nodiscard]] std::string quotedTag(std::string_view opening, std::string_view name);

}  // namespace vornic

#endif
