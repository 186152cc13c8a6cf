#include "app/window/FindingsTable.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "base/FormatString.h"
#include "mend/EditList.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

// The longest part of a line that a cell shows, in bytes.
constexpr std::size_t kLongestExcerpt = 90;
// What of a line stands before that which differs.
constexpr std::size_t kLead = 24;
// The longest name of a clip that a place tells, in bytes.
constexpr std::size_t kLongestName = 80;
constexpr std::size_t kLargeText = 4'000'000;
constexpr std::size_t kLinesAround = 3;
constexpr std::size_t kLongestLineAround = 400;

// Moves an offset to the beginning of its character.
std::size_t atCharacter(std::string_view text, std::size_t offset) {
    while (offset > 0 && offset < text.size() &&
           (static_cast<unsigned char>(text[offset]) & 0xC0U) == 0x80U) {
        --offset;
    }
    return std::min(offset, text.size());
}

// A part of a line that holds a place.
std::string excerptAt(std::string_view line, std::size_t at) {
    const std::size_t indentation = std::min(line.find_first_not_of(" \t"), line.size());
    std::size_t start = at > kLead ? atCharacter(line, at - kLead) : 0;
    start = std::max(start, indentation);
    if (line.size() - indentation <= kLongestExcerpt) {
        start = indentation;
    }
    const std::size_t end = line.size() - start > kLongestExcerpt
                                ? atCharacter(line, start + kLongestExcerpt)
                                : line.size();
    return (start > indentation ? "…" : "") + std::string(line.substr(start, end - start)) +
           (end < line.size() ? "…" : "");
}

// Where two lines begin to differ, indentation apart.
std::size_t firstDifference(std::string_view line, std::string_view other) {
    const std::size_t left = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t right = std::min(other.find_first_not_of(" \t"), other.size());
    std::size_t same = 0;
    while (left + same < line.size() && right + same < other.size() &&
           line[left + same] == other[right + same]) {
        ++same;
    }
    return atCharacter(line, left + same);
}

std::string_view withoutIndentation(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

// Findings that are the same thing, in whatever place of the file they stand by now.
struct KeyParts {
    bool arguments = true;
    bool path = true;
};

std::string keyOf(const Finding& finding, KeyParts parts) {
    std::string key = std::to_string(finding.rule.index) + "\n";
    for (const Argument& argument : finding.arguments) {
        if (parts.arguments) {
            key.append(argument.value).append("\n");
        }
    }
    return parts.path ? key + finding.where.path : key;
}

// The unmatched findings of a file, by key.
class Unmatched {
  public:
    Unmatched(const std::vector<const Finding*>& findings, const std::vector<bool>& isMatched,
              KeyParts parts)
        : parts_(parts) {
        for (std::size_t index = findings.size(); index-- > 0;) {
            if (!isMatched[index]) {
                byKey_[keyOf(*findings[index], parts_)].push_back(index);
            }
        }
    }
    // @return the first one of the same key, which is taken; `kNone` for none.
    std::size_t take(const Finding& finding) {
        const auto found = byKey_.find(keyOf(finding, parts_));
        if (found == byKey_.end() || found->second.empty()) {
            return kNone;
        }
        const std::size_t index = found->second.back();
        found->second.pop_back();
        return index;
    }
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  private:
    KeyParts parts_;
    std::unordered_map<std::string, std::vector<std::size_t>> byKey_;
};

std::vector<const Finding*> pointersTo(const Report& report) {
    std::vector<const Finding*> pointers;
    for (const Finding& finding : report.findings.kept()) {
        pointers.push_back(&finding);
    }
    return pointers;
}

// Findings tell bytes of the file; the text may be in another encoding.
std::vector<SourceMark> marksOf(const InspectedFile& file) {
    std::vector<SourceMark> marks;
    EditList ends;
    for (const Finding& finding : file.report.findings.kept()) {
        if (finding.where.line != 0) {
            marks.push_back({{finding.where.offset, finding.where.length}, finding.severity});
        }
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const SourceMark& left, const SourceMark& right) {
                         return left.span.offset < right.span.offset;
                     });
    for (const SourceMark& mark : marks) {
        ends.push_back({mark.span.offset, mark.span.length, ""});
    }
    ends = toTextOffsets(ends, file.source->decoded());
    for (std::size_t index = 0; index < marks.size(); ++index) {
        marks[index].span = {ends[index].offset, ends[index].length};
    }
    return marks;
}

