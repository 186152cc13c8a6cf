#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/FormatString.h"
#include "convert/fcpxml/AttributeChanges.h"
#include "report/RuleTable.h"
#include "tests/convert/fcpxml/VersionDifferences.h"
#include "tests/support/machine/Sandbox.h"

// docs/fcpxml-versions.md is made from the catalogue, so that no difference between two versions is
// forgotten in it.
namespace vornic::test {

namespace {

using fcpxml::AttributeChange;
using fcpxml::Catalogue;
using fcpxml::Definition;
using fcpxml::ElementId;
using fcpxml::Version;
using std::string;
using Kind = VersionDifference::Kind;

string code(std::string_view text) {
    return "`" + string(text) + "`";
}

string attributeOf(const VersionDifference& difference) {
    return code(difference.element + "@" + difference.attribute);
}

// What a list says of a difference.
string entryOf(const VersionDifference& difference) {
    switch (difference.kind) {
        case Kind::elementGoes:
        case Kind::placeGoes:
        case Kind::orderChanges:
        case Kind::becomesEmpty:
        case Kind::elementComes:
            return code(difference.element);
        case Kind::becomesSingle:
            return code(difference.element) + " in " + code(difference.parent);
        case Kind::valueGoes:
            return attributeOf(difference) + " " +
                   (difference.value.empty() ? "(all but those of a list)"
                                             : code(difference.value));
        case Kind::defaultGoes:
        case Kind::defaultComes:
            return attributeOf(difference) + " " + code(difference.value);
        default:
            return attributeOf(difference);
    }
}

string headingOf(const VersionDifference& difference) {
    switch (difference.kind) {
        case Kind::elementGoes:
            return "Elements that go";
        case Kind::placeGoes:
            return "In " + code(difference.parent) + " no more";
        case Kind::attributeGoes:
            return "Attributes that go";
        case Kind::valueGoes:
            return "Values that go";
        case Kind::defaultGoes:
            return "Values that hold where none is written, and are written out";
        case Kind::defaultComes:
            return "Values that hold where none is written, as they did not before";
        case Kind::becomesRequired:
            return "Attributes that are asked for";
        case Kind::orderChanges:
            return "Parts that change places";
        case Kind::becomesEmpty:
            return "Elements that become empty";
        case Kind::becomesSingle:
            return "Elements that may stand once and no more";
        case Kind::elementComes:
            return "New elements";
        case Kind::attributeComes:
            return "New attributes";
    }
    return "";
}

// Values of one attribute share an entry.
bool continuesEntry(const VersionDifference& before, const VersionDifference& next) {
    return before.kind == Kind::valueGoes && next.kind == Kind::valueGoes &&
           before.element == next.element && before.attribute == next.attribute;
}

// What a conversion from a version to a neighbour of it has to do.
string stepInMarkdown(Version from, Version to) {
    const std::vector<VersionDifference> differences = versionDifferences(from, to);
    string text = formatString("### %@ to %@\n\n", from.text(), to.text());
    const VersionDifference* before = nullptr;
    for (const VersionDifference& difference : differences) {
        if (before == nullptr || headingOf(*before) != headingOf(difference)) {
            text += before == nullptr ? "" : "\n";
            text += "- " + headingOf(difference) + ": " + entryOf(difference);
        } else if (continuesEntry(*before, difference)) {
            text += " " + code(difference.value);
        } else {
            text += ", " + entryOf(difference);
        }
        before = &difference;
    }
    return text + "\n\n";
}

bool changesOrder(Version from, Version to) {
    const std::vector<VersionDifference> differences = versionDifferences(from, to);
    return std::any_of(differences.begin(), differences.end(), [](const auto& difference) {
        return difference.kind == Kind::orderChanges;
    });
}

constexpr std::string_view kHead =
    R"(# Versions of FCPXML, and what each step loses

Made from the catalogue of versions (`resources/fcpxml_versions.txt`) by `scripts/refresh-versions`. The
lists name all that is not the same in neighbouring versions; `vornic-convert` does what that asks for, and
tells each case where something is in the file. About what is new nothing is to be done. A conversion over
several versions goes there at once: what the target has no place for goes, the rest stays byte for byte.

## How

- An element that has no place in the target goes, with all that is in it. What goes out of a storyline
  leaves a gap of its offset and duration, with what is connected to it.
- An attribute that the target does not have goes. With the value that holds without it, that is no
  loss and is not told. A value that the target does not have goes where the attribute may be left out,
  else the element goes.
- Where `enabled="0"` cannot be said, the element goes, since it would take effect otherwise.
- A smart collection that would lose a rule goes as a whole: it would show something else.
- What refers to something that goes, goes too: the attribute where it may be left out, else the
  element.
- An element that has lost what it must hold goes, such as an audition without a clip.
- To 1.8 and below the path of an asset is that of its first `media-rep` of the original media, else of
  its first one; from 1.9 on `src` and `bookmark` become a `media-rep`.
- To 1.6 and above `audio-source` and `audio-aux-source` become `audio-channel-source` in a clip and
  `audio-role-source` in a compound clip and in the source of a multicam clip. To 1.4 the resources
  stand in the root, and the project in an event of a library. To 1.3 `filter` becomes `filter-video`
  or `filter-audio`: by what is around it, in a clip by its effect where that is known for one of the
  picture, else it goes; the effect of a transition becomes that of its `filter-video`.
- What is no part of the file's own version is a fault of the file: it is told and stays.
- A value that the target asks for and the file does not have is never invented. Files from 1.6 on lack
  none; an older one is refused, with the place.

)";

// What was seen when the tests ran with many documents; a usual run makes 60 of each version.
constexpr std::string_view kProof = R"(
## What holds this

Tests make documents of the catalogue, so that every element, attribute and value of a version occurs, convert
them to every version from 1.6 on, and judge the results by the validator and by xmllint with definitions
written from the catalogue. From 1.6 on they are converted back, too, and what they say then is compared with
what they said before, but for what was told. With 2,000 documents of each version
(`VORNIC_GENERATED_DOCUMENTS=2000`), on 2026-11-22:

| from | conversions | valid results | refused | there and back |
|---|---|---|---|---|
| 1.6 to 1.14, each | 18,000 | 18,000 | 0 | 18,000 |
| 1.5 | 18,000 | 16,542 | 1,458 | |
| 1.4 | 18,000 | 15,849 | 2,151 | |
| 1.3 | 18,000 | 15,939 | 2,061 | |
| 1.2 | 18,000 | 7,758 | 10,242 | |
| 1.1 | 18,000 | 11,475 | 6,525 | |
| 1.0 | 18,000 | 7,785 | 10,215 | |

What was refused lacks a value that a later version asks for, in the tag that the refusal names:
`src` of `asset` (1.3) or `role` of `audio-source` and `audio-aux-source` (1.6).
From 1.7 on, up, nothing was lost but the value `alignment-360`. The 63 real files that are there for tests became
567 valid files, and said the same there and back.
)";

