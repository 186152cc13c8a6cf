#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formats/StartTag.h"
#include "report/RuleTable.h"
#include "tests/convert/fcpxml/ConvertedText.h"
#include "tests/convert/fcpxml/VersionDifferences.h"
#include "tests/formats/fcpxml/DocumentGenerator.h"

// Every line of docs/fcpxml-versions.md that asks for something is something that a conversion
// does, and tells.
namespace vornic::test {

namespace {

using fcpxml::Version;
using std::string;
using Kind = VersionDifference::Kind;

constexpr std::size_t kMostDocuments = 600;

string argument(const Finding& finding, std::string_view name) {
    for (const Argument& candidate : finding.arguments) {
        if (candidate.name == name) {
            return candidate.value;
        }
    }
    return "";
}

bool isAbout(const Finding& finding, const VersionDifference& difference) {
    return argument(finding, "element") == difference.element &&
           argument(finding, "attribute") == difference.attribute;
}

bool isLoss(const Finding& finding) {
    return ruleOf(finding.rule).severity == Severity::warning;
}

// Whether a condition holds for the value of an attribute at some element of a text; a null value
// stands for an attribute that is not there.
template <class Condition>
bool isAnyElement(const string& text, const string& element, const string& attribute,
                  Condition condition) {
    const string start = "<" + element;
    for (std::size_t at = text.find(start); at != string::npos; at = text.find(start, at + 1)) {
        StartTag tag(text, at);
        const string* found = nullptr;
        string value;
        while (tag.next()) {
            if (tag.name() == attribute) {
                value = tag.value().of(text);
                found = &value;
            }
        }
        if (tag.elementName() == element && condition(found)) {
            return true;
        }
    }
    return false;
}

bool hasLost(const Finding& finding, const VersionDifference& difference) {
    const bool isOfElement = difference.attribute.empty();
    return isAnyElement(
        finding.lost, difference.element, difference.attribute, [&](const string* value) {
            return isOfElement ||
                   (value != nullptr && (difference.value.empty() || *value == difference.value));
        });
}

bool tellsPlace(const Finding& finding, const VersionDifference& difference) {
    const bool isMoved =
        (finding.rule == "conversion-root"_rule &&
         (difference.element == "resources" || difference.element == "project")) ||
        (finding.rule == "conversion-source-to-media-rep"_rule && difference.element == "bookmark");
    return isMoved || (argument(finding, "element") == difference.element &&
                       argument(finding, "parent") == difference.parent &&
                       (isLoss(finding) || finding.rule == "conversion-renamed"_rule));
}

bool tellsAttribute(const Finding& finding, const VersionDifference& difference) {
    const bool hasNewPlace = finding.rule == "conversion-source-to-media-rep"_rule ||
                             finding.rule == "conversion-transition-effect"_rule;
    return (isAbout(finding, difference) && (isLoss(finding) || hasNewPlace)) ||
           hasLost(finding, difference);
}

bool tellsValue(const Finding& finding, const VersionDifference& difference) {
    return (finding.rule == "conversion-value-lost"_rule && isAbout(finding, difference) &&
            (difference.value.empty() || finding.lost == difference.value)) ||
           hasLost(finding, difference);
}

bool tellsDefault(const Finding& finding, const VersionDifference& difference, RuleId rule) {
    return finding.rule == rule && isAbout(finding, difference) &&
           argument(finding, "instead") == difference.value;
}

bool tellsRequirement(const Finding& finding, const VersionDifference& difference) {
    return (finding.rule == "conversion-media-rep-to-source"_rule &&
            isAbout(finding, difference)) ||
           (finding.rule == "conversion-collection"_rule &&
            isAnyElement(finding.lost, difference.element, difference.attribute,
                         [](const string* value) { return value == nullptr; }));
}

bool tells(const Finding& finding, const VersionDifference& difference) {
    switch (difference.kind) {
        case Kind::elementGoes:
            return hasLost(finding, difference) ||
                   (finding.rule == "conversion-renamed"_rule && isAbout(finding, difference));
        case Kind::placeGoes:
            return tellsPlace(finding, difference);
        case Kind::attributeGoes:
            return tellsAttribute(finding, difference);
        case Kind::valueGoes:
            return tellsValue(finding, difference);
        case Kind::defaultGoes:
            return tellsDefault(finding, difference, "conversion-default-written"_rule);
        case Kind::defaultComes:
            return tellsDefault(finding, difference, "conversion-default-gained"_rule);
        case Kind::becomesRequired:
            return tellsRequirement(finding, difference);
        case Kind::orderChanges:
            return finding.rule == "conversion-moved"_rule &&
                   argument(finding, "parent") == difference.element;
        case Kind::becomesEmpty:
            return isLoss(finding) && argument(finding, "parent") == difference.element;
        case Kind::becomesSingle:
            return isLoss(finding) && argument(finding, "element") == difference.element &&
                   argument(finding, "parent") == difference.parent;
        case Kind::elementComes:
        case Kind::attributeComes:
            break;
    }
    return false;
}

// What stood in a project without a sequence, which becomes an event.
bool standsInEvent(const string& element, const string& text) {
    const std::size_t event = text.find("<event");
    return event != string::npos && isAnyElement(text.substr(event), element, "",
                                                 [](const string* /*value*/) { return true; });
}

bool asksForSomething(const VersionDifference& difference) {
    // That what is not switched off is on goes without saying.
    const bool isUnderstood =
        difference.kind == Kind::defaultComes && difference.attribute == "enabled";
    return !isUnderstood && difference.kind != Kind::elementComes &&
           difference.kind != Kind::attributeComes;
}

string textOf(const VersionDifference& difference) {
    return std::to_string(static_cast<int>(difference.kind)) + " " + difference.parent + " <" +
           difference.element + "> " + difference.attribute + "=" + difference.value;
}

// What a step has to do, until a conversion of some document has done it.
class OpenDifferences {
  public:
    OpenDifferences(Version from, Version to) : to_(to), open_(versionDifferences(from, to)) {
        std::erase_if(open_, [](const auto& difference) { return !asksForSomething(difference); });
    }

