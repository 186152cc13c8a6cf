#include "job/MendedBytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <future>
#include <memory>
#include <system_error>
#include <type_traits>
#include <utility>

#include "base/FormatString.h"
#include "mend/UnifiedDifference.h"
#include "platform/crash/CrashStack.h"
#include "report/RuleTable.h"
#include "xml/text/FileOffsets.h"
#include "xml/text/TextPlace.h"

namespace vornic {

namespace {

// A round keeps no more findings of a rule in memory; the next one goes on.
constexpr std::size_t kMostOfARound = 100000;
constexpr int kMostRounds = 1000;

using Counts = std::array<std::uint64_t, kRuleCount>;

Counts countsOf(const Findings& findings) {
    Counts counts{};
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        counts[index] = findings.count({static_cast<std::uint16_t>(index)});
    }
    return counts;
}

// The text of a file's bytes, which must outlive it.
class TextOfBytes {
  public:
    explicit TextOfBytes(const std::string& bytes) {
        ErrorSlot error;
        if (const std::optional<std::string_view> within = textWithin(bytes, decoding_)) {
            text_ = *within;
            isWithin_ = true;
        } else if ((decoded_ = decodeXMLText(bytes, error))) {
            text_ = decoded_->text;
        }
    }

    [[nodiscard]] bool isThere() const { return isWithin_ || decoded_; }
    [[nodiscard]] std::string_view text() const { return text_; }
    // Offsets of bytes as those of the text.
    [[nodiscard]] EditList places(EditList places) const {
        if (!isWithin_) {
            return toTextOffsets(places, *decoded_);
        }
        for (Edit& place : places) {
            place.offset -= std::min(place.offset, decoding_.markLength);
        }
        return places;
    }

  private:
    TextDecoding decoding_;
    bool isWithin_ = false;
    std::optional<DecodedText> decoded_;
    std::string_view text_;
};

// Lines and columns in a file, as far as something was found there.
class KnownPlaces {
  public:
    // @param findings in the order of the file
    void add(const Findings& findings) {
        for (const Finding& finding : findings.kept()) {
            if (finding.where.line != 0) {
                places_.push_back({finding.where.offset, finding.where.line, finding.where.column});
            }
        }
    }
    // @return false for a place where nothing was found.
    bool complete(Place& where) const {
        const auto known = std::lower_bound(
            places_.begin(), places_.end(), where.offset,
            [](const Known& it, std::size_t offset) { return it.offset < offset; });
        if (known == places_.end() || known->offset != where.offset) {
            return false;
        }
        where.line = known->line;
        where.column = known->column;
        return true;
    }

  private:
    struct Known {
        std::size_t offset;
        std::size_t line;
        std::size_t column;
    };
    std::vector<Known> places_;
};

// Counts the lines and columns of the old bytes up to places in them, in any order.
void countLines(std::vector<MendRecord>& records, const std::string& oldBytes) {
    const TextOfBytes source(oldBytes);
    if (!source.isThere()) {
        return;
    }
    EditList places;
    for (const MendRecord& record : records) {
        places.push_back({record.finding.where.offset, 0, ""});
    }
    TextPlace lines(source.text());
    std::size_t index = 0;
    for (const Edit& place : source.places(std::move(places))) {
        Place& where = records[index++].finding.where;
        lines.moveTo(place.offset);
        where.line = where.line == 0 ? 0 : lines.line();
        where.column = where.column == 0 ? 0 : lines.column();
    }
}

// Gives places in a later round's bytes the offsets, lines and columns of the old bytes.
void placeInOldBytes(std::vector<MendRecord>& records, const EditList& edits,
                     const std::string& oldBytes, const KnownPlaces& known) {
    const OldOffsets oldOffsets(edits);
    bool isKnown = true;
    for (MendRecord& record : records) {
        Place& where = record.finding.where;
        const std::size_t end = oldOffsets.of(where.offset + where.length);
        where.offset = oldOffsets.of(where.offset);
        where.length = std::max(end, where.offset) - where.offset;
        isKnown = (where.line == 0 || known.complete(where)) && isKnown;
    }
    if (!isKnown) {
        countLines(records, oldBytes);
    }
}

// What makes the XML declaration of a text say UTF-8; nothing where it names no encoding.
EditList encodingInDeclaration(std::string_view text) {
    const std::string_view declaration =
        text.starts_with("<?xml") ? text.substr(0, text.find("?>")) : std::string_view();
    const std::size_t name = declaration.find("encoding");
    const std::size_t quote = declaration.find_first_of("\"'", name);
    if (name == std::string_view::npos || quote == std::string_view::npos) {
        return {};
    }
    const std::size_t end = declaration.find(declaration[quote], quote + 1);
    if (end == std::string_view::npos) {
        return {};
    }
    return {{quote + 1, end - quote - 1, "UTF-8"}};
}

// Mends one file, round after round.
class Mending {
  public:
    Mending(std::string bytes, const MendRequest& request, const MendedBytes::Watcher& watch)
        : old_(std::move(bytes)), request_(request), watch_(watch) {
        options_ = request.check;
        options_.mostOfARule = std::max(options_.mostOfARule, kMostOfARound);
    }

