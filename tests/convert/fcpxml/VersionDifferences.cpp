#include "tests/convert/fcpxml/VersionDifferences.h"

#include <algorithm>

#include "convert/fcpxml/AttributeChanges.h"

namespace vornic::test {

namespace {

using fcpxml::AttributeChange;
using fcpxml::Catalogue;
using fcpxml::ContentModel;
using fcpxml::Definition;
using fcpxml::ElementDefinition;
using fcpxml::ElementId;
using fcpxml::Version;
using Kind = VersionDifference::Kind;

bool mayFollow(const ContentModel& model, ElementId first, ElementId second) {
    return model.mentions(first) && model.mentions(second) &&
           model.reach(model.reach(ContentModel::kStart, first), second) != ContentModel::kRefused;
}

bool hasOtherOrder(const ContentModel& from, const ContentModel& to) {
    const auto& names = from.names();
    return std::any_of(names.begin(), names.end(), [&](ElementId first) {
        return std::any_of(names.begin(), names.end(), [&](ElementId second) {
            return first != second && mayFollow(from, first, second) && to.mentions(first) &&
                   to.mentions(second) && !mayFollow(to, first, second) &&
                   mayFollow(to, second, first);
        });
    });
}

class Comparison {
  public:
    Comparison(Version from, Version to) : from_(Definition::of(from)), to_(Definition::of(to)) {}

    std::vector<VersionDifference> run() && {
        for (std::size_t id = 0; id < Catalogue::shared().size(); ++id) {
            compare(static_cast<ElementId>(id));
        }
        std::stable_sort(found_.begin(), found_.end(),
                         [](const auto& a, const auto& b) { return a.kind < b.kind; });
        return std::move(found_);
    }

  private:
    void compare(ElementId id) {
        const ElementDefinition* const from = from_.element(id);
        const ElementDefinition* const to = to_.element(id);
        if (from == nullptr && to != nullptr) {
            found_.push_back({Kind::elementComes, std::string(to->name)});
        } else if (from != nullptr && to == nullptr) {
            found_.push_back({Kind::elementGoes, std::string(from->name)});
        } else if (from != nullptr) {
            compareContent(*from, *to);
            compareAttributes(*from, *to);
        }
    }

    void compareContent(const ElementDefinition& from, const ElementDefinition& to) {
        const std::string name(from.name);
        if (to.kind == fcpxml::ContentKind::empty && from.kind != to.kind) {
            found_.push_back({Kind::becomesEmpty, name});
        }
        for (const ElementId child : from.content ? from.content->names() : from.mixedNames) {
            compareChild(from, to, child);
        }
        if (from.content && to.content && hasOtherOrder(*from.content, *to.content)) {
            found_.push_back({Kind::orderChanges, name});
        }
    }

    void compareChild(const ElementDefinition& from, const ElementDefinition& to, ElementId child) {
        const ElementDefinition* const known = to_.element(child);
        if (known == nullptr || from_.element(child) == nullptr) {
            return;
        }
        if (!to.mentions(child)) {
            found_.push_back({Kind::placeGoes, std::string(known->name), std::string(from.name)});
        } else if (from.content && to.content && from.content->mayRepeat(child) &&
                   !to.content->mayRepeat(child)) {
            found_.push_back(
                {Kind::becomesSingle, std::string(known->name), std::string(from.name)});
        }
    }

    void compareAttributes(const ElementDefinition& from, const ElementDefinition& to) {
        for (const AttributeChange& change : fcpxml::attributeChanges(from, to)) {
            compareAttribute(std::string(from.name), change);
        }
        for (const fcpxml::AttributeDefinition& attribute : to.attributes) {
            if (from.attribute(attribute.name) == nullptr) {
                add(Kind::attributeComes, std::string(from.name), attribute.name);
            }
        }
    }

    void compareAttribute(const std::string& element, const AttributeChange& change) {
        if (change.isDropped()) {
            return add(Kind::attributeGoes, element, change.name);
        }
        if (change.losesValues) {
            for (const std::string_view value : change.from->values) {
                if (!change.to->allows(value)) {
                    add(Kind::valueGoes, element, change.name, value);
                }
            }
            if (change.from->values.empty()) {
                add(Kind::valueGoes, element, change.name);
            }
        }
        if (change.losesDefault) {
            add(Kind::defaultGoes, element, change.name, change.from->defaultValue);
        }
        if (change.gainsDefault) {
            add(Kind::defaultComes, element, change.name, change.to->defaultValue);
        }
        if (change.becomesRequired) {
            add(Kind::becomesRequired, element, change.name);
        }
    }

    void add(Kind kind, const std::string& element, std::string_view attribute,
             std::string_view value = {}) {
        found_.push_back({kind, element, "", std::string(attribute), std::string(value)});
    }

    const Definition& from_;
    const Definition& to_;
    std::vector<VersionDifference> found_;
};

}  // namespace

std::vector<VersionDifference> versionDifferences(Version from, Version to) {
    return Comparison(from, to).run();
}

}  // namespace vornic::test