string steps() {
    string down;
    string up;
    for (int minor = Version::kNewestMinor; minor > 6; --minor) {
        down += stepInMarkdown(Version(minor), Version(minor - 1));
    }
    for (int minor = 0; minor < Version::kNewestMinor; ++minor) {
        up += stepInMarkdown(Version(minor), Version(minor + 1));
    }
    return "## Down\n\n" + down + "## Up\n\n" + up;
}

string rules() {
    string text =
        "## What is told\n\nA warning is a loss; an info is the same content in another form.\n\n";
    for (const Rule& rule : kRuleTable) {
        if (rule.group == RuleGroup::conversion) {
            text += formatString("- `%@` (%@): %@ %@\n", rule.id, nameOf(rule.severity),
                                 rule.meaning, rule.effect == "None." ? "" : rule.effect);
            text.erase(text.find_last_not_of(" \n") + 1);
            text += "\n";
        }
    }
    return text;
}

}  // namespace

TEST(VersionTables, thatAreCheckedInAreMadeFromTheCatalogue) {
    const string page = string(kHead) + steps() + rules() + string(kProof);
    if (const char* const path = std::getenv("VORNIC_REFRESH_VERSIONS")) {
        std::ofstream(path) << page;
        return;
    }
    EXPECT_EQ(readBytes(VORNIC_SOURCE "/docs/fcpxml-versions.md"), page)
        << "scripts/refresh-versions writes it anew";
}

// What is asked of an element from 1.6 on is dropped with it, or has a place to come from.
TEST(VersionTables, nothingButTheKnownIsAskedForFromOneSixOn) {
    std::set<string> required;
    for (int from = 6; from <= Version::kNewestMinor; ++from) {
        for (int to = 6; to <= Version::kNewestMinor; ++to) {
            for (std::size_t id = 0; id < Catalogue::shared().size(); ++id) {
                const auto* const old =
                    Definition::of(Version(from)).element(static_cast<ElementId>(id));
                const auto* const now =
                    Definition::of(Version(to)).element(static_cast<ElementId>(id));
                if (old == nullptr || now == nullptr) {
                    continue;
                }
                for (const AttributeChange& change : fcpxml::attributeChanges(*old, *now)) {
                    if (change.becomesRequired) {
                        required.insert(string(old->name) + "@" + string(change.name));
                    }
                }
            }
        }
    }
    EXPECT_EQ(required, (std::set<string>{"asset@src", "match-property@value"}));
}

// Only steps below that move parts are gone one by one.
TEST(VersionTables, noPartChangesPlacesFromOneSixOn) {
    for (int from = 6; from <= Version::kNewestMinor; ++from) {
        for (int to = 6; to <= Version::kNewestMinor; ++to) {
            EXPECT_FALSE(changesOrder(Version(from), Version(to))) << from << " to " << to;
        }
    }
    EXPECT_TRUE(changesOrder(Version(2), Version(3)));
}

}  // namespace vornic::test
