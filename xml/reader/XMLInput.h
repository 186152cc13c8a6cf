#ifndef VORNIC_XML_READER_XML_INPUT_H
#define VORNIC_XML_READER_XML_INPUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "xml/reader/ForbiddenCharacters.h"
#include "xml/reader/XMLReaderEvents.h"
#include "xml/reader/XMLReading.h"
#include "xml/text/PlainBytes.h"
#include "xml/text/XMLCharacters.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

/// Ends a reading: what is wrong and where. Thrown by `XMLInput::fault`, caught by `readXML`.
struct XMLReadingFault {
    XMLFault parts;
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
    /// What a reading tells, and to whom. None of the pointers need be set.
    struct Listeners {
        [[nodiscard]] bool keepNothing() const {
            return sink != nullptr && keeping == XMLKeeping::nothing;
        }

        XMLReaderEvents* events = nullptr;
        XMLMendSink* sink = nullptr;
        /// For a sink.
        XMLKeeping keeping = XMLKeeping::nothing;
        /// The characters that were taken out before the text was read.
        const ForbiddenCharacters::Runs* dropped = nullptr;
    };

    XMLInput(std::string_view text, XMLMode mode, const Listeners& listeners, XMLReading& reading)
        : begin_(text.data()),
          end_(begin_ + text.size()),
          at_(begin_),
          tolerant_(mode == XMLMode::tolerant),
          listeners_(listeners),
          reading_(reading) {}

    [[nodiscard]] const char* begin() const { return begin_; }
    [[nodiscard]] const char* end() const { return end_; }
    [[nodiscard]] const char* at() const { return at_; }
    void moveTo(const char* place) { at_ = place; }
    [[nodiscard]] bool atEnd() const { return at_ == end_; }
    [[nodiscard]] bool tolerant() const { return tolerant_; }
    /// Who is told what is read, or null; with the place of what is told next.
    [[nodiscard]] XMLReaderEvents* events() const { return listeners_.events; }
    [[nodiscard]] XMLReaderEvents* eventsAt(const char* begin, const char* end) const {
        if (listeners_.events != nullptr) {
            listeners_.events->place_ = spanOf(begin, end);
        }
        return listeners_.events;
    }
    /// The same for an attribute's value, which is told together with it.
    void setValuePlace(const char* begin, const char* end) const {
        listeners_.events->valuePlace_ = spanOf(begin, end);
    }
    /// True when nobody wants what the writer needs.
    [[nodiscard]] bool keepsNothing() const { return listeners_.keepNothing(); }
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
    [[nodiscard]] std::string_view readName() {
        const std::string_view name = nameAt(at_);
        at_ += name.size();
        return name;
    }
    /// The name that begins at a place; "" when there is none.
    [[nodiscard]] std::string_view nameAt(const char* place) const {
        if (place == end_ || !xmlchars::is(*place, xmlchars::kNameStart)) {
            return {place, xmlchars::nameLength(place, end_)};
        }
        const char* const after = xmlchars::afterBytes<xmlchars::kName>(place, end_);
        return after == end_ || xmlchars::isASCII(*after)
                   ? std::string_view(place, static_cast<std::size_t>(after - place))
                   : std::string_view(place, xmlchars::nameLength(place, end_));
    }

    [[noreturn]] void fault(XMLErrorCode code, const char* place, std::string sentence,
                            std::string_view name = {}) const;
    /// A fault that concerns the start tag of an open element, too.
    [[noreturn]] void fault(XMLErrorCode code, const char* place, std::string sentence,
                            std::string_view name, std::string_view startName) const;
    /// Notes a mend; `edit` says what changes. Both in the order of the text.
    void mend(XMLErrorCode code, const char* place, std::string_view what, std::string_view name);
    void edit(const char* place, std::size_t length, std::string_view replacement);
    /// In strict mode a fault, in tolerant mode a mend.
    void mendOrFault(XMLErrorCode code, const char* place, const char* sentence,
                     std::string_view what, std::string_view name = {});

    /// Checks the character at `place`, which is in no class of plain bytes.
    /// @return the place after it.
    [[nodiscard]] const char* passCharacter(const char* place);
    /// Checks the reference that the ampersand at `place` begins; mends or refuses it when it is
    /// none. @return the place after what was read.
    [[nodiscard]] const char* passReference(const char* place);

    /// Reads the comment that begins with `<!--` at the position. @return its content.
    std::string_view readComment();
    /// Reads the processing instruction that begins with `<?` at the position.
    XMLInstruction readProcessingInstruction();

  private:
    [[nodiscard]] const char* passHyphens(const char* comment, const char* place);
    [[nodiscard]] const char* passInstructionData(const char* instruction, const char* place);
    void limit(std::size_t count, const char* place) const;
    [[nodiscard]] TextSpan spanOf(const char* begin, const char* end) const {
        const std::size_t offset = offsetOf(begin);
        const auto length = static_cast<std::size_t>(end - begin);
        return listeners_.dropped == nullptr ? TextSpan{offset, length}
                                             : listeners_.dropped->original({offset, length});
    }

    const char* begin_;
    const char* end_;
    const char* at_;
    bool tolerant_;
    Listeners listeners_;
    XMLReading& reading_;
    // How much longer the mended text is up to here; wraps round when it is shorter.
    std::size_t growth_ = 0;
};

/// A tag, reference or other piece of markup for a message: cut when it is long.
[[nodiscard]] std::string quotedTag(std::string_view opening, std::string_view name);

}  // namespace vornic

#endif
