#include "app/window/HeaderText.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/FormatString.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

using Action = HeaderFacts::Action;

// What was found in a file.
struct Tally {
    std::uint64_t problems = 0;
    std::uint64_t warnings = 0;
};

Tally tallyOf(const Findings& findings) {
    return {findings.count(Severity::error), findings.count(Severity::warning)};
}

std::string problemsNeed(std::uint64_t problems) {
    return counted(problems, "problem needs", "problems need") + " you";
}

std::string soundness(const Tally& tally) {
    if (tally.problems != 0) {
        return problemsNeed(tally.problems);
    }
    return tally.warnings == 0 ? std::string("Sound")
                               : "Sound, with " + counted(tally.warnings, "warning", "warnings");
}

bool lacksVersion(const Report& report) {
    constexpr std::array kRules = {"structure-unknown-version"_rule, "versions-not-declared"_rule,
                                   "versions-malformed"_rule, "versions-unknown"_rule};
    return std::any_of(kRules.begin(), kRules.end(),
                       [&](RuleId rule) { return report.findings.count(rule) != 0; });
}

// Writes the header of a file that was read and checked.
class HeaderWriter {
  public:
    explicit HeaderWriter(const HeaderFacts& facts)
        : facts_(facts),
          inspection_(*facts.inspection),
          now_(tallyOf(inspection_.file.report.findings)) {}

    HeaderText write() {
        if (facts_.hasChangedSince) {
            return withoutTick(soundOrNot("Another program has changed the file: "));
        }
        switch (facts_.action) {
            case Action::repair:
                return repaired();
            case Action::mend:
                return changed("mended");
            case Action::restore:
                return soundOrNot("The original is back: ");
            case Action::conversion:
                return soundOrNot(formatString("Converted to version %@: ", facts_.version));
            case Action::relink:
                return soundOrNot(counted(facts_.relinked, "media file", "media files") +
                                  " relinked: ");
            case Action::check:
                return soundOrNot("Checked, nothing was written: ");
            case Action::none:
                break;
        }
        return soundOrNot("");
    }

  private:
    HeaderText repaired() {
        switch (facts_.outcome) {
            case RepairOutcome::sound:
                return soundOrNot("");
            case RepairOutcome::repairedAndSwapped:
                return changed("repaired");
            case RepairOutcome::repairedNotSwapped:
                return {HeaderSign::bad, "Nothing was saved in the place of the file", offers()};
            case RepairOutcome::unable:
                return unable();
            case RepairOutcome::cancelled:
                return notCarriedOut("Cancelled, nothing was written: ");
            case RepairOutcome::stopped:
                break;
        }
        return notCarriedOut("The repair could not be carried out: ");
    }

    // A file can be sound and yet not what the user asked for.
    static HeaderText withoutTick(HeaderText header) {
        header.sign = header.sign == HeaderSign::good ? HeaderSign::neutral : header.sign;
        return header;
    }

    HeaderText notCarriedOut(std::string_view how) {
        HeaderText header = soundOrNot(how);
        header.sign = now_.problems == 0 ? HeaderSign::neutral : HeaderSign::bad;
        if (facts_.outcome == RepairOutcome::stopped) {
            addHelp(header);
        }
        return header;
    }

    // The repair judges by rules of its own, and may refuse what every program reads.
    HeaderText unable() {
        HeaderText header{HeaderSign::bad, problemsNeed(now_.problems), offers()};
        if (now_.problems == 0) {
            const std::string reason = facts_.reason.empty() ? "" : ": " + facts_.reason;
            header.sign = HeaderSign::warning;
            header.sentence = soundness(now_) + "; only the repair cannot take it" + reason;
        }
        addHelp(header);
        if (now_.problems == 0 && header.offers.empty()) {
            header.sentence += ". Nothing has to be done";
        }
        return header;
    }

    // What would help a file that a repair could not take.
    void addHelp(HeaderText& header) const {
        const Report& report = inspection_.file.report;
        const FileKind contents = fileKindOfRoot(report.kind);
        if ((contents == FileKind::fcpxml || contents == FileKind::xmeml) &&
            contents != fileKindOfPath(inspection_.file.path)) {
            header.offers.push_back(HeaderOffer::treatAsContents);
            header.contents = contents;
        }
        if (lacksVersion(report)) {
            header.offers.push_back(HeaderOffer::setVersion);
        }
        if (endsAtAFault(report.findings)) {
            header.offers.push_back(HeaderOffer::saveSalvagedCopy);
        }
    }