// The lines around one, from 1, each with its number; its own begins with >.
std::string linesAroundLine(const SourceText& source, std::size_t wanted) {
    if (wanted == 0 || wanted > source.lineCount()) {
        return "";
    }
    const std::size_t first = wanted > kLinesAround ? wanted - kLinesAround : 1;
    const std::size_t last = std::min(wanted + kLinesAround, source.lineCount());
    const std::size_t width = std::to_string(last).size();
    std::string lines;
    for (std::size_t number = first; number <= last; ++number) {
        const std::string digits = std::to_string(number);
        std::string_view line = source.line(number);
        const bool isLong = line.size() > kLongestLineAround;
        line = line.substr(0, isLong ? atCharacter(line, kLongestLineAround) : line.size());
        lines += (number == wanted ? "> " : "  ") + std::string(width - digits.size(), ' ') +
                 digits + "  " + std::string(line) + (isLong ? "…" : "") + "\n";
    }
    return lines;
}

}  // namespace

std::string_view nameOf(FindingState state) {
    constexpr std::array<std::string_view, 4> kNames = {"Found", "Gone", "Left", "New"};
    return kNames.at(static_cast<std::size_t>(state));
}

FindingsTable::FindingsTable(std::shared_ptr<const Inspection> inspection)
    : inspection_(std::move(inspection)) {
    if (inspection_->original) {
        compareWithOriginal();
    } else {
        for (const Finding& finding : inspection_->file.report.findings.kept()) {
            findings_.push_back({&finding, FindingState::found, false});
        }
    }
    findCauses();
    if (inspection_->file.isRead()) {
        fileMarks_ = marksOf(inspection_->file);
    }
    if (inspection_->original) {
        originalMarks_ = marksOf(*inspection_->original);
    }
}

// What both have is matched by words and element first. A repair may have moved it or changed a
// name in it, but not both.
void FindingsTable::compareWithOriginal() {
    const std::vector<const Finding*> old = pointersTo(inspection_->original->report);
    const std::vector<const Finding*> now = pointersTo(inspection_->file.report);
    std::vector<bool> isOldMatched(old.size());
    std::vector<bool> isNowMatched(now.size());
    for (const KeyParts parts :
         {KeyParts{}, KeyParts{.path = false}, KeyParts{.arguments = false}}) {
        Unmatched unmatched(now, isNowMatched, parts);
        for (std::size_t index = 0; index < old.size(); ++index) {
            const std::size_t same =
                isOldMatched[index] ? Unmatched::kNone : unmatched.take(*old[index]);
            if (same != Unmatched::kNone) {
                isOldMatched[index] = true;
                isNowMatched[same] = true;
            }
        }
    }
    for (std::size_t index = 0; index < old.size(); ++index) {
        if (!isOldMatched[index]) {
            findings_.push_back({old[index], FindingState::gone, true});
        }
    }
    for (std::size_t index = 0; index < now.size(); ++index) {
        findings_.push_back(
            {now[index], isNowMatched[index] ? FindingState::left : FindingState::appeared, false});
    }
}

// A fault of the markup that no mend takes away ends the reading: what is missing behind it comes
// of it. And of several findings about the same bytes the weightiest is the cause.
void FindingsTable::findCauses() {
    causes_.resize(findings_.size());
    std::iota(causes_.begin(), causes_.end(), std::size_t{0});
    std::array<std::size_t, 2> fault = {findings_.size(), findings_.size()};
    for (std::size_t index = 0; index < findings_.size(); ++index) {
        const Finding& finding = *findings_[index].finding;
        if (finding.severity == Severity::error && !finding.mend &&
            ruleOf(finding.rule).group == RuleGroup::xml) {
            fault.at(findings_[index].isInOriginal ? 1 : 0) = index;
        }
    }
    std::map<std::pair<bool, std::pair<std::size_t, std::size_t>>, std::size_t> bySpan;
    for (std::size_t index = 0; index < findings_.size(); ++index) {
        const Finding& finding = *findings_[index].finding;
        const std::size_t last = fault.at(findings_[index].isInOriginal ? 1 : 0);
        const bool isMarkup = ruleOf(finding.rule).group == RuleGroup::xml;
        if (last != findings_.size() && !isMarkup && finding.where.line != 0 &&
            finding.where.offset >= findings_[last].finding->where.offset) {
            causes_[index] = last;
            continue;
        }
        if (finding.where.line == 0 || finding.where.length == 0) {
            continue;
        }
        const auto [place, isFirst] = bySpan.try_emplace(
            {findings_[index].isInOriginal, {finding.where.offset, finding.where.length}}, index);
        if (isFirst || place->second == last) {
            continue;
        }
        const Finding& other = *findings_[place->second].finding;
        if (other.severity > finding.severity && other.rule != finding.rule) {
            causes_[index] = place->second;
        }
    }
}

std::uint64_t FindingsTable::count(Severity severity) const {
    const std::uint64_t now = inspection_->file.report.findings.count(severity);
    return inspection_->original
               ? std::max(now, inspection_->original->report.findings.count(severity))
               : now;
}

