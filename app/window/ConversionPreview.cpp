#include "app/window/ConversionPreview.h"

#include <algorithm>
#include <thread>
#include <unordered_map>
#include <utility>

#include "app/window/FindingsTable.h"
#include "app/window/HeaderText.h"
#include "app/window/LoggedWaiting.h"
#include "base/FormatString.h"
#include "base/Text.h"
#include "convert/ProjectConversion.h"
#include "convert/VersionConversion.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "formats/fcpxml/Version.h"
#include "formats/xmeml/Version.h"
#include "foundation/log/QMLog.h"
#include "job/ConvertFile.h"
#include "job/JournaledSwap.h"
#include "platform/files/FileSystem.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

constexpr std::size_t kMostOfARule = 2000;
constexpr std::size_t kMostPlaces = 100;
constexpr std::string_view kContent = "content";

// The message without what is lost, which differs from place to place.
std::string whatGoes(const Finding& finding) {
    Finding bare = finding;
    for (Argument& argument : bare.arguments) {
        if (argument.name == kContent) {
            argument.value.clear();
        }
    }
    std::string what = bare.message();
    what.erase(what.find_last_not_of(": ") + 1);
    return what;
}

std::string contentOf(const Finding& finding) {
    for (const Argument& argument : finding.arguments) {
        if (argument.name == kContent) {
            return argument.value;
        }
    }
    return "";
}

std::string placeOf(const Finding& finding) {
    const std::string place = placeText(finding.where);
    const std::string content = contentOf(finding);
    return content.empty() ? place : place + ": " + content;
}

bool isLoss(const Finding& finding) {
    return ruleOf(finding.rule).group == RuleGroup::conversion &&
           finding.severity == Severity::warning;
}

// What was only counted belongs to the last group of its rule that is known.
void addUnkept(const Findings& findings, const std::unordered_map<std::uint16_t, std::size_t>& last,
               std::vector<ConversionLoss>& list) {
    for (const auto& [rule, index] : last) {
        const std::uint64_t all = findings.count(RuleId{rule});
        list[index].count += all > kMostOfARule ? all - kMostOfARule : 0;
    }
}

std::vector<ConversionLoss> lossesIn(const Findings& findings) {
    std::vector<ConversionLoss> list;
    std::unordered_map<std::string, std::size_t> byText;
    std::unordered_map<std::uint16_t, std::size_t> last;
    for (const Finding& finding : findings.kept()) {
        if (!isLoss(finding)) {
            continue;
        }
        const auto [place, isNew] = byText.try_emplace(whatGoes(finding), list.size());
        if (isNew) {
            list.push_back({place->first, 0, {}});
        }
        ConversionLoss& loss = list[place->second];
        ++loss.count;
        if (loss.places.size() < kMostPlaces) {
            loss.places.push_back(placeOf(finding));
        }
        last[finding.rule.index] = place->second;
    }
    addUnkept(findings, last, list);
    std::stable_sort(list.begin(), list.end(),
                     [](const ConversionLoss& left, const ConversionLoss& right) {
                         return left.count > right.count;
                     });
    return list;
}

std::uint64_t formsIn(const Findings& findings) {
    std::uint64_t forms = 0;
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        if (ruleOf(rule).group == RuleGroup::conversion &&
            ruleOf(rule).severity == Severity::info) {
            forms += findings.count(rule);
        }
    }
    return forms;
}

std::string notFCPXML(const Report& report) {
    return report.kind == "xmeml"
               ? "It is XMEML: its root element is <xmeml>. “Convert XML Interchange Version” "
                 "converts it."
               : "Its root element is not <fcpxml>.";
}

}  // namespace

std::string ConversionPreview::result() const {
    if (!refusal.empty()) {
        return refusal;
    }
    std::string sentence = losses == 0
                               ? "Nothing is lost."
                               : formatString("%@, which version %@ does not have.",
                                              counted(losses, "thing goes", "things go"), version);
    if (forms != 0) {
        sentence += " " + counted(forms, "thing takes", "things take") + " another form.";
    }
    return sentence;
}

ConvertibleBytes::ConvertibleBytes(std::string bytes)
    : bytes_(std::move(bytes)), digest_(platform::ContentDigest::of(bytes_)) {}

std::shared_ptr<const ConvertibleBytes> ConvertibleBytes::read(const std::string& path,
                                                               ErrorSlot& error) {
    std::optional<std::string> bytes = platform::readFile(path, error);
    return bytes ? std::shared_ptr<const ConvertibleBytes>(new ConvertibleBytes(std::move(*bytes)))
                 : nullptr;
}

