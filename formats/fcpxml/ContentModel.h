#ifndef VORNIC_FORMATS_FCPXML_CONTENT_MODEL_H
#define VORNIC_FORMATS_FCPXML_CONTENT_MODEL_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/fcpxml/Catalogue.h"

namespace vornic::fcpxml {

/// A content model of elements (XML 1.0, section 3.2.1) as a deterministic automaton. A state
/// stands for the children read so far. The models of FCPXML are deterministic as XML 1.0, appendix
/// E, asks, so that each state but the first is a place in the model: the name read last.
class ContentModel {
  public:
    using State = std::uint8_t;
    static constexpr State kStart = 0;
    /// No further child is possible.
    static constexpr State kRefused = 0xFF;

    /// @param model such as `(note?, (audio | video)*)`, with names of the catalogue and
    /// well-formed.
    ContentModel(std::string_view model, const Catalogue& catalogue);

    /// The state after one more child, or `kRefused` where it may not stand.
    [[nodiscard]] State next(State state, ElementId child) const {
        const std::uint8_t symbol = symbols_[child];
        return symbol == kNoSymbol ? kRefused : transitions_[state * alphabet_.size() + symbol];
    }
    /// True when the element may end here.
    [[nodiscard]] bool mayEnd(State state) const { return mayEnd_[state]; }
    /// True when the model has the name at all, wherever.
    [[nodiscard]] bool mentions(ElementId child) const { return symbols_[child] != kNoSymbol; }
    /// The nearest state that the child leads to once what has to stand before it is there; from
    /// one where it may stand at once that is `next`. `kRefused` when nothing helps.
    [[nodiscard]] State reach(State from, ElementId child) const;
    /// True when the name may stand more than once.
    [[nodiscard]] bool mayRepeat(ElementId child) const;
    /// A bit of its own for each name of the model.
    [[nodiscard]] std::uint64_t bitOf(ElementId child) const {
        return mentions(child) ? std::uint64_t{1} << symbols_[child] : 0;
    }
    /// The names that may stand next, in the order of the model.
    [[nodiscard]] std::vector<ElementId> possible(State state) const;
    /// Every name of the model, in its order.
    [[nodiscard]] const std::vector<ElementId>& names() const { return alphabet_; }
    /// The name that led to a state, which is not the first one.
    [[nodiscard]] ElementId nameOf(State state) const { return alphabet_[places_[state]]; }

  private:
    static constexpr std::uint8_t kNoSymbol = 0xFF;

    struct Part;
    class Parser;

    std::vector<ElementId> alphabet_;
    // By element: its place in the alphabet.
    std::vector<std::uint8_t> symbols_;
    // By state and symbol.
    std::vector<State> transitions_;
    // By state.
    std::vector<bool> mayEnd_;
    std::vector<std::uint8_t> places_;
};

}  // namespace vornic::fcpxml

#endif
