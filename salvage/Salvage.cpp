#include "salvage/Salvage.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/FormatString.h"
#include "check/Check.h"
#include "formats/ElementIndexBuilder.h"
#include "formats/PlaceFinder.h"
#include "report/XMLFindings.h"
#include "salvage/AfterCut.h"
#include "salvage/Guesses.h"
#include "salvage/OffsetShifts.h"
#include "salvage/SourceText.h"
#include "xml/text/TextPlace.h"

namespace vornic::salvage {

namespace {

constexpr std::string_view kUnrecognisable =
    "Nothing in the file looks like a Final Cut Pro project (XMEML or FCPXML).";
constexpr std::string_view kTooManyFaults =
    "The file has more faults than a damaged project can have.";

// What a check tells of references that lead nowhere.
constexpr std::array kLostReferences = {
    "structure-dangling-reference"_rule, "references-dangling"_rule,
    "references-file-undefined"_rule, "references-clip-undefined"_rule,
    "references-dangling-link"_rule};

// The edits that a reading makes, which are told as findings as well.
class ReaderMends final : public XMLMendSink {
  public:
    ReaderMends(std::string_view text, Findings& findings) : findings_(text, findings) {}

    void mend(const XMLMend& mend, std::string_view name) override { findings_.mend(mend, name); }
    void edit(const XMLEdit& edit) override {
        if (edits_.size() < kXMLMendLimit) {
            edits_.push_back(edit);
        } else {
            isTooMany_ = true;
        }
    }
    void dropped(TextSpan characters) override { findings_.dropped(characters); }
    // Tells what was announced last. To be called behind the reading.
    void finish(const XMLReading& reading) { findings_.addFault(reading); }

    [[nodiscard]] const std::vector<XMLEdit>& edits() const { return edits_; }
    [[nodiscard]] bool isTooMany() const { return isTooMany_; }

  private:
    XMLFindings findings_;
    std::vector<XMLEdit> edits_;
    bool isTooMany_ = false;
};

// Where the changes of a copy lie, for the way back.
class BackShifts final : public ChangeSink {
  public:
    explicit BackShifts(std::size_t begin) : begin_(begin) {
        shifts_.add(0, static_cast<std::ptrdiff_t>(begin));
    }
    void made(const Change& change, std::size_t copyOffset) override {
        if (hasLast_) {
            addBehind(copyOffset, change.offset);
        }
        hasLast_ = true;
        end_ = std::size_t{change.offset} + change.length;
    }
    // The shift behind the last change is known once the next one is, or the copy's length.
    void finish(std::size_t copyLength, std::size_t textEnd) {
        if (hasLast_) {
            addBehind(copyLength, std::max(textEnd, end_));
        }
    }
    [[nodiscard]] const OffsetShifts& shifts() const { return shifts_; }

  private:
    void addBehind(std::size_t copyOffset, std::size_t textOffset) {
        const std::size_t kept = textOffset - std::min(end_, textOffset);
        shifts_.add(
            copyOffset - std::min(kept, copyOffset),
            static_cast<std::ptrdiff_t>(textOffset) - static_cast<std::ptrdiff_t>(copyOffset));
    }

    std::size_t begin_;
    OffsetShifts shifts_;
    std::size_t end_ = 0;
    bool hasLast_ = false;
};

// Salvages one file.
class Run {
  public:
    Run(const SourceText& source, const SalvageOptions& options, Salvage& result)
        : source_(source), options_(options), result_(result) {}

    void run() {
        const std::string& text = source_.text();
        const FileKind kind = guessKind(text);
        if (kind == FileKind::none) {
            return refuse(kUnrecognisable);
        }
        if (text.size() > kLongestText) {
            return refuse("Files of 4 GB and more are not salvaged.");
        }
        result_.report.kind = nameOf(kind);
        structure_ = findStructure(text, kind, options_.weights);
        if (structure_.names.isFull()) {
            return refuse(kTooManyFaults);
        }
        if (structure_.copies.empty()) {
            return refuse(kUnrecognisable);
        }
        for (const CopyRange& range : structure_.copies) {
            makeOne(range);
            if (!result_.refusal.empty()) {
                result_.copies.clear();
                return;
            }
        }
    }

  private:
    void refuse(std::string_view why) { result_.refusal = why; }