    MendedBytes run() {
        checkFirst();
        if (request_.toUTF8) {
            changeEncoding();
        }
        setVersion();
        for (int round = 0; round < kMostRounds && makeRound(); ++round) {
        }
        if (!mended_.refusal.empty()) {
            giveUp();
        }
        accept([this] { place(); });
        std::stable_sort(mended_.records.begin(), mended_.records.end(),
                         [](const MendRecord& left, const MendRecord& right) {
                             return left.finding.where.offset < right.finding.where.offset;
                         });
        mended_.report.findings.keepFirst(request_.check.mostOfARule);
        mended_.bytes = current_ ? std::move(*current_) : old_;
        if (!mended_.isEncodingChanged) {
            mended_.old = std::move(old_);
        }
        return std::move(mended_);
    }

  private:
    // The bytes as mended so far.
    [[nodiscard]] const std::string& bytes() const { return current_ ? *current_ : old_; }
    // What the edits are those of.
    [[nodiscard]] const std::string& origin() const {
        return mended_.isEncodingChanged ? mended_.old : old_;
    }

    void changeEncoding() {
        place();
        ErrorSlot error;
        std::optional<DecodedText> source = decodeXMLText(old_, error);
        const auto& findings = mended_.report.findings.kept();
        const auto found = std::find_if(findings.begin(), findings.end(), [](const Finding& it) {
            return it.rule == "values-encoding"_rule;
        });
        if (!source || found == findings.end()) {
            return;
        }
        mended_.records.push_back({*found, true, ""});
        mended_.records.back().finding.mend = Mend{Confidence::ask, "write the file in UTF-8", {}};
        mended_.edits = encodingInDeclaration(source->text);
        current_ = std::make_unique<std::string>(applyEdits(source->text, mended_.edits));
        mended_.old = source->text;
        mended_.isEncodingChanged = true;
        check_ = checkWatched(*current_, {}, [this] { return FileCheck(*current_, options_); });
        decoded_ = std::move(source);
    }

    // First and by itself: what is found in the light of a version is no fault of its mend.
    void setVersion() {
        constexpr RuleId kRule = "versions-not-declared"_rule;
        const auto asked = std::find(request_.asked.begin(), request_.asked.end(), kRule);
        if (asked == request_.asked.end()) {
            return;
        }
        place();
        for (const Finding& finding : mended_.report.findings.kept()) {
            if (finding.rule == kRule && finding.mend) {
                MendPlan plan;
                plan.edits = finding.mend->edits;
                plan.records.push_back({finding, true, ""});
                make(std::move(plan), false);
                return;
            }
        }
    }

