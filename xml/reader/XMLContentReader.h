#ifndef VORNIC_XML_READER_XML_CONTENT_READER_H
#define VORNIC_XML_READER_XML_CONTENT_READER_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "xml/reader/XMLAttributeReader.h"
#include "xml/reader/XMLInput.h"

namespace vornic {

/// Reads a whole document: what stands before the root element, the element with its content, and
/// what follows it. Open elements are kept on the heap, so that depth costs no stack.
class XMLContentReader {
  public:
    explicit XMLContentReader(XMLInput& input) : in_(input), attributes_(input) {}

    /// @throws XMLReadingFault where the text cannot be read on.
    void read();

  private:
    struct OpenElement {
        std::size_t nameOffset;
        std::size_t nameLength;
        // Whether it holds text other than white space, and whether it has children at all.
        bool hasText = false;
        bool hasChildren = false;
    };

    void readMisc(bool beforeRoot);
    void dropByteOrderMark();
    void readComment();
    void readInstruction();
    void readDoctype(bool beforeRoot);
    void readContent();
    void readMarkup();
    void readStartTag();
    void finishStartTag(std::string_view name, bool selfClosed, std::size_t mendedName);
    void readEndTag();
    [[noreturn]] void refuseEndTag(const char* tag);
    [[noreturn]] void refuseTagEnd(const char* tag, const char* place);
    void readText();
    const char* passText(const char* place);
    const char* passSpecialText(const char* place);
    void readCDATA();
    void noteChild(bool isText);
    [[nodiscard]] bool beginsMarkup(const char* place) const;
    [[noreturn]] void refuseOpenElements();
    [[noreturn]] void refuseOutsideRoot(bool beforeRoot);
    [[nodiscard]] std::string_view nameOf(const OpenElement& element) const;

    XMLInput& in_;
    XMLAttributeReader attributes_;
    std::vector<OpenElement> open_;
    // The place after the last start tag and the offset of its name in the mended text.
    const char* afterStartTag_ = nullptr;
    std::size_t startTagName_ = 0;
    bool hasDoctype_ = false;
};

}  // namespace vornic

#endif
