#include "repair/pipeline/MarkupStage.h"

#include <utility>

#include "repair/pipeline/CharacterFilter.h"
#include "repair/pipeline/MarkupMends.h"
#include "report/RuleTable.h"
#include "report/XMLFindings.h"

namespace vornic {

namespace {

SourceText mended(SourceText text, const std::vector<XMLEdit>& edits) {
    std::vector<XMLEdit> made = editsBeforeFilter(text.text, edits);
    if (made.empty()) {
        return text;
    }
    std::string mended = applyXMLEdits(text.text, made);
    return {std::move(mended), text.start, std::move(text.text), std::move(made)};
}

}  // namespace

SourcePlaces SourceText::places() const {
    return edits.empty() ? SourcePlaces(text, start) : SourcePlaces(text, start, source, edits);
}

Stage<LoadedText> MarkupStage::load(SourceText text) {
    Findings found(RepairReport::kKeptFindings);
    found.ignore("xml-forbidden-character"_rule);  // the filter tells those that it removes
    XMLFindings sink(text.text, found);
    XMLReading reading =
        readXML(text.text, XMLMode::tolerant, nullptr, &sink, XMLKeeping::all, text.forbidden);
    sink.addFault(reading);
    report_.count(std::move(found), text.places());
    if (reading.fault) {
        error_ = std::move(reading.fault);
    }
    if (error_) {
        return filterAfterFailedLoad(std::move(text));
    }
    report_.say("repair-loaded"_rule);
    return sayMends(reading.mends).then([&](Done) {
        LoadedText loaded{mended(std::move(text), reading.edits), true};
        if (reading.mends.empty() && reading.edits.empty()) {
            loaded.reading = std::move(reading);
        }
        return unlessCancelled(stop_, std::move(loaded));
    });
}

Stage<Done> MarkupStage::sayMends(const std::vector<XMLMend>& mends) {
    for (const XMLMend& mend : mends) {
        report_.noteErrors();
        report_.sayMend(mend);
        if (stop_.stopRequested()) {
            return cancelledRun();
        }
    }
    return Done();
}

Stage<LoadedText> MarkupStage::filterAfterFailedLoad(SourceText text) {
    report_.noteErrors();
    report_.sayReason(error_);
    report_.label("repair-beginning-repair"_rule);
    report_.say("repair-beginning-repair"_rule);
    if (stop_.stopRequested()) {
        return cancelledRun();
    }
    report_.sayAsError("repair-filtering"_rule);
    report_.label("repair-filtering"_rule);
    return readFiltered(std::move(text), std::nullopt)
        .then([this](Filtered filtered) -> Stage<LoadedText> {
            const bool hasDocument = !filtered.reading.fault;
            // The slot still holds the fault of the first parse, whatever this one found.
            report_.giveUp();
            report_.sayReason(error_);
            report_.say("repair-not-loaded"_rule);
            return unlessCancelled(
                stop_, LoadedText{{std::move(filtered.text), std::nullopt}, hasDocument});
        });
}

Stage<std::unique_ptr<XMLDocument>> MarkupStage::filterAndParse(LoadedText loaded) {
    report_.sayAndLabel("repair-filtering"_rule);
    return readFiltered(std::move(loaded.text), std::move(loaded.reading))
        .then([](Filtered filtered) -> Stage<std::unique_ptr<XMLDocument>> {
            return filtered.reading.fault ? nullptr
                                          : XMLDocument::fromReading(std::move(filtered.text),
                                                                     std::move(filtered.reading));
        });
}

// A fault goes into the slot, and is counted.
Stage<MarkupStage::Filtered> MarkupStage::readFiltered(SourceText text,
                                                       std::optional<XMLReading> reading) {
    SourcePlaces places = text.places();
    std::optional<FilteredText> filtered =
        filterInvalidCharsInString(places, report_, stop_, reading ? &*reading : nullptr);
    if (!filtered || stop_.stopRequested()) {
        return cancelledRun();
    }
    // What was read without a fault and then kept its markup need not be read again.
    if (!filtered->isRead) {
        reading = readXML(filtered->isChanged ? filtered->text : text.text, XMLMode::strict);
    }
    if (reading->faultParts) {
        error_ = reading->fault;
        countFilteredFault(*reading->faultParts, text);
    }
    return Filtered{std::move(*filtered).of(std::move(text.text)), std::move(*reading)};
}

void MarkupStage::countFilteredFault(XMLFault fault, const SourceText& text) {
    const auto sourceOffset = [&](std::size_t filteredOffset) {
        return text.places().sourceOffset(originOfFilteredOffset(text.text, filteredOffset));
    };
    fault.offset = sourceOffset(fault.offset);
    fault.otherOffset = sourceOffset(fault.otherOffset);
    Findings found;
    XMLFindings(text.unmended(), found).addFault(fault);
    report_.count(std::move(found), SourcePlaces(text.unmended(), text.start));
}

}  // namespace vornic