    // @return whether something was mended.
    bool makeRound() {
        if (request_.chosen) {
            place();
            const std::vector<ChosenMend> chosen =
                std::exchange(isFirstRound_, false) ? *request_.chosen : std::vector<ChosenMend>();
            return make(MendPlan::ofChosen(mended_.report.findings, chosen), true);
        }
        if (!check_) {
            return make(MendPlan::of(mended_.report.findings, request_.asked), true);
        }
        MendPlan plan = MendPlan::of(check_->findings(), request_.asked);
        plan.edits = check_->toFileOffsets(std::move(plan.edits));
        return make(std::move(plan), true);
    }

    // @param isRound whether the plan has a record for each finding, and may bring none
    bool make(MendPlan plan, bool isRound) {
        const std::string encoding = check_ ? check_->encoding() : mended_.report.encoding;
        const std::optional<EditList> edits = encodeEdits(plan.edits, encoding);
        if (!edits) {
            mended_.refusal = formatString("a mend cannot be written in %@", encoding);
            return false;
        }
        const auto keep = [&] {
            place();
            if (isRound) {
                takeFindings(plan.records, edits->empty());
            }
            keepRecords(std::move(plan.records), edits->empty());
        };
        if (edits->empty()) {
            accept(keep);
            return false;
        }
        auto changed = std::make_unique<std::string>();
        FileCheck next = checkWatched(bytes(), *edits, [&] {
            auto applied = startBeside([&] { *changed = applyEdits(bytes(), *edits); });
            if (check_) {
                check_->place(*edits);
            }
            applied.get();
            std::optional<FileCheck::Mended> known;
            if (check_) {
                mended_.report = std::move(*check_).report(*changed, known);
                check_.reset();
            }
            keep();
            return known ? FileCheck(*changed, options_, std::move(*known))
                         : FileCheck(*changed, options_);
        });
        if (isRound && !isBetter(next.findings())) {
            return false;
        }
        made_ = {};
        mended_.edits = composeEdits(mended_.edits, *edits);
        current_ = std::move(changed);
        check_ = std::move(next);
        return true;
    }

    // Begins work on a thread, where there is one to be had.
    template <typename Work>
    static std::future<std::invoke_result_t<const Work&>> startBeside(Work work) {
        const auto run = [work = std::move(work)] {
            const platform::CrashStack crashStack;
            return work();
        };
        try {
            return std::async(std::launch::async, run);
        } catch (const std::system_error&) {
            return std::async(std::launch::deferred, run);
        }
    }

    void checkFirst() {
        if (!watch_.look || !options_.runsBeside(old_.size())) {
            check_.emplace(old_, options_);
            if (watch_.look) {
                watch_.look(old_);
            }
            return;
        }
        auto looking = startBeside([this] { watch_.look(old_); });
        check_.emplace(old_, options_);
        looking.get();
    }

    // Makes bytes and checks them while whoever watches writes them.
    // @param edits which make them of the old ones
    template <typename Check>
    FileCheck checkWatched(std::string_view old, const EditList& edits, const Check& check) {
        if (!watch_.write) {
            return check();
        }
        auto checked = startBeside(check);
        watch_.write(old, edits);
        return checked.get();
    }

    // Makes the report of what was checked last.
    void place() {
        if (check_) {
            mended_.report = std::move(*check_).report();
            check_.reset();
        }
    }

    // Does the rest while whoever watches takes the result.
    template <typename Rest>
    void accept(const Rest& rest) {
        if (!current_ || !watch_.accept || std::exchange(isAccepted_, true)) {
            return rest();
        }
        auto done = startBeside([&rest] { rest(); });
        watch_.accept();
        done.get();
    }

    // Gives records of all findings, made ones or all, what the report tells of them.
    void takeFindings(std::vector<MendRecord>& records, bool isAll) const {
        auto finding = mended_.report.findings.kept().begin();
        for (MendRecord& record : records) {
            if (record.isMade || isAll) {
                record.finding = *finding;
            }
            ++finding;
        }
    }

