#ifndef VORNIC_XML_READER_XML_DOCTYPE_READER_H
#define VORNIC_XML_READER_XML_DOCTYPE_READER_H

#include <string>
#include <string_view>
#include <vector>

#include "xml/reader/XMLInput.h"

namespace vornic {

/// Reads a document type declaration with its internal subset and checks that it is well-formed.
/// Nothing in it is mended but comments and ampersands in default values. Entity declarations and
/// parameter entity references are refused; what the other declarations say is checked for its form
/// and not used.
class XMLDoctypeReader {
  public:
    explicit XMLDoctypeReader(XMLInput& input) : in_(input) {}

    /// Reads from `<!DOCTYPE` at the position to the closing `>`, and tells the event.
    void read();

  private:
    void readInternalSubset();
    void readDeclaration();
    void readElementDeclaration();
    void readMixedContent();
    void readChildrenContent();
    void readContentSeparator(std::string& groups);
    void readAttributeListDeclaration();
    void readAttributeType();
    void readNames(bool tokens);
    void readDefault();
    void readDefaultValue();
    void readNotationDeclaration();
    /// @param mayOmitSystem true where PUBLIC may stand without a system identifier.
    bool readExternalId(bool mayOmitSystem);
    void readPublicLiteral();
    void readSystemLiteral();

    void expect(char expected, const char* sentence);
    void expectSpace();
    void expectName();
    bool take(std::string_view keyword);
    void refuseParameterEntity() const;
    [[noreturn]] void fault(const char* sentence) const;

    XMLInput& in_;
};

}  // namespace vornic

#endif
