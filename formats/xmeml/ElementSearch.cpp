#include "formats/xmeml/ElementSearch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

namespace vornic {

namespace {

using Cell = std::uint32_t;

constexpr std::size_t kRoot = 0;
constexpr Cell kNoState = std::numeric_limits<Cell>::max();
/// What follows the name in a start tag.
constexpr std::string_view kEndings = " >";

std::size_t valueOf(char byte) {
    return static_cast<unsigned char>(byte);
}

/// A state stands for the longest end of the text read so far that begins a search string.
struct Matches {
    /// The elements whose search string ends here.
    std::vector<std::size_t> elements;
    /// The state of the longest shorter end that begins a search string.
    std::size_t fallback = kRoot;
};

}  // namespace

/// The automaton of Aho and Corasick over the strings, each with each of its endings. Bytes are put
/// into classes, so that its table stays in the first-level cache. In the root state, where most of
/// a text is read, it looks for the next byte that begins a search string instead of stepping.
struct ElementSearch::State {
    explicit State(const std::vector<std::string>& elements)
        : found(elements.size(), false), missing(elements.size()) {
        classifyBytes(elements);
        addState();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            for (const char ending : kEndings) {
                insert(elements[i] + ending, i);
            }
        }
        linkStates();
    }

    std::vector<bool> found;
    std::size_t missing;

    void read(std::string_view piece);

  private:
    void classifyBytes(const std::vector<std::string>& elements);
    std::size_t addState();
    void insert(std::string_view searchString, std::size_t element);
    void linkStates();
    void noteMatches(std::size_t row);
    [[nodiscard]] const char* skipToStart(const char* at, const char* end) const;

    /// 0 for the bytes of no search string.
    std::array<std::uint16_t, 256> classOf{};
    /// A row for each state: the row to go to for each class, then whether the state has matches
    /// that have not been noted.
    std::vector<Cell> table;
    std::size_t newsColumn = 1;
    std::size_t rowLength = 2;
    std::vector<Matches> matches;
    std::array<bool, 256> isStart{};
    /// The byte that begins every search string, if it is one.
    std::optional<char> onlyStart;
    std::size_t currentRow = kRoot;
};

void ElementSearch::State::classifyBytes(const std::vector<std::string>& elements) {
    std::uint16_t classCount = 1;
    const auto classify = [this, &classCount](std::string_view bytes) {
        for (const char byte : bytes) {
            if (classOf[valueOf(byte)] == 0) {
                classOf[valueOf(byte)] = classCount++;
            }
        }
    };
    classify(kEndings);
    for (const std::string& element : elements) {
        classify(element);
    }
    newsColumn = classCount;
    rowLength = newsColumn + 1;
}

std::size_t ElementSearch::State::addState() {
    matches.emplace_back();
    const std::size_t row = table.size();
    table.resize(row + rowLength, kNoState);
    table[row + newsColumn] = 0;
    return row;
}

void ElementSearch::State::insert(std::string_view searchString, std::size_t element) {
    isStart[valueOf(searchString.front())] = true;
    std::size_t row = kRoot;
    for (const char byte : searchString) {
        const std::size_t cell = row + classOf[valueOf(byte)];
        if (table[cell] == kNoState) {
            const std::size_t added = addState();
            table[cell] = static_cast<Cell>(added);
        }
        row = table[cell];
    }
    matches[row / rowLength].elements.push_back(element);
    table[row + newsColumn] = 1;
}

/// Fills the cells that the search strings left open, in the order of the states' depth.
void ElementSearch::State::linkStates() {
    std::vector<std::size_t> rows = {kRoot};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t row = rows[i];
        const std::size_t fallback = matches[row / rowLength].fallback;
        for (std::size_t column = 0; column < newsColumn; ++column) {
            Cell& next = table[row + column];
            const Cell shorter = row == kRoot ? Cell{kRoot} : table[fallback + column];
            if (next == kNoState) {
                next = shorter;
                continue;
            }
            matches[next / rowLength].fallback = shorter;
            table[next + newsColumn] |= table[shorter + newsColumn];
            rows.push_back(next);
        }
    }
    if (std::count(isStart.begin(), isStart.end(), true) == 1) {
        onlyStart = static_cast<char>(
            std::distance(isStart.begin(), std::find(isStart.begin(), isStart.end(), true)));
    }
}

void ElementSearch::State::noteMatches(std::size_t row) {
    table[row + newsColumn] = 0;
    for (std::size_t state = row; state != kRoot; state = matches[state / rowLength].fallback) {
        for (const std::size_t element : matches[state / rowLength].elements) {
            missing -= found[element] ? 0 : 1;
            found[element] = true;
        }
    }
}

const char* ElementSearch::State::skipToStart(const char* at, const char* end) const {
    if (onlyStart) {
        const void* start = std::memchr(at, *onlyStart, static_cast<std::size_t>(end - at));
        return start != nullptr ? static_cast<const char*>(start) : end;
    }
    return std::find_if(at, end, [this](char byte) { return isStart[valueOf(byte)]; });
}

void ElementSearch::State::read(std::string_view piece) {
    const char* at = piece.data();
    const char* const end = at + piece.size();
    std::size_t row = currentRow;
    while (at != end && missing > 0) {
        if (row == kRoot) {
            at = skipToStart(at, end);
            if (at == end) {
                break;
            }
        }
        row = table[row + classOf[valueOf(*at++)]];
        if (table[row + newsColumn] != 0) {
            noteMatches(row);
        }
    }
    currentRow = row;
}

ElementSearch::ElementSearch(const std::vector<std::string>& elements)
    : state_(std::make_unique<State>(elements)) {}

ElementSearch::~ElementSearch() = default;

bool ElementSearch::append(std::string_view piece) {
    state_->read(piece);
    return state_->missing > 0;
}

bool ElementSearch::found(std::size_t index) const {
    return state_->found.at(index);
}

}  // namespace vornic