    void makeOne(const CopyRange& range) {
        Findings& findings = result_.report.findings;
        const std::size_t first = findings.kept().size();
        if (!result_.copies.empty()) {
            Finding* const second = findings.add("salvage-second-root"_rule, {range.offset, 0});
            if (second != nullptr) {
                second->inCopy.emplace();
            }
        }
        Guesses guesses(source_.text(), structure_, findings);
        std::string copy = makeCopy(source_.text(), structure_, range, guesses);
        const std::size_t firstOfReader = findings.kept().size();
        ReaderMends mends(copy, findings);
        const XMLReading reading = readXML(copy, XMLMode::tolerant, nullptr, &mends);
        if (reading.fault || mends.isTooMany()) {
            return refuse(mends.isTooMany() ? std::string(kTooManyFaults)
                                            : "What is left of the file cannot be read. " +
                                                  reading.fault->localizedDescription());
        }
        mends.finish(reading);
        if (findings.kept().size() != firstOfReader) {
            placeReaderMends(range, firstOfReader);
        }
        const OffsetShifts shifts = shiftsOf(mends.edits());
        if (!mends.edits().empty()) {
            copy = applyXMLEdits(copy, mends.edits());
        }
        moveInCopy(first, shifts);
        if (isCutOff()) {
            completeAfterCut(copy, first);
        }
        placeInCopy(copy, first);
        if (hasLost()) {
            tellLostReferences(copy, range, mends.edits());
        }
        result_.copies.push_back(std::move(copy));
    }

    [[nodiscard]] bool isCutOff() const {
        return result_.report.findings.count("salvage-cut-off"_rule) != 0;
    }
    // Whether something may be gone that others refer to.
    [[nodiscard]] bool hasLost() const {
        return isCutOff() || result_.report.findings.count("salvage-cut-tag"_rule) != 0 ||
               result_.report.findings.count("salvage-attributes-lost"_rule) != 0;
    }

    void moveInCopy(std::size_t first, const OffsetShifts& shifts) {
        auto& kept = result_.report.findings.kept();
        for (std::size_t i = first; i < kept.size(); ++i) {
            if (kept[i].inCopy) {
                kept[i].inCopy->offset = shifts.of(kept[i].inCopy->offset);
            }
        }
    }

    // What the elements lack that the file was cut off in.
    void completeAfterCut(std::string& copy, std::size_t first) {
        ElementIndexBuilder builder(copy);
        static_cast<void>(readXML(copy, XMLMode::strict, &builder));
        const ElementIndex index = std::move(builder).finish();
        const auto& kept = result_.report.findings.kept();
        const auto cut = std::find_if(
            kept.begin() + static_cast<std::ptrdiff_t>(first), kept.end(), [](const Finding& it) {
                return it.rule == "salvage-cut-off"_rule && it.inCopy.has_value();
            });
        if (cut == kept.end()) {
            return;
        }
        const std::vector<AddedPart> parts = partsAfterCut(index, cut->inCopy->offset);
        OffsetShifts shifts;
        std::string completed;
        std::vector<std::size_t> places;
        std::size_t at = 0;
        for (const AddedPart& part : parts) {
            completed.append(copy, at, part.offset - at);
            at = part.offset;
            places.push_back(completed.size());
            completed += part.text;
            shifts.add(at, static_cast<std::ptrdiff_t>(completed.size() - at));
        }
        completed.append(copy, at);
        if (parts.empty() || readXML(completed, XMLMode::strict).fault) {
            return;
        }
        moveInCopy(first, shifts);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            Finding* const finding =
                result_.report.findings.add("salvage-part-added"_rule, {source_.text().size(), 0},
                                            {{"parent", parts[i].parent},
                                             {"element", parts[i].element},
                                             {"what", excerpt(parts[i].text)}});
            if (finding != nullptr) {
                finding->inCopy.emplace();
                finding->inCopy->offset = places[i];
            }
        }
        copy = std::move(completed);
    }

