#include "tests/salvage/SalvageRule.h"

#include "salvage/Salvage.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

std::string brokenRuleOfSalvage(std::string_view bytes) {
    const salvage::Salvage result = salvage::salvage(std::string(bytes));
    const int answers = (result.isSound ? 1 : 0) + (result.refusal.empty() ? 0 : 1) +
                        (result.copies.empty() ? 0 : 1);
    if (answers != 1) {
        return "there is not one answer";
    }
    for (const std::string& copy : result.copies) {
        if (const XMLReading reading = readXML(copy, XMLMode::strict); reading.fault) {
            return "a copy is not well-formed: " + reading.fault->localizedDescription();
        }
    }
    if (!result.copies.empty() && result.report.findings.kept().empty()) {
        return "nothing is said of a copy that differs";
    }
    for (const Finding& finding : result.report.findings.kept()) {
        if (finding.where.offset + finding.where.length > bytes.size()) {
            return "a place is behind the end of the file";
        }
        if (finding.message().find('{') != std::string::npos &&
            bytes.find('{') == std::string_view::npos) {
            return "a message lacks an argument";
        }
    }
    return "";
}

}  // namespace vornic::test
