#include "formats/fcpxml/ContentModel.h"

#include <algorithm>
#include <set>

#include "xml/text/XMLCharacters.h"

namespace vornic::fcpxml {

// A part of a model as the construction by Glushkov sees it: the places where it can begin and end.
struct ContentModel::Part {
    bool mayBeEmpty = false;
    std::set<State> first;
    std::set<State> last;
};

// Reads a model and notes which places can follow which. Place 0 is the beginning.
class ContentModel::Parser {
  public:
    Parser(std::string_view model, const Catalogue& catalogue)
        : at_(model.data()), end_(model.data() + model.size()), catalogue_(catalogue) {}

    void read() {
        Part whole = readPart();
        follow_[kStart] = whole.first;
        ends_ = std::move(whole.last);
        if (whole.mayBeEmpty) {
            ends_.insert(kStart);
        }
    }

    // By place: the name there (none at the beginning), and the places that can follow.
    std::vector<ElementId> names_{kNoElement};
    std::vector<std::set<State>> follow_{1};
    std::set<State> ends_;

  private:
    Part readPart() {
        Part part = isAt('(') ? readGroup() : readName();
        if (isAt('?') || isAt('*') || isAt('+')) {
            const char mark = *at_++;
            if (mark != '?') {
                connect(part.last, part.first);
            }
            part.mayBeEmpty = part.mayBeEmpty || mark != '+';
        }
        skipBlanks();
        return part;
    }

    Part readGroup() {
        ++at_;
        skipBlanks();
        Part group = readPart();
        while (isAt(',') || isAt('|')) {
            const bool isSequence = *at_++ == ',';
            skipBlanks();
            const Part item = readPart();
            isSequence ? append(group, item) : join(group, item);
        }
        ++at_;
        return group;
    }

    Part readName() {
        const std::size_t length = xmlchars::nameLength(at_, end_);
        const auto place = static_cast<State>(names_.size());
        names_.push_back(catalogue_.idOf({at_, length}));
        follow_.emplace_back();
        at_ += length;
        return {false, {place}, {place}};
    }

    void append(Part& group, const Part& item) {
        connect(group.last, item.first);
        if (group.mayBeEmpty) {
            group.first.insert(item.first.begin(), item.first.end());
        }
        if (!item.mayBeEmpty) {
            group.last.clear();
        }
        group.last.insert(item.last.begin(), item.last.end());
        group.mayBeEmpty = group.mayBeEmpty && item.mayBeEmpty;
    }

    static void join(Part& group, const Part& item) {
        group.first.insert(item.first.begin(), item.first.end());
        group.last.insert(item.last.begin(), item.last.end());
        group.mayBeEmpty = group.mayBeEmpty || item.mayBeEmpty;
    }

    void connect(const std::set<State>& from, const std::set<State>& to) {
        for (const State place : from) {
            follow_[place].insert(to.begin(), to.end());
        }
    }

    [[nodiscard]] bool isAt(char mark) const { return at_ != end_ && *at_ == mark; }
    void skipBlanks() { at_ = xmlchars::afterSpace(at_, end_); }

    const char* at_;
    const char* end_;
    const Catalogue& catalogue_;
};

ContentModel::ContentModel(std::string_view model, const Catalogue& catalogue)
    : symbols_(catalogue.size(), kNoSymbol) {
    Parser parser(model, catalogue);
    parser.read();
    const std::size_t stateCount = parser.names_.size();
    places_.assign(stateCount, kNoSymbol);
    for (std::size_t state = 1; state < stateCount; ++state) {
        std::uint8_t& symbol = symbols_[parser.names_[state]];
        if (symbol == kNoSymbol) {
            symbol = static_cast<std::uint8_t>(alphabet_.size());
            alphabet_.push_back(parser.names_[state]);
        }
        places_[state] = symbol;
    }
    transitions_.assign(stateCount * alphabet_.size(), kRefused);
    mayEnd_.assign(stateCount, false);
    for (std::size_t state = 0; state < stateCount; ++state) {
        mayEnd_[state] = parser.ends_.contains(static_cast<State>(state));
        for (const State next : parser.follow_[state]) {
            transitions_[state * alphabet_.size() + places_[next]] = next;
        }
    }
}

ContentModel::State ContentModel::reach(State from, ElementId child) const {
    std::vector<State> open{from};
    std::vector<bool> isSeen(mayEnd_.size(), false);
    for (std::size_t i = 0; i < open.size(); ++i) {
        const State found = next(open[i], child);
        if (found != kRefused) {
            return found;
        }
        for (std::size_t symbol = 0; symbol < alphabet_.size(); ++symbol) {
            const State after = transitions_[open[i] * alphabet_.size() + symbol];
            if (after != kRefused && !isSeen[after]) {
                isSeen[after] = true;
                open.push_back(after);
            }
        }
    }
    return kRefused;
}

bool ContentModel::mayRepeat(ElementId child) const {
    const State first = reach(kStart, child);
    return first != kRefused && reach(first, child) != kRefused;
}

std::vector<ElementId> ContentModel::possible(State state) const {
    std::vector<ElementId> names;
    std::copy_if(alphabet_.begin(), alphabet_.end(), std::back_inserter(names),
                 [&](ElementId name) { return next(state, name) != kRefused; });
    return names;
}

}  // namespace vornic::fcpxml