    // The mends that are made; and, when nothing more is mended, what is left.
    void keepRecords(std::vector<MendRecord> records, bool isLast) {
        std::erase_if(records,
                      [isLast](const MendRecord& record) { return !record.isMade && !isLast; });
        if (!mended_.edits.empty()) {
            placeInOldBytes(records, mended_.edits, origin(), known_);
        } else if (!mended_.isEncodingChanged) {
            known_.add(mended_.report.findings);
        }
        if (decoded_) {
            FileOffsets offsets(decoded_->text, decoded_->decoding);
            for (MendRecord& record : records) {
                Place& where = record.finding.where;
                const std::size_t end = offsets.of(where.offset + where.length);
                where.offset = offsets.of(where.offset);
                where.length = end - where.offset;
            }
        }
        for (MendRecord& record : records) {
            made_[record.finding.rule.index] += record.isMade ? 1 : 0;
            mended_.records.push_back(std::move(record));
        }
    }

    // Whether every mend of the round took its finding away and none brought another one.
    bool isBetter(const Findings& findings) {
        Counts before = countsOf(mended_.report.findings);
        const Counts after = countsOf(findings);
        // Definitions of one file that differed by nothing but what was mended have come to say the
        // same, which is the lesser fault and has a mend of its own.
        const std::size_t redefined = ("references-file-redefined"_rule).index;
        const std::size_t left = after[redefined] + made_[redefined];
        before[("references-file-repeated"_rule).index] +=
            before[redefined] - std::min(left, before[redefined]);
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            if (after[index] + made_[index] > before[index]) {
                mended_.refusal =
                    formatString("the mends would leave or bring what the rule %@ tells",
                                 ruleOf({static_cast<std::uint16_t>(index)}).id);
            }
        }
        return mended_.refusal.empty();
    }

    void giveUp() {
        check_.reset();
        current_.reset();
        mended_.isEncodingChanged = false;
        mended_.edits.clear();
        mended_.report = checkFile(old_, options_);
        mended_.records = MendPlan::of(mended_.report.findings, {}).records;
        takeFindings(mended_.records, true);
        for (MendRecord& record : mended_.records) {
            record.isMade = false;
            record.why = mended_.refusal;
        }
    }

    std::string old_;
    // The bytes as mended so far; none before the first mend.
    std::unique_ptr<std::string> current_;
    // Of those bytes, until the report is made of it.
    std::optional<FileCheck> check_;
    bool isAccepted_ = false;
    const MendRequest& request_;
    const MendedBytes::Watcher& watch_;
    CheckOptions options_;
    bool isFirstRound_ = true;
    // Of the first round, whose places are those of the old bytes.
    KnownPlaces known_;
    MendedBytes mended_;
    // Mends of the present round, for each rule.
    Counts made_{};
    // The old bytes as text, where the encoding is changed.
    std::optional<DecodedText> decoded_;
};

}  // namespace

MendedBytes MendedBytes::of(std::string bytes, const MendRequest& request, const Watcher& watch) {
    return Mending(std::move(bytes), request, watch).run();
}

std::string MendedBytes::difference(std::string_view oldName, std::string_view newName) const {
    if (isEncodingChanged) {
        return unifiedDifference(old, edits, oldName, newName);
    }
    ErrorSlot error;
    const std::optional<DecodedText> before = decodeXMLText(old, error);
    const std::optional<DecodedText> after = decodeXMLText(bytes, error);
    if (!before || !after) {
        return "";
    }
    EditList textEdits = toTextOffsets(edits, *before);
    EditList newPlaces;
    std::size_t shift = 0;
    for (const Edit& edit : edits) {
        newPlaces.push_back({edit.offset + shift, edit.text.size(), ""});
        shift += edit.text.size() - edit.length;
    }
    newPlaces = toTextOffsets(newPlaces, *after);
    for (std::size_t index = 0; index < textEdits.size(); ++index) {
        textEdits[index].text =
            after->text.substr(newPlaces[index].offset, newPlaces[index].length);
    }
    return unifiedDifference(before->text, textEdits, oldName, newName);
}

}  // namespace vornic
