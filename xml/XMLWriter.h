#ifndef VORNIC_XML_XML_WRITER_H
#define VORNIC_XML_XML_WRITER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "xml/XMLDocument.h"

namespace vornic {

/// Writes a tree as text; what the text looks like is told at `XMLDocument::serialize`. One object
/// writes one document.
class XMLWriter {
  public:
    /// @param emptyPairs the offsets of elements that are written as `<name></name>` when they have
    ///     no children; see `XMLReading::emptyPairs`.
    XMLWriter(const XMLSink& sink, const std::vector<std::size_t>& emptyPairs);

    /// @return false when the sink stopped it.
    bool write(pugi::xml_node document);

  private:
    void writeDeclaration(pugi::xml_node document);
    void writeTree(pugi::xml_node top);
    void writeNode(pugi::xml_node node);
    void openElement(pugi::xml_node element);
    void closeElement(pugi::xml_node element);
    void writeAttributes(pugi::xml_node element);
    void writeInstruction(pugi::xml_node node);
    void writeDocumentType(pugi::xml_node node);
    void writeCDATA(const char* content);
    void writeText(pugi::xml_node node);
    void writeEscaped(const char* text, unsigned stopClass);
    void writeEscape(char c);
    void writeNormalized(const char* text);
    void beginLine();
    [[nodiscard]] bool isEmptyPair(pugi::xml_node element);

    void put(char c) {
        if (used_ == buffer_.size()) {
            flush();
        }
        buffer_[used_++] = c;
    }
    void put(std::string_view piece);
    void flush();

    const XMLSink& sink_;
    const std::vector<std::size_t>& emptyPairs_;
    std::size_t nextPair_ = 0;
    std::string buffer_;
    std::size_t used_ = 0;
    std::size_t depth_ = 0;
    // The element inside which everything is written to the letter; null outside.
    pugi::xml_node verbatim_;
    // All text of that element is white space between other nodes.
    bool hasOnlyBlanks_ = false;
    bool stopped_ = false;
};

}  // namespace vornic

#endif
