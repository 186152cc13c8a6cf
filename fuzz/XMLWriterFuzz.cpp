#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"

// Whatever text comes in, once it is mended, writing it loses nothing, and writing what was written
// changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const vornic::XMLReading reading = vornic::readXML(text, vornic::XMLMode::tolerant);
    vornic::fuzz::expectNothing(
        vornic::test::differenceAfterWriting(vornic::applyXMLEdits(text, reading.edits)));
    return 0;
}