    // Something took the file's place.
    HeaderText changed(std::string_view participle) {
        const RemovedCharacters& removed = inspection_.removed;
        if (removed.count != 0) {
            return withoutCharacters(removed);
        }
        const Findings* const before =
            inspection_.original ? &inspection_.original->report.findings : nullptr;
        const std::uint64_t found = before == nullptr ? 0 : tallyOf(*before).problems;
        const std::uint64_t gone = found - std::min(found, now_.problems);
        std::string sentence =
            found == 0 ? std::string(participle == "mended" ? "Mended" : "Repaired")
                       : counted(found, "problem", "problems") +
                             formatString(" found, %@ %@", withThousands(gone), participle);
        if (now_.problems != 0) {
            sentence += "; " + problemsNeed(now_.problems);
        } else if (now_.warnings != 0) {
            sentence += ", with " + counted(now_.warnings, "warning", "warnings") + " left";
        }
        std::vector<HeaderOffer> offered = offers();
        if (facts_.isUndoable) {
            offered.push_back(HeaderOffer::restoreOriginal);
        }
        return {now_.problems == 0 ? HeaderSign::good : HeaderSign::warning, std::move(sentence),
                std::move(offered)};
    }

    HeaderText withoutCharacters(const RemovedCharacters& removed) {
        const std::string places = removed.areNames ? counted(removed.lines, "name", "names")
                                                    : counted(removed.lines, "line", "lines");
        std::string sentence =
            counted(removed.count, "legal character was", "legal characters were") +
            " removed from " + places;
        if (now_.problems != 0) {
            sentence += "; " + problemsNeed(now_.problems);
        }
        std::vector<HeaderOffer> offered{HeaderOffer::showRemoved};
        if (facts_.isUndoable) {
            offered.push_back(HeaderOffer::bringBackAndMend);
        }
        return {HeaderSign::warning, std::move(sentence), std::move(offered)};
    }

    HeaderText soundOrNot(std::string_view prefix) {
        std::string sentence = soundness(now_);
        if (!prefix.empty() && now_.problems == 0) {
            sentence.front() = 's';
        }
        return {now_.problems == 0 ? HeaderSign::good : HeaderSign::warning,
                std::string(prefix) + sentence, offers()};
    }

    [[nodiscard]] std::vector<HeaderOffer> offers() const {
        // After a check the window offers it by a button of its own.
        const bool hasMends = facts_.action != Action::check && now_.problems != 0 &&
                              safeMendCount(inspection_.file.report.findings) != 0;
        return hasMends ? std::vector<HeaderOffer>{HeaderOffer::mend} : std::vector<HeaderOffer>{};
    }

    const HeaderFacts& facts_;
    const Inspection& inspection_;
    const Tally now_;
};

std::string sizeOf(std::uint64_t bytes) {
    constexpr std::uint64_t kThousand = 1000;
    constexpr std::array<std::string_view, 4> kUnits = {"bytes", "KB", "MB", "GB"};
    if (bytes < kThousand) {
        return counted(bytes, "byte", "bytes");
    }
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (size >= kThousand && unit + 1 < kUnits.size()) {
        size /= kThousand;
        ++unit;
    }
    return formatString("%0.1f %@", size, kUnits.at(unit));
}

}  // namespace

HeaderText headerText(const HeaderFacts& facts) {
    if (!facts.isThere) {
        return {HeaderSign::bad, "The file is not where it was", {}};
    }
    if (!facts.inspection) {
        return {HeaderSign::neutral, "Looking at the file…", {}};
    }
    const InspectedFile& file = facts.inspection->file;
    if (!file.isRead() && file.error && file.error->domain == kPosixErrorDomain &&
        file.error->code == ENOENT) {
        return {HeaderSign::bad, "The file is not where it was", {}};
    }
    if (!file.isRead()) {
        return {HeaderSign::bad,
                "The file cannot be read: " +
                    (file.error ? file.error->localizedDescription() : std::string("no reason")),
                {}};
    }
    return HeaderWriter(facts).write();
}

std::string factsOf(const Report& report, FileKind byName) {
    std::string kind;
    if (report.kind == "none") {
        kind = "no XML";
    } else if (report.kind == "other") {
        kind = "in fact other XML";
    } else {
        kind = report.kind == nameOf(byName) ? ""
               : report.kind == "fcpxml"     ? "in fact FCPXML, "
                                             : "in fact XMEML, ";
        kind += report.version.empty() ? "no version" : "version " + report.version;
    }
    return kind + " · " + sizeOf(report.bytes);
}

std::string withThousands(std::uint64_t number) {
    constexpr std::size_t kGroup = 3;
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > kGroup; at -= kGroup) {
        digits.insert(at - kGroup, ",");
    }
    return digits;
}

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
    return withThousands(count) + " " + std::string(count == 1 ? one : many);
}

bool endsAtAFault(const Findings& findings) {
    return std::any_of(findings.kept().begin(), findings.kept().end(), [](const Finding& finding) {
        return finding.severity == Severity::error && !finding.mend &&
               ruleOf(finding.rule).group == RuleGroup::xml &&
               finding.rule != "xml-other-root"_rule;
    });
}

std::size_t safeMendCount(const Findings& findings) {
    return static_cast<std::size_t>(
        std::count_if(findings.kept().begin(), findings.kept().end(), [](const Finding& finding) {
            return finding.mend && finding.mend->confidence == Confidence::safe &&
                   !finding.mend->edits.empty();
        }));
}

}  // namespace vornic