    [[nodiscard]] bool areSettled() const { return open_.empty(); }

    void settle(const ConvertedText& result) {
        for (const Finding& finding : result.findings.kept()) {
            if (argument(finding, "target") == to_.text()) {
                std::erase_if(open_,
                              [&](const auto& difference) { return tells(finding, difference); });
            }
        }
        std::erase_if(open_, [&](const auto& difference) {
            return difference.kind == Kind::placeGoes && difference.parent == "project" &&
                   standsInEvent(difference.element, result.text);
        });
        std::erase_if(open_, [&](const auto& difference) {
            return difference.kind == Kind::becomesRequired &&
                   result.conversion.refusal == "<" + difference.element + "> has no " +
                                                    difference.attribute + ", which FCPXML " +
                                                    to_.text() + " asks for";
        });
    }

    [[nodiscard]] string text() const {
        string lines;
        for (const VersionDifference& difference : open_) {
            lines += textOf(difference) + "\n";
        }
        return lines;
    }

  private:
    Version to_;
    std::vector<VersionDifference> open_;
};

void expectThatAllIsDone(Version from, Version to) {
    OpenDifferences differences(from, to);
    DocumentGenerator generator(from, 11);
    for (std::size_t count = 0; count < kMostDocuments && !differences.areSettled(); ++count) {
        differences.settle(
            convertedText(generator.next(), from, std::max(to, fcpxml::kOldestTarget)));
    }
    EXPECT_EQ(differences.text(), "") << from.text() << " to " << to.text();
}

}  // namespace

class VersionDifferencesUp : public ::testing::TestWithParam<int> {};

TEST_P(VersionDifferencesUp, areAllDealtWithAndReported) {
    expectThatAllIsDone(Version(GetParam()), Version(GetParam() + 1));
}

INSTANTIATE_TEST_SUITE_P(Versions, VersionDifferencesUp,
                         ::testing::Range(0, int{Version::kNewestMinor}));

class VersionDifferencesDown : public ::testing::TestWithParam<int> {};

TEST_P(VersionDifferencesDown, areAllDealtWithAndReported) {
    expectThatAllIsDone(Version(GetParam()), Version(GetParam() - 1));
}

INSTANTIATE_TEST_SUITE_P(Versions, VersionDifferencesDown,
                         ::testing::Range(7, Version::kNewestMinor + 1));

}  // namespace vornic::test
