#include "xml/reader/XMLEventTee.h"

#include <algorithm>
#include <iterator>

namespace vornic {

XMLEventTee::XMLEventTee(std::initializer_list<XMLReaderEvents*> receivers) {
    std::copy_if(receivers.begin(), receivers.end(), std::back_inserter(receivers_),
                 [](const XMLReaderEvents* receiver) { return receiver != nullptr; });
}

template <typename Event>
void XMLEventTee::tell(const Event& event) {
    for (XMLReaderEvents* const receiver : receivers_) {
        passPlaceTo(*receiver);
        event(*receiver);
    }
}

void XMLEventTee::startElement(std::string_view name) {
    tell([&](XMLReaderEvents& to) { to.startElement(name); });
}

void XMLEventTee::attribute(std::string_view name, std::string_view rawValue) {
    tell([&](XMLReaderEvents& to) { to.attribute(name, rawValue); });
}

void XMLEventTee::finishStartTag() {
    tell([](XMLReaderEvents& to) { to.finishStartTag(); });
}

void XMLEventTee::endElement(std::string_view name, bool selfClosed) {
    tell([&](XMLReaderEvents& to) { to.endElement(name, selfClosed); });
}

void XMLEventTee::text(std::string_view rawText) {
    tell([&](XMLReaderEvents& to) { to.text(rawText); });
}

void XMLEventTee::cdata(std::string_view content) {
    tell([&](XMLReaderEvents& to) { to.cdata(content); });
}

void XMLEventTee::comment(std::string_view content) {
    tell([&](XMLReaderEvents& to) { to.comment(content); });
}

void XMLEventTee::processingInstruction(std::string_view target, std::string_view data) {
    tell([&](XMLReaderEvents& to) { to.processingInstruction(target, data); });
}

void XMLEventTee::documentType(std::string_view name, std::string_view rawDeclaration) {
    tell([&](XMLReaderEvents& to) { to.documentType(name, rawDeclaration); });
}

}  // namespace vornic