    // References of the copy that lead nowhere. They stay as they are.
    void tellLostReferences(const std::string& copy, const CopyRange& range,
                            const std::vector<XMLEdit>& edits) {
        CheckOptions options;
        options.mostOfARule = options_.mostOfARule;
        options.tellsConsequences = true;
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            const RuleId rule{static_cast<std::uint16_t>(index)};
            if (std::find(kLostReferences.begin(), kLostReferences.end(), rule) ==
                kLostReferences.end()) {
                options.ignored.push_back(rule);
            }
        }
        const Report report = checkFile(copy, options);
        if (report.findings.kept().empty()) {
            return;
        }
        OffsetShifts unmended;
        std::ptrdiff_t shift = 0;
        for (const XMLEdit& edit : edits) {
            const std::size_t end = edit.offset + edit.length;
            shift += static_cast<std::ptrdiff_t>(edit.length) -
                     static_cast<std::ptrdiff_t>(edit.replacement.size());
            unmended.add(static_cast<std::size_t>(static_cast<std::ptrdiff_t>(end) - shift), shift);
        }
        BackShifts back(range.offset);
        const std::string raw = makeCopy(source_.text(), structure_, range, back);
        back.finish(raw.size(), range.end);
        for (const Finding& lost : report.findings.kept()) {
            const std::size_t where = back.shifts().of(unmended.of(lost.where.offset));
            Finding* const finding = result_.report.findings.add(
                "salvage-reference-lost"_rule, {std::min(where, source_.text().size()), 0},
                {{"what", lost.message()}});
            if (finding != nullptr) {
                finding->inCopy = lost.where;
                finding->where.path = lost.where.path;
                finding->where.name = lost.where.name;
            }
        }
    }

    [[nodiscard]] static OffsetShifts shiftsOf(const std::vector<XMLEdit>& edits) {
        OffsetShifts shifts;
        std::ptrdiff_t shift = 0;
        for (const XMLEdit& edit : edits) {
            shift += static_cast<std::ptrdiff_t>(edit.replacement.size()) -
                     static_cast<std::ptrdiff_t>(edit.length);
            shifts.add(edit.offset + std::max<std::size_t>(edit.length, 1), shift);
        }
        return shifts;
    }

    // What the reader mended has places in the copy; they become those in the text.
    void placeReaderMends(const CopyRange& range, std::size_t first) {
        BackShifts back(range.offset);
        const std::string copy = makeCopy(source_.text(), structure_, range, back);
        back.finish(copy.size(), range.end);
        auto& kept = result_.report.findings.kept();
        for (std::size_t i = first; i < kept.size(); ++i) {
            kept[i].mend.reset();
            kept[i].inCopy.emplace();
            kept[i].inCopy->offset = kept[i].where.offset;
            kept[i].where.offset = back.shifts().of(kept[i].where.offset);
        }
    }

    // Line, column, element path and name in the copy.
    void placeInCopy(const std::string& copy, std::size_t first) {
        auto& kept = result_.report.findings.kept();
        if (first == kept.size()) {
            return;
        }
        ElementIndexBuilder builder(copy);
        static_cast<void>(readXML(copy, XMLMode::strict, &builder));
        const ElementIndex index = std::move(builder).finish();
        if (result_.copies.empty()) {
            result_.report.version = index.version();
        }
        std::vector<Finding*> ordered;
        for (std::size_t i = first; i < kept.size(); ++i) {
            if (kept[i].inCopy) {
                ordered.push_back(&kept[i]);
            }
        }
        std::stable_sort(ordered.begin(), ordered.end(),
                         [](const Finding* left, const Finding* right) {
                             return left->inCopy->offset < right->inCopy->offset;
                         });
        PlaceFinder places(index, TextDecoding());
        for (Finding* const finding : ordered) {
            finding->inCopy = places.placeOf({finding->inCopy->offset, 0});
            finding->where.path = finding->inCopy->path;
            finding->where.name = finding->inCopy->name;
        }
    }

    const SourceText& source_;
    const SalvageOptions& options_;
    Salvage& result_;
    Structure structure_;
};

}  // namespace

Salvage salvage(std::string bytes, const SalvageOptions& options) {
    Salvage result;
    result.report.bytes = bytes.size();
    result.report.findings = Findings(options.mostOfARule);
    for (const RuleGroup group : kCheckedGroups) {
        result.report.groups.push_back({group, false, std::string(kNotAskedFor)});
    }
    ErrorSlot error;
    const std::optional<SourceText> source =
        SourceText::of(std::move(bytes), result.report.findings, error);
    if (!source) {
        result.refusal = error->localizedDescription();
        return result;
    }
    result.report.encoding = source->encoding();
    const bool isWhole = result.report.findings.kept().empty();
    ElementIndexBuilder builder(source->text());
    if (isWhole && !readXML(source->text(), XMLMode::strict, &builder).fault) {
        const ElementIndex index = std::move(builder).finish();
        result.report.kind = nameOf(index.kind());
        result.report.version = index.version();
        result.isSound = true;
        return result;
    }
    Run(*source, options, result).run();
    result.report.findings.sort();
    source->place(result.report.findings);
    return result;
}

}  // namespace vornic::salvage
