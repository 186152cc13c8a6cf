#include "salvage/CopyRun.h"

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "formats/ElementIndexBuilder.h"
#include "formats/PlaceFinder.h"
#include "platform/processes/FreeMemory.h"
#include "report/XMLFindings.h"
#include "salvage/Guesses.h"
#include "salvage/LostReferences.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/TextPlace.h"

namespace vornic::salvage {

namespace {

// With each of these something may be gone that others refer to.
constexpr std::array kLosses = {"salvage-cut-off"_rule,           "salvage-cut-tag"_rule,
                                "salvage-start-tag-lost"_rule,    "salvage-attribute-conflict"_rule,
                                "salvage-characters-in-tag"_rule, "salvage-characters-dropped"_rule,
                                "salvage-bytes-dropped"_rule,     "salvage-text-outside-root"_rule,
                                "salvage-second-root"_rule};

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

}  // namespace

bool CopyRun::run() {
    first_ = findings_.kept().size();
    const CopyRange range = structure_.copies[number_];
    if (number_ > 0) {
        Finding* const second = findings_.add("salvage-second-root"_rule, {range.offset, 0});
        if (second != nullptr) {
            second->inCopy.emplace();
        }
    }
    Guesses guesses(text_, structure_, findings_);
    CopyOrigins origins(range, guesses);
    copy_ = makeCopy(text_, structure_, range, origins);
    origins.finish(copy_.size());
    if (number_ + 1 == structure_.copies.size()) {
        structure_.changes = {};
    }
    // The index that comes next has pages of its own.
    platform::giveFreedMemoryBack();
    if (!mendInsideOfLines(origins)) {
        return false;
    }
    declareUTF8();
    if (!index_) {
        makeIndex();
    }
    if (isCutOff()) {
        completeAfterCut();
    }
    if (hasLost()) {
        tellLostReferences(origins);
    }
    version_ = index_->version();
    placeInCopy();
    return true;
}

// Faults inside of lines are left to the reader, which has the last word.
bool CopyRun::mendInsideOfLines(const CopyOrigins& origins) {
    const std::size_t firstOfReader = findings_.kept().size();
    ReaderMends mends(copy_, findings_);
    ElementIndexBuilder builder(copy_);
    const XMLReading reading = readXML(copy_, XMLMode::tolerant, &builder, &mends);
    if (reading.fault || mends.isTooMany()) {
        refusal_ = mends.isTooMany() ? std::string(kTooManyFaults)
                                     : "What is left of the file cannot be read. " +
                                           reading.fault->localizedDescription();
        return false;
    }
    mends.finish(reading);
    placeReaderMends(origins, firstOfReader);
    for (const XMLEdit& edit : mends.edits()) {
        mends_.add(edit.offset, edit.length, edit.replacement.size());
    }
    if (mends.edits().empty()) {
        index_.emplace(std::move(builder).finish());
    } else {
        copy_ = applyXMLEdits(copy_, mends.edits());
        moveInCopy(mends_.forth);
    }
    return true;
}

// The copy is in UTF-8, whatever the file was in.
void CopyRun::declareUTF8() {
    constexpr std::string_view kUTF8 = "UTF-8";
    const std::string_view declared = declaredEncoding(copy_);
    if (declared.empty() || lowercasedLetters(declared) == "utf-8") {
        return;
    }
    const auto offset = static_cast<std::size_t>(declared.data() - copy_.data());
    declaration_.add(offset, declared.size(), kUTF8.size());
    copy_.replace(offset, declared.size(), kUTF8);
    index_.reset();
    moveInCopy(declaration_.forth);
}

// What the reader mended has places in the copy; they become those in the text.
void CopyRun::placeReaderMends(const CopyOrigins& origins, std::size_t first) {
    auto& kept = findings_.kept();
    for (std::size_t i = first; i < kept.size(); ++i) {
        kept[i].mend.reset();
        kept[i].inCopy.emplace();
        kept[i].inCopy->offset = kept[i].where.offset;
        kept[i].where.offset = origins.of(kept[i].where.offset);
    }
}

void CopyRun::moveInCopy(const OffsetShifts& shifts) {
    auto& kept = findings_.kept();
    for (std::size_t i = first_; i < kept.size(); ++i) {
        if (kept[i].inCopy) {
            kept[i].inCopy->offset = shifts.of(kept[i].inCopy->offset);
        }
    }
}

void CopyRun::makeIndex() {
    index_.reset();
    ElementIndexBuilder builder(copy_);
    static_cast<void>(readXML(copy_, XMLMode::strict, &builder));
    index_.emplace(std::move(builder).finish());
}

bool CopyRun::isCutOff() const {
    return findings_.count("salvage-cut-off"_rule) != 0;
}

bool CopyRun::hasLost() const {
    return std::any_of(kLosses.begin(), kLosses.end(),
                       [this](RuleId rule) { return findings_.count(rule) != 0; });
}

// What the elements lack that the file was cut off in.
void CopyRun::completeAfterCut() {
    const auto& kept = findings_.kept();
    const auto cut = std::find_if(
        kept.begin() + static_cast<std::ptrdiff_t>(first_), kept.end(), [](const Finding& it) {
            return it.rule == "salvage-cut-off"_rule && it.inCopy.has_value();
        });
    if (cut == kept.end()) {
        return;
    }
    const std::vector<AddedPart> parts = partsAfterCut(*index_, cut->inCopy->offset);
    std::string completed;
    std::size_t at = 0;
    for (const AddedPart& part : parts) {
        completed.append(copy_, at, part.offset - at).append(part.text);
        at = part.offset;
    }
    completed.append(copy_, at);
    if (parts.empty() || readXML(completed, XMLMode::strict).fault) {
        return;
    }
    for (const AddedPart& part : parts) {
        parts_.add(part.offset, 0, part.text.size());
    }
    moveInCopy(parts_.forth);
    tellParts(parts);
    copy_ = std::move(completed);
    makeIndex();
}

void CopyRun::tellParts(const std::vector<AddedPart>& parts) {
    std::size_t added = 0;
    for (const AddedPart& part : parts) {
        Finding* const finding = findings_.add(
            "salvage-part-added"_rule, {text_.size(), 0},
            {{"parent", part.parent}, {"element", part.element}, {"what", excerpt(part.text)}});
        if (finding != nullptr) {
            finding->inCopy.emplace();
            finding->inCopy->offset = part.offset + added;
        }
        added += part.text.size();
    }
}

// References of the copy that lead nowhere. They stay as they are.
void CopyRun::tellLostReferences(const CopyOrigins& origins) {
    const Findings all = lostReferences(*index_, findings_.emptyCopy());
    for (const Finding& lost : all.kept()) {
        const std::size_t raw =
            mends_.back.of(declaration_.back.of(parts_.back.of(lost.where.offset)));
        const std::size_t where = std::min(origins.of(raw), text_.size());
        Finding* const finding =
            findings_.add("salvage-reference-lost"_rule, {where, 0}, {{"what", lost.message()}});
        if (finding != nullptr) {
            finding->inCopy.emplace();
            finding->inCopy->offset = lost.where.offset;
        }
    }
    // The others are beyond those that are kept, and counted.
    for (std::uint64_t i = all.kept().size(); i < all.count(Severity::error); ++i) {
        findings_.add("salvage-reference-lost"_rule, {text_.size(), 0});
    }
}

// Line, column, element path and name in the copy.
void CopyRun::placeInCopy() {
    auto& kept = findings_.kept();
    std::vector<Finding*> ordered;
    for (std::size_t i = first_; i < kept.size(); ++i) {
        if (kept[i].inCopy) {
            ordered.push_back(&kept[i]);
        }
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const Finding* left, const Finding* right) {
        return left->inCopy->offset < right->inCopy->offset;
    });
    PlaceFinder places(*index_, TextDecoding());
    for (Finding* const finding : ordered) {
        finding->inCopy = places.placeOf({finding->inCopy->offset, 0});
        finding->copyIndex = number_;
        finding->where.path = finding->inCopy->path;
        finding->where.name = finding->inCopy->name;
    }
}

}  // namespace vornic::salvage
