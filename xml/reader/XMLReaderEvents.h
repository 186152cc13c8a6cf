#ifndef VORNIC_XML_READER_XML_READER_EVENTS_H
#define VORNIC_XML_READER_XML_READER_EVENTS_H

#include <string_view>

#include "xml/text/TextSpan.h"

namespace vornic {

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

}  // namespace vornic

#endif
