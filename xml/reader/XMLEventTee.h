#ifndef VORNIC_XML_READER_XML_EVENT_TEE_H
#define VORNIC_XML_READER_XML_EVENT_TEE_H

#include <initializer_list>
#include <vector>

#include "xml/reader/XMLReader.h"

namespace vornic {

/// Tells several what one reading tells, each event to one after the other in their order, with its
/// place.
class XMLEventTee final : public XMLReaderEvents {
  public:
    /// @param receivers which must outlive the reading; null ones are left out.
    XMLEventTee(std::initializer_list<XMLReaderEvents*> receivers);

    void startElement(std::string_view name) override;
    void attribute(std::string_view name, std::string_view rawValue) override;
    void finishStartTag() override;
    void endElement(std::string_view name, bool selfClosed) override;
    void text(std::string_view rawText) override;
    void cdata(std::string_view content) override;
    void comment(std::string_view content) override;
    void processingInstruction(std::string_view target, std::string_view data) override;
    void documentType(std::string_view name, std::string_view rawDeclaration) override;

  private:
    template <typename Event>
    void tell(const Event& event);

    std::vector<XMLReaderEvents*> receivers_;
};

}  // namespace vornic

#endif
