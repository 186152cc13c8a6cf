#ifndef VORNIC_XML_READER_XML_DECLARATION_READER_H
#define VORNIC_XML_READER_XML_DECLARATION_READER_H

#include "xml/reader/XMLInput.h"

namespace vornic {

/// Reads the XML declaration at the beginning of the text, when there is one. In tolerant mode
/// white space and byte order marks before it are dropped, and a malformed one is replaced by
/// `<?xml version="1.0" encoding="UTF-8"?>`.
void readXMLDeclaration(XMLInput& input);

}  // namespace vornic

#endif