// How many findings of the rule were counted and not kept.
std::uint64_t FindingsTable::countedMore(const ListedFinding& listed) const {
    if (listed.state == FindingState::left || listed.state == FindingState::appeared) {
        return 0;
    }
    const Findings& findings = listed.isInOriginal ? inspection_->original->report.findings
                                                   : inspection_->file.report.findings;
    const RuleId rule = listed.finding->rule;
    const std::uint64_t all = findings.count(rule);
    if (all <= kMostListedOfARule) {
        return 0;
    }
    const std::uint64_t more = all - kMostListedOfARule;
    const std::uint64_t now = inspection_->file.report.findings.count(rule);
    return listed.isInOriginal ? more - std::min(more, now) : more;
}

const SourceText* FindingsTable::sourceOf(const ListedFinding& listed) const {
    return listed.isInOriginal ? inspection_->original->source.get()
                               : inspection_->file.source.get();
}

std::string placeText(const Place& where) {
    if (where.line == 0) {
        return "The whole file";
    }
    const bool isLong = where.name.size() > kLongestName;
    std::string place =
        isLong ? where.name.substr(0, atCharacter(where.name, kLongestName)) + "…" : where.name;
    if (!where.timecode.empty()) {
        place += (place.empty() ? "" : ", ") + where.timecode;
    }
    return place + (place.empty() ? "Line " : ", line ") + std::to_string(where.line);
}

std::string FindingsTable::placeOf(const ListedFinding& listed) const {
    const std::string place = placeText(listed.finding->where);
    return listed.isInOriginal && listed.finding->where.line != 0 ? place + " of the original"
                                                                  : place;
}

std::string FindingsTable::lineOf(const ListedFinding& listed) const {
    const SourceText* const source = sourceOf(listed);
    const std::size_t line = listed.finding->where.line;
    return source == nullptr || line == 0 || line > source->lineCount()
               ? std::string()
               : std::string(source->line(line));
}

std::string FindingsTable::before(const ListedFinding& listed) const {
    const std::string line = lineOf(listed);
    if (listed.state == FindingState::gone && listed.finding->where.line != 0) {
        const SourceText& now = *inspection_->file.source;
        const std::size_t number =
            newLineOf(listed.finding->where.line - 1, inspection_->changes) + 1;
        if (number <= now.lineCount()) {
            return excerptAt(line, firstDifference(line, now.line(number)));
        }
    }
    std::size_t at = 0;
    // The column counts characters.
    for (std::size_t column = 1; column < listed.finding->where.column && at < line.size();
         ++column) {
        ++at;
        while (at < line.size() && (static_cast<unsigned char>(line[at]) & 0xC0U) == 0x80U) {
            ++at;
        }
    }
    return excerptAt(line, at);
}

std::string FindingsTable::after(const ListedFinding& listed) const {
    const std::string line = lineOf(listed);
    if (line.empty()) {
        return "";
    }
    if (listed.state == FindingState::gone) {
        const SourceText& now = *inspection_->file.source;
        const std::size_t number =
            newLineOf(listed.finding->where.line - 1, inspection_->changes) + 1;
        if (number > now.lineCount()) {
            return "";
        }
        const std::string_view other = now.line(number);
        return withoutIndentation(other) == withoutIndentation(line)
                   ? std::string()
                   : excerptAt(other, firstDifference(other, line));
    }
    if (!canBeMended(listed)) {
        return "";
    }
    const SourceText& source = *sourceOf(listed);
    // Places of such a file are counted from its beginning.
    const std::string& encoding = source.decoded().decoding.encoding;
    if (encoding != "UTF-8" && encoding != "ASCII" && source.text().size() > kLargeText) {
        return "";
    }
    const EditList edits = toTextOffsets(listed.finding->mend->edits, source.decoded());
    const std::size_t start = source.offsetOf(source.rowOfLine(listed.finding->where.line));
    EditList ofLine;
    for (const Edit& edit : edits) {
        if (edit.offset >= start && edit.offset + edit.length <= start + line.size()) {
            ofLine.push_back({edit.offset - start, edit.length, edit.text});
        }
    }
    if (ofLine.empty()) {
        return "";
    }
    const std::string mended = applyEdits(line, ofLine);
    return excerptAt(mended, firstDifference(mended, line));
}

std::string FindingsTable::linesAround(const ListedFinding& listed) const {
    const SourceText* const source = sourceOf(listed);
    return source != nullptr ? linesAroundLine(*source, listed.finding->where.line) : "";
}

std::string FindingsTable::linesAroundAfter(const ListedFinding& listed) const {
    const std::size_t line = listed.finding->where.line;
    return listed.isInOriginal && line != 0
               ? linesAroundLine(*inspection_->file.source,
                                 newLineOf(line - 1, inspection_->changes) + 1)
               : "";
}

bool FindingsTable::canBeMended(const ListedFinding& listed) {
    return !listed.isInOriginal && listed.finding->mend && !listed.finding->mend->edits.empty();
}

bool FindingsTable::isSafelyMended(const ListedFinding& listed) {
    return canBeMended(listed) && listed.finding->mend->confidence == Confidence::safe;
}

}  // namespace vornic
