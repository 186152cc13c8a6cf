#ifndef VORNIC_XML_WRITER_XML_TEXT_WRITER_H
#define VORNIC_XML_WRITER_XML_TEXT_WRITER_H

#include <cstddef>
#include <string_view>

#include "xml/writer/XMLOutput.h"

namespace vornic {

/// Writes the content of a document straight from its text, as `XMLWriter` writes it from the tree,
/// for a document that nothing has changed: no tree has to be built, and whatever looks already as
/// it is to be written is copied in long pieces. The text has passed `readXML`, and no element of
/// it has text beside other nodes (`XMLReading::hasMixedContent`).
class XMLTextWriter {
  public:
    explicit XMLTextWriter(XMLOutput& out) : out_(out) {}

    /// Writes what follows the `>` of the root element's start tag, to the end of the document.
    void write(std::string_view afterRootTag);

  private:
    enum class Place { text, value };

    void takeContent();
    void takeNode();
    void takeMarkup();
    void takeStartTag();
    void takeEndTag();
    void takeAttribute();
    void takeQuote();
    void takeSpecial(Place place);
    void takeReference(Place place);
    void takeInstruction();
    void takeRaw(const char* content, std::string_view mark);
    void takeBlank(const char* markup, std::size_t depth);
    void passName(std::ptrdiff_t opening);
    void replaceUpTo(const char* end, std::string_view replacement);
    void copyPassed();

    XMLOutput& out_;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    // From here to `at_` the text is written as it stands.
    const char* uncopied_ = nullptr;
    // How many elements are open.
    std::size_t depth_ = 1;
};

}  // namespace vornic

#endif
