#ifndef VORNIC_XML_XML_READER_H
#define VORNIC_XML_XML_READER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Error.h"
#include "xml/TextSpan.h"
#include "xml/XMLErrorCode.h"

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

/// For a reading whose mends tell nothing new.
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

/// Receives what `readXML` reads, in the order of the text. Views live during the call only; names,
/// values and text are raw (references not replaced, line endings as they stand).
///
/// `place` tells during a call where in the text that was read it is: an element's start tag up to
/// its name, an attribute from its name to behind its value with the quotes, an end tag (`/>` for
/// an element that is closed at once), a piece of text, and each of the others from its `<` to
/// behind its `>`.
class XMLReaderEvents {
  public:
    virtual ~XMLReaderEvents() = default;
    virtual void startElement(std::string_view name) = 0;
    virtual void attribute(std::string_view name, std::string_view rawValue) = 0;
    /// The start tag of an element that has an end tag is read; `place` is its `>`.
    virtual void finishStartTag() {}
    /// @param selfClosed true for `<name/>`, for which no other end is told.
    virtual void endElement(std::string_view name, bool selfClosed) = 0;
    /// Character data between two pieces of markup, never empty.
    virtual void text(std::string_view rawText) = 0;
    virtual void cdata(std::string_view content) = 0;
    virtual void comment(std::string_view content) = 0;
    virtual void processingInstruction(std::string_view target, std::string_view data) = 0;
    /// @param rawDeclaration what stands between `<!DOCTYPE` with its white space and the closing
    ///     `>`; comments and processing instructions in it are told no other way.
    virtual void documentType(std::string_view name, std::string_view rawDeclaration) = 0;

  protected:
    /// Where in the text what is being told stands. For use during a call.
    [[nodiscard]] TextSpan place() const { return place_; }
    /// During `attribute`: where its value stands, without the quotes.
    [[nodiscard]] TextSpan valuePlace() const { return valuePlace_; }
    /// Hands the places to another receiver, for who passes events on.
    void passPlaceTo(XMLReaderEvents& other) const {
        other.place_ = place_;
        other.valuePlace_ = valuePlace_;
    }

  private:
    friend class XMLInput;
    TextSpan place_;
    TextSpan valuePlace_;
};

/// Reads a document in one pass and decides whether it is well-formed as XML 1.0 (fifth edition)
/// asks of a non-validating processor, with two deliberate narrowings: entity declarations in the
/// document type declaration are refused in both modes, and a reference to a general entity that is
/// not one of the five predefined ones is a fault. Nothing outside the text is ever read.
///
/// The text is UTF-8; bytes that are not are a fault (in tolerant mode too). An encoding
/// declaration is checked for its form and otherwise ignored. Time is linear in the length; memory
/// grows with the depth of the elements that are open and the number of mends, never on the stack.
///
/// @param events told of everything read before the fault, or null. In tolerant mode with edits the
///     views show the text as it stands, not as mended, but without the dropped characters (with a
///     sink, and very many of them, they may be left in).
/// @param sink for the tolerant mode, told of the mends; or null
/// @param keeping what the result holds beside what the sink is told; without a sink it holds all
/// @return the findings; faults carry line and column in the error and in its description.
[[nodiscard]] XMLReading readXML(std::string_view text, XMLMode mode,
                                 XMLReaderEvents* events = nullptr, XMLMendSink* sink = nullptr,
                                 XMLKeeping keeping = XMLKeeping::nothing);

/// Applies the edits of a reading to the text that was read.
[[nodiscard]] std::string applyXMLEdits(std::string_view text, const std::vector<XMLEdit>& edits);

}  // namespace vornic

#endif
