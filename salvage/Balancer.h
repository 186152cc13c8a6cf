#ifndef VORNIC_SALVAGE_BALANCER_H
#define VORNIC_SALVAGE_BALANCER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "formats/Blocks.h"
#include "salvage/Change.h"
#include "salvage/Grammar.h"
#include "salvage/Token.h"

namespace vornic::salvage {

/// What a structural change costs. Lower is likelier; `bench/salvage` measures what these reach.
struct Weights {
    float insertEnd = 4;
    float insertStart = 5;
    float removeEnd = 6;
    float rename = 5;
    float removeStart = 6;
    /// Taken off, or added, when the name's starts and ends in the whole file speak for a change,
    /// or against it.
    float balance = 2;
    /// A tag that stands twice, one right behind the other.
    float twice = 3.5F;
    /// Taken off for an end tag that is put in front of its neighbour.
    float crossed = 5;
    /// For an element that is open where the text ends.
    float closeAtEnd = 0.3F;
    /// From which cost on an end tag that fits its start tag is doubted.
    float doubt = 0.9F;
};

/// A root element among the pieces.
struct RootElement {
    NameId name = 0;
    /// The first piece and the one behind the last.
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

struct Balance {
    /// By offset; made at one offset in their order.
    Changes changes;
    std::vector<RootElement> roots;
    /// What the changes cost, and what is odd about the result.
    float cost = 0;
};

/// Finds the likeliest elements in a text whose tags do not fit each other.
///
/// Goes once through the pieces with the elements that are open on a stack, which begins and ends
/// elements where the text does. Where an end tag does not fit, it looks back over what stands in
/// the open element, and goes on with several answers at once: an end tag was lost (where in front
/// of one of the children is told by what they cost inside and outside), a start tag was, the end
/// tag is one too many or misspelt. The cheapest few go on; what follows tells which was right.
/// Linear: how far is looked back, and how many answers are kept, shrinks as the faults get many.
class Balancer {
  public:
    Balancer(std::string_view text, const std::vector<Token>& tokens, Grammar& grammar,
             const NameTable& names, const Weights& weights);

    /// @param isCut whether the text was cut off, as far as its last piece tells.
    [[nodiscard]] Balance run(bool isCut);

  private:
    using NodeId = std::uint32_t;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    // How many open elements are looked through for the one that an end tag closes.
    static constexpr int kMostLevels = 24;
    // The parts of a cost that a node keeps.
    static constexpr float kSteps = 16;

    enum class NodeKind : std::uint8_t { element, insertedElement, text };

    // A child that is complete, or an element that is open, which becomes a child of the one
    // around it as it is. Never changes.
    struct Node {
        NodeId previous = kNone;
        // The beginning of the element around it.
        NodeId around = kNone;
        std::uint32_t token = 0;
        NameId name = 0;
        NodeKind kind = NodeKind::text;
        // Sixteenths of what it costs where it stands.
        std::uint8_t cost = 0;
    };
    static_assert(sizeof(Node) == 16);

    struct Edit {
        std::uint32_t previous = kNone;
        // The piece that it is about, or in front of which something is put.
        std::uint32_t token = 0;
        std::uint32_t other = 0;
        NameId name = 0;
        ChangeKind kind = ChangeKind::insertEndTag;
    };

    struct Sibling {
        NameId name = NameTable::kStart;
        std::int16_t indent = Token::kNoIndent;
    };

    struct State {
        float cost = 0;
        NodeId top = 0;
        NodeId frame = 0;
        std::uint32_t edits = kNone;
        std::uint64_t open = 0;
        // The frame's last child element.
        Sibling last;
    };

    struct Item {
        NodeId node;
        Sibling previous;
    };

    struct Place {
        std::size_t index = 0;
        float cost = 0;
    };

    [[nodiscard]] int indentOf(const Node& node) const;
    [[nodiscard]] NodeId add(const Node& node);
    void note(State& state, ChangeKind kind, std::uint32_t token, NameId name,
              std::uint32_t other = 0);
    [[nodiscard]] static std::uint8_t sixteenths(float cost);
    [[nodiscard]] static std::uint64_t hashOf(std::uint32_t token, NameId name);

    void takeStart(State& state, std::uint32_t token);
    void takeText(State& state, std::uint32_t token);
    void takeEnd(const State& state, std::uint32_t token, int depth);
    void closeFrame(State& state, NameId name);
    void pushItem(State& state, const Node& item);

    void tryInsertEnd(const State& state, std::uint32_t token, int depth);
    void tryInsertStart(const State& state, std::uint32_t token);
    void tryRemoveEnd(const State& state, std::uint32_t token);
    void tryRename(const State& state, std::uint32_t token);
    void tryRemoveStart(const State& state, std::uint32_t token, int depth);
    [[nodiscard]] State withEndAt(const State& state, const std::vector<Item>& items,
                                  std::size_t index, std::uint32_t token);
    [[nodiscard]] State withStartAt(const State& state, const std::vector<Item>& items,
                                    std::size_t index, std::uint32_t token);

    [[nodiscard]] std::vector<Item> itemsOf(const State& state);
    [[nodiscard]] float costIn(NameId parent, int parentIndent, Sibling previous, const Node& item);
    [[nodiscard]] float costOutside(const Node& frame, Sibling previous, const Node& item);
    [[nodiscard]] Sibling siblingOf(const Node& element) const;
    [[nodiscard]] std::vector<Place> endPlaces(const State& state, const std::vector<Item>& items);
    [[nodiscard]] std::vector<Place> startPlaces(const State& state, const std::vector<Item>& items,
                                                 std::uint32_t token);
    [[nodiscard]] bool mayStartInDocument(const std::vector<Item>& items, std::size_t index) const;
    [[nodiscard]] bool isOpen(const State& state, NameId name) const;
    [[nodiscard]] float balanced(float cost, int surplus, int wanted) const;
    [[nodiscard]] std::optional<State> withoutStart(const State& state,
                                                    const std::vector<Item>& items);
    [[nodiscard]] bool isBeside(std::uint32_t token, std::uint32_t other) const;
    [[nodiscard]] bool isTwice(std::uint32_t token) const;
    [[nodiscard]] std::string_view rawText(std::uint32_t token) const;

    void keepBest();
    void takeEndPoorly(State& state, std::uint32_t token);
    void closeStates();
    void closeAll(State& state);
    void closeOneAtEnd(State& state);
    void addMissingRoot(State& state);
    // Gives up what was built.
    [[nodiscard]] Balance resultOf(const State& state);
    [[nodiscard]] std::vector<RootElement> rootsOf(const State& state) const;
    [[nodiscard]] Change changeOf(const Edit& edit) const;
    void placeEndTag(const Edit& edit, Change& change) const;
    void placeStartTag(const Edit& edit, Change& change) const;
    void placeRemoval(const Edit& edit, Change& change) const;

    std::string_view text_;
    const std::vector<Token>& tokens_;
    Grammar& grammar_;
    const NameTable& names_;
    const Weights& weights_;
    Blocks<Node> nodes_;
    Blocks<Edit> edits_;
    std::vector<State> states_;
    std::vector<State> next_;
    std::size_t lookedBack_ = 0;
    std::size_t answers_ = 0;
    bool isCut_ = false;
};

}  // namespace vornic::salvage

#endif
