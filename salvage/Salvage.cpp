#include "salvage/Salvage.h"

#include "xml/ForbiddenCharacters.h"
#include "xml/XMLReader.h"

namespace vornic::salvage {

namespace {

class NoSink final : public ChangeSink {
  public:
    void made(const Change& /*change*/, std::size_t /*copyOffset*/) override {}
};

}  // namespace

SalvagedText salvageText(std::string_view text, const Weights& weights) {
    SalvagedText salvaged;
    const ForbiddenCharacters characters(text);
    const std::string& clean = characters.remainingText();
    const FileKind kind = guessKind(clean);
    if (kind == FileKind::none) {
        salvaged.refusal = "nothing in it looks like XMEML or FCPXML";
        return salvaged;
    }
    const Structure structure = findStructure(clean, kind, weights);
    NoSink sink;
    for (const CopyRange& range : structure.copies) {
        std::string copy = makeCopy(clean, structure, range, sink);
        const XMLReading reading = readXML(copy, XMLMode::tolerant);
        if (reading.fault) {
            salvaged.refusal = reading.fault->localizedDescription();
            salvaged.copies.clear();
            return salvaged;
        }
        salvaged.copies.push_back(applyXMLEdits(copy, reading.edits));
    }
    return salvaged;
}

}  // namespace vornic::salvage
