// What holds for projects, whatever is wrong with them.

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "check/Check.h"
#include "convert/ProjectConversion.h"
#include "job/MendedBytes.h"
#include "report/JSONReportWriter.h"
#include "report/RuleTable.h"
#include "report/SARIFReportWriter.h"
#include "tests/fuzz/Rules.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"

namespace vornic::test {

namespace {

// How the text reads, "" when it does, or that it cannot be decoded.
std::string faultOf(std::string_view bytes, XMLMode mode) {
    ErrorSlot error;
    const std::optional<DecodedText> decoded = decodeXMLText(std::string(bytes), error);
    if (!decoded) {
        return error->localizedDescription();
    }
    const XMLReading reading = readXML(decoded->text, mode);
    return reading.fault ? reading.fault->localizedDescription() : "";
}

template <typename Writer>
bool canBeReadBack(const Report& report) {
    std::string text;
    Writer writer([&text](std::string_view piece) { text += piece; }, "fuzz", "0", Severity::info);
    writer.file(report);
    writer.end();
    return nlohmann::json::accept(text);
}

std::string brokenRuleOfFinding(const Finding& finding, std::string_view bytes) {
    const std::string id(ruleOf(finding.rule).id);
    if (finding.where.offset + finding.where.length > bytes.size()) {
        return id + " is told behind the end of the file";
    }
    if (finding.message().find('{') != std::string::npos &&
        bytes.find('{') == std::string_view::npos) {
        return id + " lacks an argument";
    }
    std::size_t last = 0;
    for (const Edit& edit : finding.mend ? finding.mend->edits : std::vector<Edit>()) {
        if (edit.offset < last || edit.offset + edit.length > bytes.size()) {
            return id + " has edits that overlap or lie outside";
        }
        last = edit.offset + edit.length;
    }
    return "";
}

std::vector<RuleId> everyRule() {
    std::vector<RuleId> rules;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        rules.push_back({static_cast<std::uint16_t>(index)});
    }
    return rules;
}

bool isAnyMade(const MendedBytes& mended) {
    return std::any_of(mended.records.begin(), mended.records.end(),
                       [](const MendRecord& record) { return record.isMade; });
}

std::string brokenRuleOfMend(std::string_view bytes, const MendRequest& request) {
    const MendedBytes mended = MendedBytes::of(std::string(bytes), request);
    // Where markup was mended the rules see another text, and mends that ask may meet each other;
    // they may well be given up then.
    if (mended.refusal.find("would leave or bring") != std::string::npos && request.asked.empty() &&
        faultOf(bytes, XMLMode::strict).empty()) {
        return mended.refusal;
    }
    if (applyEdits(mended.old, mended.edits) != mended.bytes) {
        return "the edits make something else";
    }
    if (!mended.isEncodingChanged && mended.old != bytes) {
        return "the old bytes are others";
    }
    if (!isAnyMade(mended)) {
        return mended.bytes == bytes ? "" : "the bytes changed without a mend";
    }
    const MendedBytes again = MendedBytes::of(mended.bytes, request);
    return isAnyMade(again) ? "something was left to the next time" : "";
}

constexpr std::array<const char*, 14> kTargets = {
    "1.6", "1.7", "1.8", "1.9", "1.10", "1.11", "1.12", "1.13", "1.14", "1", "2", "3", "4", "5"};

std::optional<std::string> resultOf(const ProjectConversion& conversion) {
    std::string result;
    const bool isWritten = conversion.write([&result](std::string_view piece) {
        result += piece;
        return true;
    });
    return isWritten ? std::optional(std::move(result)) : std::nullopt;
}

std::string brokenRuleOfResult(std::string_view source, const std::string& result,
                               const ConversionRequest& request) {
    const bool isSound = faultOf(source, XMLMode::strict).empty();
    // What a reader mends is not the conversion's to mend.
    const XMLMode mode = isSound ? XMLMode::strict : XMLMode::tolerant;
    if (const std::string fault = faultOf(result, mode); !fault.empty()) {
        return "the result cannot be read: " + fault;
    }
    const Report before = checkFile(source, {});
    const Report after = checkFile(result, {});
    if (after.version != request.to) {
        return "the result says that it is of version " + after.version;
    }
    if (before.valid.value_or(false) && !after.valid.value_or(false)) {
        return "the result is not valid, although its source is";
    }
    const ProjectConversion again = ProjectConversion::of(result, request);
    if (!again.refusal.empty()) {
        return "the result is refused: " + again.refusal;
    }
    return again.isAnythingChanged() ? "the result would be converted again" : "";
}

}  // namespace

std::string brokenRuleOfCheck(std::string_view bytes) {
    const Report report = checkFile(bytes, {});
    for (const Finding& finding : report.findings.kept()) {
        if (std::string broken = brokenRuleOfFinding(finding, bytes); !broken.empty()) {
            return broken;
        }
    }
    if (!canBeReadBack<JSONReportWriter>(report) || !canBeReadBack<SARIFReportWriter>(report)) {
        return "the report is no JSON";
    }
    return "";
}

std::string brokenRuleOfMends(std::string_view bytes) {
    std::string broken = brokenRuleOfMend(bytes, {});
    if (broken.empty()) {
        MendRequest all;
        all.asked = everyRule();
        all.toUTF8 = true;
        all.check.missingVersion = "1.10";
        broken = brokenRuleOfMend(bytes, all);
    }
    return broken;
}

std::string brokenRuleOfConversion(std::string_view bytes) {
    ConversionRequest request;
    request.to = kTargets[bytes.size() % kTargets.size()];
    request.strips = bytes.size() % 2 == 0;
    const ProjectConversion conversion = ProjectConversion::of(std::string(bytes), request);
    if (!conversion.refusal.empty()) {
        return "";
    }
    const std::optional<std::string> result = resultOf(conversion);
    if (!result) {
        return "";
    }
    if (!conversion.isAnythingChanged() && *result != bytes) {
        return "the bytes changed without an edit";
    }
    return brokenRuleOfResult(bytes, *result, request);
}

}  // namespace vornic::test
