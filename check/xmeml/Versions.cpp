#include <algorithm>
#include <string>
#include <vector>

#include "check/VersionMend.h"
#include "check/xmeml/Rules.h"
#include "formats/xmeml/Version.h"

namespace vornic::xmeml {

namespace {

using std::string;

// "5.0" for "5", which readers that compare texts do not know.
std::optional<int> versionWithFraction(std::string_view text) {
    const std::size_t dot = text.find('.');
    const bool isWhole = dot != std::string_view::npos && dot + 1 < text.size() &&
                         text.find_first_not_of('0', dot + 1) == std::string_view::npos;
    return isWhole ? parseVersion(text.substr(0, dot)) : std::nullopt;
}

class VersionCheck {
  public:
    VersionCheck(const View& view, std::optional<int> reads, const std::optional<string>& missing,
                 Findings& findings)
        : index_(view.index()), reads_(reads), missing_(missing), findings_(findings) {}

    void run() {
        readDeclared();
        readIntroduced();
        const int least =
            std::min(declared_.value_or(kNewestVersion), reads_.value_or(kNewestVersion));
        if (*std::max_element(introduced_.begin(), introduced_.end()) <= least) {
            return;
        }
        for (ElementNumber element = 0; element < index_.size();) {
            const int since = introduced_[index_.nameNumberOf(element)];
            if (since > least) {
                addNewer(element, since);
            }
            // What stands in an element that is not known is not read, either.
            element = since > least ? index_.endOf(element) : element + 1;
        }
    }

  private:
    void readDeclared() {
        const std::optional<TextSpan> value = index_.attributeOf(0, "version");
        const std::string_view text = value ? value->of(index_.text()) : std::string_view();
        if (text.empty()) {
            // Programs that need none take the newest.
            if (Finding* const finding = findings_.add(
                    "versions-not-declared"_rule, Severity::warning, index_.startTagOf(0),
                    {{"format", "XMEML"}, {"root", "xmeml"}, {"example", "5"}})) {
                finding->mend = versionMend(index_, missing_);
            }
            return;
        }
        declared_ = parseVersion(text);
        if (!declared_) {
            declared_ = versionWithFraction(text);
            addUnknown(*value, text);
        }
        if (declared_ && reads_ && *declared_ > *reads_) {
            findings_.add("versions-newer-than-receiver"_rule, *value,
                          {{"version", *declared_}, {"reads", *reads_}});
        }
    }

    void addUnknown(TextSpan place, std::string_view text) {
        if (!declared_) {
            findings_.add("structure-unknown-version"_rule, place, {{"version", text}});
            return;
        }
        const string whole = std::to_string(*declared_);
        if (Finding* const finding = findings_.add("structure-version-form"_rule, place,
                                                   {{"version", text}, {"whole", whole}})) {
            finding->mend = Mend{Confidence::safe,
                                 "write version=\"" + whole + "\"",
                                 {{place.offset, place.length, whole}}};
        }
    }

    void readIntroduced() {
        introduced_.assign(index_.nameCount() + 1, 1);
        for (std::size_t number = 0; number < index_.nameCount(); ++number) {
            introduced_[number] = versionOfElement(index_.nameNumbered(number));
        }
    }

    void addNewer(ElementNumber element, int since) {
        const bool isForReceiver = reads_ && since > *reads_;
        const RuleId rule =
            isForReceiver ? "versions-newer-element"_rule : "structure-newer-element"_rule;
        if (Finding* const finding = findings_.add(rule, index_.startTagOf(element))) {
            finding->arguments = {{"element", string(index_.nameOf(element))},
                                  {"since", std::to_string(since)},
                                  {"version", std::to_string(declared_.value_or(0))},
                                  {"reads", std::to_string(reads_.value_or(0))}};
        }
    }

    const ElementIndex& index_;
    std::optional<int> reads_;
    const std::optional<string>& missing_;
    Findings& findings_;
    std::optional<int> declared_;
    // By the number of the name.
    std::vector<int> introduced_;
};

}  // namespace

void checkVersions(const View& view, std::optional<int> reads,
                   const std::optional<std::string>& missing, Findings& findings) {
    VersionCheck(view, reads, missing, findings).run();
}

}  // namespace vornic::xmeml