ConversionPreview ConvertibleBytes::previewOf(const std::string& version) const {
    ProjectConversion conversion = ProjectConversion::of(
        bytes_, {.to = version, .assumed = {}, .strips = true, .mostOfARule = kMostOfARule});
    return {.version = version,
            .refusal = conversion.refusal,
            .losses = conversion.losses,
            .forms = formsIn(conversion.report.findings),
            .list = lossesIn(conversion.report.findings),
            .digest = digest_};
}

ConversionPreview ConvertibleBytes::previewOf(const ConversionOffer& offer,
                                              const std::string& version) const {
    if (losesInformation(integerValue(offer.version), integerValue(version),
                         offer.lowestVersion())) {
        return previewOf(version);
    }
    ConversionPreview preview;
    preview.version = version;
    preview.digest = digest_;
    return preview;
}

FCPXMLVersions fcpxmlVersionsOf(const std::string& path) {
    FCPXMLVersions versions;
    ErrorSlot error;
    versions.file = ConvertibleBytes::read(path, error);
    if (!versions.file) {
        versions.refusal = error->localizedDescription();
        return versions;
    }
    const ProjectConversion conversion = ProjectConversion::of(versions.file->bytes(), {});
    if (conversion.kind != FileKind::fcpxml) {
        versions.refusal = notFCPXML(conversion.report);
        return versions;
    }
    versions.refusal = conversion.refusal;
    if (const auto& record = conversion.report.conversion) {
        versions.current = record->from;
        versions.lowest = record->lowest.value_or("");
    }
    for (int minor = fcpxml::Version::kNewestMinor; minor >= 0; --minor) {
        const std::string target = fcpxml::Version(minor).text();
        if (isFCPXMLTarget(target)) {
            versions.targets.push_back(target);
        }
    }
    return versions;
}

std::string withRelease(const std::string& version) {
    const auto parsed = fcpxml::Version::parse(version);
    const std::string_view release = parsed ? fcpxml::releaseOf(*parsed) : std::string_view();
    return release.empty() ? version : formatString("%@ (Final Cut Pro %@+)", version, release);
}

std::vector<VersionOfKind> versionsOf(FileKind kind) {
    std::vector<VersionOfKind> versions;
    if (kind == FileKind::fcpxml) {
        for (int minor = fcpxml::Version::kNewestMinor; minor >= 0; --minor) {
            const std::string version = fcpxml::Version(minor).text();
            versions.push_back({version, withRelease(version)});
        }
    } else if (kind == FileKind::xmeml) {
        const std::optional<VersionCatalogue> catalogue = VersionCatalogue::load();
        for (int number = xmeml::kNewestVersion; number >= 1; --number) {
            const std::string version = std::to_string(number);
            const auto release = catalogue ? catalogue->fcpVersion(version) : std::nullopt;
            versions.push_back(
                {version,
                 release ? formatString("%@ (Final Cut Pro %@+)", version, *release) : version});
        }
    }
    return versions;
}

ConvertedVersion convertFCPXML(const std::string& path, const VersionRequest& request,
                               const std::string& program, const std::string& version) {
    ConvertFileRequest wanted;
    wanted.conversion.to = request.version;
    wanted.conversion.mostOfARule = 0;
    wanted.conversion.usesThreads = std::thread::hardware_concurrency() > 1;
    wanted.isInPlace = request.isInPlace;
    wanted.expected = request.digest;
    wanted.stop = request.stop;
    const Waiting waiting = loggedWaiting(request.stop);
    JournaledSwap journaled(program, version, JournalEntry::Action::convert);
    ConvertedFile file = convertFile(path, wanted, waiting, journaled);
    ConvertedVersion converted;
    converted.notes = std::move(file.notes);
    converted.failure = std::move(file.refusal);
    converted.isDone = file.report.conversion && !file.report.conversion->result.empty();
    converted.isStopped = !converted.isDone && request.stop.stopRequested();
    if (converted.isDone) {
        converted.replaced = request.isInPlace ? file.original : file.report.conversion->result;
        converted.isUndoable = request.isInPlace && journaled.isWrittenDown();
        QMLog::appendLog("The file %@ was converted to version %@.", path, request.version);
    } else if (!converted.failure.empty()) {
        QMLog::appendLog("%@", converted.failure);
    }
    return converted;
}

}  // namespace vornic
