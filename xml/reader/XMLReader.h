#ifndef VORNIC_XML_READER_XML_READER_H
#define VORNIC_XML_READER_XML_READER_H

#include <string>
#include <string_view>
#include <vector>

#include "xml/reader/XMLReaderEvents.h"
#include "xml/reader/XMLReading.h"
#include "xml/text/TextSurvey.h"

namespace vornic {

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
/// @param forbidden for the tolerant mode, which otherwise goes through the text once more
/// @return the findings; faults carry line and column in the error and in its description.
[[nodiscard]] XMLReading readXML(std::string_view text, XMLMode mode,
                                 XMLReaderEvents* events = nullptr, XMLMendSink* sink = nullptr,
                                 XMLKeeping keeping = XMLKeeping::nothing,
                                 XMLForbidden forbidden = XMLForbidden::unknown);

/// Applies the edits of a reading to the text that was read.
[[nodiscard]] std::string applyXMLEdits(std::string_view text, const std::vector<XMLEdit>& edits);

}  // namespace vornic

#endif
