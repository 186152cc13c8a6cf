#include "app/cli/CheckSettings.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <thread>
#include <utility>

#include "app/cli/RuleSelection.h"
#include "base/FormatString.h"
#include "formats/fcpxml/Version.h"

namespace vornic {

namespace {

constexpr std::pair<std::string_view, ReportFormat> kFormats[] = {{"text", ReportFormat::text},
                                                                  {"json", ReportFormat::json},
                                                                  {"sarif", ReportFormat::sarif},
                                                                  {"gnu", ReportFormat::gnu}};

std::optional<std::size_t> positive(const std::string& text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && number != 0;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<Severity> severityNamed(std::string_view name) {
    for (const Severity severity : {Severity::error, Severity::warning, Severity::info}) {
        if (nameOf(severity) == name) {
            return severity;
        }
    }
    return std::nullopt;
}

bool isXMEMLVersion(std::string_view text) {
    return text.size() == 1 && text >= "1" && text <= "5";
}

class SettingsReader {
  public:
    SettingsReader(const CommandLine& line, CheckSettings& settings)
        : line_(line), settings_(settings) {}

    std::string read() {
        settings_.jobs = std::max(1U, std::thread::hardware_concurrency());
        settings_.reportPath = line_.value("--report");
        readFormat();
        readNumber("-j", settings_.jobs);
        readNumber("--max", settings_.check.mostOfARule);
        readLeast();
        readFailOn();
        readReceiver();
        readRules();
        readFix();
        readMedia();
        readTimeline();
        return fault_;
    }

  private:
    void readFormat() {
        const std::string name = line_.value("--format").value_or("text");
        const auto* const format =
            std::find_if(std::begin(kFormats), std::end(kFormats),
                         [&](const auto& known) { return known.first == name; });
        if (format == std::end(kFormats)) {
            fault_ = "there is no format " + name;
        } else {
            settings_.format = line_.has("--quiet") ? ReportFormat::none : format->second;
        }
    }

    void readNumber(std::string_view option, std::size_t& number) {
        const std::optional<std::string> value = line_.value(option);
        if (!value) {
            return;
        }
        const std::optional<std::size_t> read = positive(*value);
        if (!read) {
            fault_ = formatString("%@ wants a number above 0, not %@", option, *value);
        }
        number = read.value_or(number);
    }

    void readLeast() {
        const std::string name = line_.value("--least").value_or("warning");
        const std::optional<Severity> least = severityNamed(name);
        if (!least) {
            fault_ = "--least wants error, warning or info, not " + name;
        }
        settings_.least = least.value_or(settings_.least);
    }

    void readFailOn() {
        const std::string name = line_.value("--fail-on").value_or("error");
        settings_.failOn = severityNamed(name);
        if (!settings_.failOn && name != "never") {
            fault_ = "--fail-on wants error, warning, info or never, not " + name;
        }
    }

    void readReceiver() {
        settings_.check.reads = line_.value("--reads");
        fault_ = faultOfVersion("--reads", settings_.check.reads.value_or("5"));
    }

    // What was wrong before, or is with this.
    [[nodiscard]] std::string faultOfVersion(std::string_view option,
                                             const std::string& version) const {
        if (!fault_.empty() || isXMEMLVersion(version) || fcpxml::Version::parse(version)) {
            return fault_;
        }
        return formatString(
            "%@ wants a version of FCPXML (1.0 to 1.14) or of XMEML (1 to 5), not %@", option,
            version);
    }

    void readRules() {
        RuleSelection selection;
        for (const std::string& list : line_.values("--only")) {
            fault_ = fault_.empty() ? selection.addOnly(list) : fault_;
        }
        for (const std::string& list : line_.values("--ignore")) {
            fault_ = fault_.empty() ? selection.addIgnored(list) : fault_;
        }
        settings_.check.ignored = selection.ignored();
    }

    void readFix() {
        const std::vector<std::string> lists = line_.values("--fix");
        const bool isDryRun = line_.has("--dry-run");
        const std::optional<std::string> output = line_.value("-o");
        settings_.check.missingVersion = line_.value("--set-version");
        if (lists.empty()) {
            const bool isMeant = isDryRun || output || settings_.check.missingVersion;
            fault_ = isMeant ? "--dry-run, --set-version and -o go with --fix" : fault_;
            return;
        }
        settings_.fix.emplace();
        settings_.fix->isDryRun = isDryRun;
        settings_.fix->output = output;
        RuleSelection asked;
        for (const std::string& list : lists) {
            readAsked(list, asked);
        }
        for (const Rule* const rule : asked.only()) {
            settings_.fix->asked.push_back(*findRule(rule->id));
        }
        readMissingVersion();
        // One after the other: what two names of one file lead to is mended once.
        settings_.jobs = 1;
    }

    // What is mended is another file than the one that is drawn.
    void readTimeline() {
        settings_.timelinePath = line_.value("--timeline");
        if (!settings_.timelinePath || !fault_.empty()) {
            return;
        }
        const bool isReportElsewhere =
            settings_.format == ReportFormat::none || settings_.reportPath.value_or("-") != "-";
        if (settings_.fix) {
            fault_ = "--timeline and --fix do not go together";
        } else if (*settings_.timelinePath == "-" && !isReportElsewhere) {
            fault_ = "--timeline - wants the report elsewhere: --report FILE or --quiet";
        }
    }

    // Who names the version has been asked.
    void readMissingVersion() {
        if (settings_.check.missingVersion) {
            fault_ = faultOfVersion("--set-version", *settings_.check.missingVersion);
            settings_.fix->asked.push_back("versions-not-declared"_rule);
        }
    }

    void readMedia() {
        settings_.looksForMedia = line_.has("--media");
        if (settings_.looksForMedia && settings_.fix) {
            fault_ = "--media does not go with --fix, which mends no media";
        }
    }

    // Ids and groups, and the two mends that concern the whole file.
    void readAsked(std::string_view list, RuleSelection& asked) {
        while (!list.empty() && fault_.empty()) {
            const std::string_view name = list.substr(0, list.find(','));
            list.remove_prefix(std::min(name.size() + 1, list.size()));
            if (name == "encoding" || name == "values-encoding") {
                settings_.fix->toUTF8 = true;
            } else if (name == "extension" || name == "values-extension") {
                settings_.fix->renames = true;
            } else {
                fault_ = asked.addOnly(name);
            }
        }
    }

    const CommandLine& line_;
    CheckSettings& settings_;
    std::string fault_;
};

}  // namespace

std::string readCheckSettings(const CommandLine& line, CheckSettings& settings) {
    return SettingsReader(line, settings).read();
}

}  // namespace vornic
