#include <string>

#include "check/URLMend.h"
#include "check/xmeml/Rules.h"
#include "formats/FileURL.h"
#include "xml/text/TextPlace.h"

namespace vornic::xmeml {

namespace {

using std::string;

std::optional<RuleId> ruleFor(FileURLFault fault) {
    switch (fault) {
        case FileURLFault::windowsPath:
            return "values-pathurl-windows-path"_rule;
        case FileURLFault::notAbsolute:
            return "values-pathurl-not-absolute"_rule;
        case FileURLFault::notEncoded:
            return "values-pathurl-not-encoded"_rule;
        case FileURLFault::otherHost:
            return "values-pathurl-other-host"_rule;
        default:
            return std::nullopt;
    }
}

// The path as it should be; "" where that is not plain.
string mended(FileURLFault fault, std::string_view url) {
    switch (fault) {
        case FileURLFault::windowsPath:
            return fileURLOfWindowsPath(url);
        case FileURLFault::notAbsolute:
            return fileURLOfPath(url);
        case FileURLFault::notEncoded:
            return encodedURL(url);
        default:
            return "";
    }
}

}  // namespace

void checkPathURLs(const View& view, Findings& findings) {
    string storage;
    for (const ElementNumber element : view.index().elementsNamed("pathurl")) {
        const std::string_view url = view.textOf(element, storage);
        if (url.empty() || !view.index().isClosed(element)) {
            continue;
        }
        const FileURLFault fault = faultOfFileURL(url);
        const std::optional<RuleId> rule = ruleFor(fault);
        const TextSpan place = view.placeOf(element);
        Finding* const finding = rule ? findings.add(*rule, place) : nullptr;
        if (finding == nullptr) {
            continue;
        }
        const string right = mended(fault, url);
        finding->arguments = {{"thing", view.describe(view.index().parentOf(element))},
                              {"url", excerpt(url)},
                              {"right", right.empty() ? "file://localhost/..." : right}};
        if (!right.empty()) {
            finding->mend = Mend{Confidence::safe,
                                 "write the path as a URL",
                                 {urlEdit(view.index().text(), place, right)}};
        }
    }
}

}  // namespace vornic::xmeml
