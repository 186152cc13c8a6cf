#ifndef VORNIC_XML_READER_XML_READING_H
#define VORNIC_XML_READER_XML_READING_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "xml/text/TextSpan.h"
#include "xml/text/XMLErrorCode.h"

/// What a reading of XML is asked for and what it finds, as values.
namespace vornic {

/// How `readXML` takes markup that is not well-formed.
enum class XMLMode {
    /// The first fault ends the reading.
    strict,
    /// What can be mended inside a line without a guess about structure and without losing a
    /// character of content is mended and noted; anything else ends the reading as in strict mode.
    tolerant,
};

/// A text in which the tolerant mode finds more mends, or more changes to make, is refused: it is
/// no damaged project but something else, and noting them all would take far more memory than the
/// text.
inline constexpr std::size_t kXMLMendLimit = 4'000'000;

/// A markup fault that the tolerant mode mended.
struct XMLMend {
    /// What was wrong. Several mends may share their words, each code has its own.
    XMLErrorCode code = XMLErrorCode::malformedReference;
    /// Byte offset in the text that was read.
    std::size_t offset = 0;
    /// 1-based; columns count Unicode characters.
    std::size_t line = 0;
    std::size_t column = 0;
    /// What was wrong and how it was read, such as "an ampersand that begins no entity was read as
    /// text". A fixed text.
    std::string_view what;
};

/// A change that turns the text that was read into the mended text.
struct XMLEdit {
    std::size_t offset = 0;
    /// Bytes that are taken out at the offset.
    std::size_t length = 0;
    /// What is put there. A fixed text.
    std::string_view replacement;
};

/// Is handed what a tolerant reading mends, so that nothing of it has to be kept: a text may hold
/// millions of faults. Mends come in the order of the text, dropped characters in theirs, mostly
/// before the mends.
class XMLMendSink {
  public:
    virtual ~XMLMendSink() = default;
    /// A fault was mended. Line and column are not filled in.
    /// @param name the attribute or entity concerned, or "". Lives during the call only.
    virtual void mend(const XMLMend& mend, std::string_view name) = 0;
    /// A change that belongs to the last mend.
    virtual void edit(const XMLEdit& edit) = 0;
    /// Neighbouring characters that XML forbids were dropped.
    virtual void dropped(TextSpan characters) = 0;
};

/// For a reading whose mends are known already.
class UnheardXMLMends final : public XMLMendSink {
  public:
    void mend(const XMLMend& /*mend*/, std::string_view /*name*/) override {}
    void edit(const XMLEdit& /*edit*/) override {}
    void dropped(TextSpan /*characters*/) override {}
};

/// The fault that ended a reading, in parts.
struct XMLFault {
    XMLErrorCode code = XMLErrorCode::noRootElement;
    /// Byte offset in the text that was read.
    std::size_t offset = 0;
    /// The element, attribute or entity concerned, or "".
    std::string name;
    /// For an end tag that does not match, the name of the start tag.
    std::string other;
    /// For an element that is open, the offset of the start tag's name; 0 for others.
    std::size_t otherOffset = 0;
};

/// What a pass over a text found.
struct XMLReading {
    /// The fault that ended the reading; nothing when the text, with the edits applied, is
    /// well-formed.
    ErrorSlot fault;
    /// The same fault in parts; nothing when there is none.
    std::optional<XMLFault> faultParts;
    /// In the order of the text; empty in strict mode.
    std::vector<XMLMend> mends;
    /// What the mends, and the dropping of characters that XML forbids, change; in the order of the
    /// text, not overlapping.
    std::vector<XMLEdit> edits;
    /// Characters that XML forbids and that tolerant mode dropped. They are no mends.
    std::size_t droppedCharacters = 0;
    /// True when some element has text beside child elements, comments or other nodes, or an
    /// xml:space="preserve" attribute.
    bool hasMixedContent = false;
    /// The offset behind the root element's start tag in the text with the edits applied; 0 when
    /// the element is closed at once (`<name/>`).
    std::size_t contentOffset = 0;
    /// The offsets, ascending, of the names of elements written as a start tag that an end tag
    /// follows at once (`<name></name>`), in the text with the edits applied.
    std::vector<std::size_t> emptyPairs;
    /// The offsets, ascending, of pieces of text that are white space only once their character
    /// references are replaced (`&#32;`), in the text with the edits applied.
    std::vector<std::size_t> referencedBlanks;
};

/// What a reading with a sink keeps in its result.
enum class XMLKeeping {
    /// Neither mends nor edits nor what the writer needs (`emptyPairs`, `referencedBlanks`); mends
    /// then have no limit.
    nothing,
    /// All, as a reading without a sink does.
    all,
};

}  // namespace vornic

#endif
