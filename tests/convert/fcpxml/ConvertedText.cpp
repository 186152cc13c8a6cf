#include "tests/convert/fcpxml/ConvertedText.h"

#include "formats/ElementIndexBuilder.h"
#include "formats/fcpxml/Validator.h"
#include "report/RuleTable.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

ConvertedText convertedText(std::string_view text, fcpxml::Version from, fcpxml::Version to) {
    ElementIndexBuilder builder(text);
    static_cast<void>(readXML(text, XMLMode::strict, &builder));
    const ElementIndex index = std::move(builder).finish();
    ConvertedText result;
    result.conversion = fcpxml::convert(index, from, to, result.findings);
    result.text = applyEdits(text, result.conversion.edits);
    result.findings.sort();
    for (const Finding& finding : result.findings.kept()) {
        result.told.append(ruleOf(finding.rule).id).append(": ").append(finding.message()) += "\n";
    }
    return result;
}

std::string faultsOf(std::string_view text, fcpxml::Version version) {
    std::string faults;
    fcpxml::Validator validator(
        fcpxml::Definition::of(version), false, [&](const fcpxml::ValidityFault& fault) {
            faults += std::to_string(static_cast<int>(fault.kind)) + " <" +
                      std::string(fault.element) + "> in <" + std::string(fault.parent) + "> " +
                      std::string(fault.attribute) + "=" + std::string(fault.value) + "\n";
        });
    const XMLReading reading = readXML(text, XMLMode::strict, &validator);
    validator.finish();
    if (reading.fault) {
        faults += reading.fault->localizedDescription() + "\n";
    }
    return faults;
}

}  // namespace vornic::test
