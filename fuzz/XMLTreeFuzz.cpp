#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "tests/xml/reader/XMLSideBySide.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

// Whatever bytes come in, once they are decoded and mended, reader and tree agree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vornic::ErrorSlot error;
    const auto text =
        vornic::decodeXMLBytes(std::string(reinterpret_cast<const char*>(data), size), error);
    if (text) {
        const vornic::XMLReading reading = vornic::readXML(*text, vornic::XMLMode::tolerant);
        const std::string mended = vornic::applyXMLEdits(*text, reading.edits);
        vornic::fuzz::expectNothing(vornic::test::differenceOfReaderAndTree(mended));
    }
    return 0;
}
