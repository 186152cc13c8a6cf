#include "convert/fcpxml/ChildOrder.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "convert/fcpxml/Renames.h"
#include "formats/fcpxml/Definition.h"
#include "report/RuleTable.h"

namespace vornic::fcpxml {

namespace {

constexpr std::array<std::string_view, 9> kMovable = {"param",        "text",     "text-style-def",
                                                      "note",         "filter",   "filter-video",
                                                      "filter-audio", "metadata", "timeMap"};

bool isMovable(std::string_view name) {
    return std::find(kMovable.begin(), kMovable.end(), name) != kMovable.end();
}

// A child with its place in the order of the next version: those of one rank may stand in any.
struct Child {
    ElementNumber element;
    ElementId id;
    std::size_t rank;
};

class Ordering {
  public:
    Ordering(const ElementIndex& index, Version from, Version to)
        : index_(index), from_(from), to_(to), definition_(Definition::of(to)) {}

    ChildOrder run() && {
        for (ElementNumber element = 0; element < index_.size(); ++element) {
            const ElementDefinition* const definition = definition_.element(index_.nameOf(element));
            if (definition != nullptr && definition->content) {
                order(element, *definition->content);
            }
        }
        std::stable_sort(
            order_.edits.begin(), order_.edits.end(),
            [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
        return std::move(order_);
    }

  private:
    void order(ElementNumber element, const ContentModel& model) {
        std::vector<Child> children;
        for (ElementNumber child = index_.firstChildOf(element); child != vornic::kNoElement;
             child = index_.nextSiblingOf(child)) {
            const ElementId id = Catalogue::shared().idOf(
                renamed(index_, child, index_.nameOf(element), from_, to_));
            if (id != fcpxml::kNoElement && model.mentions(id)) {
                children.push_back({child, id, 0});
            }
        }
        if (!fits(children, model)) {
            move(children, ranksOf(model));
        }
    }

    static bool fits(const std::vector<Child>& children, const ContentModel& model) {
        ContentModel::State state = ContentModel::kStart;
        return std::all_of(children.begin(), children.end(), [&](const Child& child) {
            state = model.next(state, child.id);
            return state != ContentModel::kRefused;
        });
    }

    // By element: how many names have to stand before it.
    const std::map<ElementId, std::size_t>& ranksOf(const ContentModel& model) {
        auto& ranks = ranks_[&model];
        if (!ranks.empty()) {
            return ranks;
        }
        const auto mayFollow = [&model](ElementId first, ElementId second) {
            return model.reach(model.reach(ContentModel::kStart, first), second) !=
                   ContentModel::kRefused;
        };
        for (const ElementId name : model.names()) {
            ranks[name] = static_cast<std::size_t>(
                std::count_if(model.names().begin(), model.names().end(), [&](ElementId other) {
                    return mayFollow(other, name) && !mayFollow(name, other);
                }));
        }
        return ranks;
    }

    void move(std::vector<Child>& children, const std::map<ElementId, std::size_t>& ranks) {
        for (Child& child : children) {
            child.rank = ranks.at(child.id);
        }
        std::vector<Child> resting;
        std::vector<Child> moving;
        for (std::size_t at = 0; at < children.size(); ++at) {
            (mayRest(children, at, resting) ? resting : moving).push_back(children[at]);
        }
        std::stable_sort(moving.begin(), moving.end(),
                         [](const Child& a, const Child& b) { return a.rank < b.rank; });
        for (const Child& child : moving) {
            moveTo(child, resting);
        }
    }

    // True for what never moves, and for what stands right among that and what rests before it.
    bool mayRest(const std::vector<Child>& children, std::size_t at,
                 const std::vector<Child>& resting) const {
        const auto isMoving = [this](const Child& child) {
            return isMovable(index_.nameOf(child.element));
        };
        const std::size_t rank = children[at].rank;
        const auto next = children.begin() + static_cast<std::ptrdiff_t>(at);
        return !isMoving(*next) ||
               (std::all_of(resting.begin(), resting.end(),
                            [rank](const Child& other) { return other.rank <= rank; }) &&
                std::all_of(next, children.end(), [&](const Child& other) {
                    return isMoving(other) || other.rank >= rank;
                }));
    }

    // In front of the first resting child that has to stand behind it; behind all when none has.
    void moveTo(const Child& child, const std::vector<Child>& resting) {
        const auto next = std::find_if(resting.begin(), resting.end(),
                                       [&](const Child& other) { return other.rank > child.rank; });
        const TextSpan whole = index_.spanOf(child.element);
        const ElementNumber parent = index_.parentOf(child.element);
        const std::size_t target = next != resting.end() ? index_.spanOf(next->element).offset
                                                         : index_.contentOf(parent).end();
        order_.edits.push_back({whole.offset, whole.length, ""});
        order_.edits.push_back({target, 0, std::string(whole.of(index_.text()))});
        order_.changes.push_back({"conversion-moved"_rule, child.element, whole, {}, {}});
    }

    const ElementIndex& index_;
    Version from_;
    Version to_;
    const Definition& definition_;
    std::map<const ContentModel*, std::map<ElementId, std::size_t>> ranks_;
    ChildOrder order_;
};

}  // namespace

ChildOrder ChildOrder::of(const ElementIndex& index, Version from, Version to) {
    return Ordering(index, from, to).run();
}

}  // namespace vornic::fcpxml
