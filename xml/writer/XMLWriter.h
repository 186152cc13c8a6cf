#ifndef VORNIC_XML_WRITER_XML_WRITER_H
#define VORNIC_XML_WRITER_XML_WRITER_H

#include <cstddef>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "xml/writer/XMLOutput.h"

namespace vornic {

/// What a writer has to know about the text that a tree was built from.
struct XMLSourceFacts {
    /// See `XMLReading::emptyPairs`.
    std::vector<std::size_t> emptyPairs;
    /// See `XMLReading::hasMixedContent`.
    bool hasMixedContent = false;
};

/// Writes a tree as text; what the text looks like is told at `XMLDocument::serialize`. One object
/// writes one document.
class XMLWriter {
  public:
    XMLWriter(const XMLSink& sink, const XMLSourceFacts& facts) : out_(sink), facts_(facts) {}

    /// @return false when the sink stopped it.
    bool write(pugi::xml_node document);
    /// Writes a document of which only the head, up to the root element's start tag, is a tree; see
    /// `XMLTextWriter` for the rest. @return false when the sink stopped it.
    bool write(pugi::xml_node head, std::string_view afterRootTag);

  private:
    void writeDeclaration(pugi::xml_node document);
    void writeTree(pugi::xml_node top);
    pugi::xml_node writeNode(pugi::xml_node node);
    pugi::xml_node writeElement(pugi::xml_node element);
    pugi::xml_node goOn(pugi::xml_node node, pugi::xml_node top);
    void closeElement(pugi::xml_node element);
    void writeAttributes(pugi::xml_node element);
    void writeText(pugi::xml_node node);
    void writeCDATA(const char* content);
    void writeInstruction(pugi::xml_node node);
    void writeDocumentType(pugi::xml_node node);
    void beginLine();
    [[nodiscard]] bool isVerbatim(pugi::xml_node element, pugi::xml_node firstChild) const;
    [[nodiscard]] bool isEmptyPair(pugi::xml_node element);

    XMLOutput out_;
    const XMLSourceFacts& facts_;
    std::size_t nextPair_ = 0;
    std::size_t depth_ = 0;
    // The element inside which everything is written to the letter; null outside of one.
    pugi::xml_node verbatim_;
    // All text of that element is white space between other nodes.
    bool hasOnlyBlanks_ = false;
};

}  // namespace vornic

#endif
