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
#include "tests/support/machine/Sandbox.h"

// docs/fcpxml-versions.md is made from the catalogue, so that no difference between two versions is
// forgotten in it.
namespace vornic::test {

namespace {

using fcpxml::AttributeChange;
using fcpxml::Catalogue;
using fcpxml::ContentModel;
using fcpxml::Definition;
using fcpxml::ElementDefinition;
using fcpxml::ElementId;
using fcpxml::Version;
using std::string;

string code(std::string_view text) {
    return "`" + string(text) + "`";
}

string joined(const std::vector<string>& parts) {
    string text;
    for (const string& part : parts) {
        text += (text.empty() ? "" : ", ") + part;
    }
    return text;
}

bool mayFollow(const ContentModel& model, ElementId first, ElementId second) {
    return model.mentions(first) && model.mentions(second) &&
           model.reach(model.reach(ContentModel::kStart, first), second) != ContentModel::kRefused;
}

// What a conversion from a version to a neighbour of it has to do.
class Step {
  public:
    Step(Version from, Version to) : from_(Definition::of(from)), to_(Definition::of(to)) {
        for (std::size_t id = 0; id < Catalogue::shared().size(); ++id) {
            compare(static_cast<ElementId>(id));
        }
    }

    [[nodiscard]] string markdown() const {
        string text =
            formatString("### %@ to %@\n\n", from_.version().text(), to_.version().text());
        const std::size_t before = text.size();
        addLine(text, "Elements that go", elements_);
        for (const auto& [parent, children] : places_) {
            addLine(text, "In " + code(parent) + " no more", children);
        }
        addLine(text, "Attributes that go", attributes_);
        addLine(text, "Values that go", values_);
        addLine(text, "Values that hold where none is written, and are written out", written_);
        addLine(text, "Values that hold where none is written, as they did not before", gained_);
        addLine(text, "Attributes that are asked for", required_);
        addLine(text, "Parts that change places", order_);
        addLine(text, "Elements that become empty", emptied_);
        addLine(text, "Elements that may stand once and no more", single_);
        return text.size() == before ? "" : text + "\n";
    }

    [[nodiscard]] bool changesOrder() const { return !order_.empty(); }

  private:
    static void addLine(string& text, const string& what, const std::vector<string>& parts) {
        if (!parts.empty()) {
            text += "- " + what + ": " + joined(parts) + "\n";
        }
    }

    void compare(ElementId id) {
        const ElementDefinition* const from = from_.element(id);
        const ElementDefinition* const to = to_.element(id);
        if (from != nullptr && to == nullptr) {
            elements_.push_back(code(from->name));
        } else if (from != nullptr) {
            compareContent(*from, *to);
            compareAttributes(*from, *to);
        }
    }

    void compareContent(const ElementDefinition& from, const ElementDefinition& to) {
        if (to.kind == fcpxml::ContentKind::empty && from.kind != to.kind) {
            emptied_.push_back(code(from.name));
        }
        const auto& children = from.content ? from.content->names() : from.mixedNames;
        std::vector<string> gone;
        for (const ElementId child : children) {
            const ElementDefinition* const known = to_.element(child);
            if (known != nullptr && from_.element(child) != nullptr && !to.mentions(child)) {
                gone.push_back(code(known->name));
            }
            const bool isSingle = from.content && to.content && to.content->mentions(child) &&
                                  from.content->mayRepeat(child) && !to.content->mayRepeat(child);
            if (isSingle) {
                single_.push_back(code(known->name) + " in " + code(to.name));
            }
        }
        if (!gone.empty()) {
            places_.emplace_back(string(from.name), gone);
        }
        if (from.content && to.content && hasOtherOrder(*from.content, *to.content)) {
            order_.push_back(code(from.name));
        }
    }

    static bool hasOtherOrder(const ContentModel& from, const ContentModel& to) {
        const auto& names = from.names();
        return std::any_of(names.begin(), names.end(), [&](ElementId first) {
            return std::any_of(names.begin(), names.end(), [&](ElementId second) {
                return first != second && mayFollow(from, first, second) && to.mentions(first) &&
                       to.mentions(second) && !mayFollow(to, first, second) &&
                       mayFollow(to, second, first);
            });
        });
    }

    void compareAttributes(const ElementDefinition& from, const ElementDefinition& to) {
        for (const AttributeChange& change : fcpxml::attributeChanges(from, to)) {
            const string name = code(string(from.name) + "@" + string(change.name));
            if (change.isDropped()) {
                attributes_.push_back(name);
                continue;
            }
            if (change.losesValues) {
                values_.push_back(name + " " + lostValues(change));
            }
            if (change.losesDefault) {
                written_.push_back(name + " " + code(change.from->defaultValue));
            }
            if (change.gainsDefault) {
                gained_.push_back(name + " " + code(change.to->defaultValue));
            }
            if (change.becomesRequired) {
                required_.push_back(name);
            }
        }
    }

    static string lostValues(const AttributeChange& change) {
        string text;
        for (const std::string_view value : change.from->values) {
            text += change.to->allows(value) ? "" : (text.empty() ? "" : " ") + code(value);
        }
        return text.empty() ? "(all but those of a list)" : text;
    }

    const Definition& from_;
    const Definition& to_;
    std::vector<string> elements_;
    std::vector<std::pair<string, std::vector<string>>> places_;
    std::vector<string> attributes_;
    std::vector<string> values_;
    std::vector<string> written_;
    std::vector<string> gained_;
    std::vector<string> required_;
    std::vector<string> order_;
    std::vector<string> emptied_;
    std::vector<string> single_;
};

constexpr std::string_view kHead =
    R"(# Versions of FCPXML, and what each step loses

Made from the catalogue of versions (`resources/fcpxml_versions.txt`) by `scripts/refresh-versions`. The
lists name all that a conversion between neighbouring versions has to do; `vornic-convert` does it and
tells each case where something is in the file. A conversion over several versions goes there at once:
what the target has no place for goes, the rest stays byte for byte.

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

string steps() {
    string down;
    string up;
    for (int minor = Version::kNewestMinor; minor > 6; --minor) {
        down += Step(Version(minor), Version(minor - 1)).markdown();
    }
    for (int minor = 0; minor < Version::kNewestMinor; ++minor) {
        up += Step(Version(minor), Version(minor + 1)).markdown();
    }
    return "## Down\n\n" + down + "## Up\n\nSteps that lose nothing are left out.\n\n" + up;
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
    const string page = string(kHead) + steps() + rules();
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
            EXPECT_FALSE(Step(Version(from), Version(to)).changesOrder()) << from << " to " << to;
        }
    }
    EXPECT_TRUE(Step(Version(2), Version(3)).changesOrder());
}

}  // namespace vornic::test
