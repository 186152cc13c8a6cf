#include "bench/SalvageScore.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "xml/reader/XMLReader.h"

namespace vornic::bench {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// A start tag's beginning, an attribute, an end tag or the like, with the text in front of it.
struct Part {
    std::string text;
    std::string markup;
    std::size_t offset = 0;
    // A tag with white space around it that nobody can know.
    bool isRestored = false;
};

// What a document says, to the letter; of what is beside the root element no white space.
class Canonical final : public XMLReaderEvents {
  public:
    // What can be read of a text; its end is lost where there is a fault.
    Canonical(std::string_view text, const std::vector<std::size_t>& restored)
        : restored_(restored) {
        isWhole_ = !readXML(text, XMLMode::strict, this).fault;
    }

    [[nodiscard]] bool isWhole() const { return isWhole_; }
    [[nodiscard]] std::vector<Part>& parts() { return parts_; }
    [[nodiscard]] const std::vector<Part>& parts() const { return parts_; }

    void startElement(std::string_view name) override {
        add("<" + std::string(name), isRestored());
        ++depth_;
    }
    void attribute(std::string_view name, std::string_view rawValue) override {
        add(" " + std::string(name) + "=" + std::string(rawValue));
    }
    void endElement(std::string_view name, bool selfClosed) override {
        add("</" + std::string(name), !selfClosed && isRestored());
        --depth_;
    }
    void text(std::string_view rawText) override { text_ += depth_ == 0 ? "" : rawText; }
    void cdata(std::string_view content) override { text_ += content; }
    void comment(std::string_view content) override { add("!" + std::string(content)); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("?" + std::string(target) + " " + std::string(data));
    }
    void documentType(std::string_view name, std::string_view /*raw*/) override {
        add("!DOCTYPE " + std::string(name));
    }

  private:
    [[nodiscard]] bool isRestored() const {
        return std::find(restored_.begin(), restored_.end(), place().offset) != restored_.end();
    }
    void add(std::string markup, bool isRestored = false) {
        parts_.push_back({std::exchange(text_, ""), std::move(markup), place().offset, isRestored});
    }

    const std::vector<std::size_t>& restored_;
    std::vector<Part> parts_;
    std::string text_;
    int depth_ = 0;
    bool isWhole_ = false;
};

std::string_view withoutBlanksInFront(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::string_view withoutBlanksBehind(std::string_view text) {
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Whether the parts up to a number are the same.
bool beginsLike(const std::vector<Part>& expected, const std::vector<Part>& copy,
                std::size_t count) {
    if (copy.size() < count) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::string_view wanted = expected[i].text;
        std::string_view found = copy[i].text;
        if (expected[i].isRestored) {
            wanted = withoutBlanksBehind(wanted);
            found = withoutBlanksBehind(found);
        }
        if (i > 0 && expected[i - 1].isRestored) {
            wanted = withoutBlanksInFront(wanted);
            found = withoutBlanksInFront(found);
        }
        if (wanted != found || expected[i].markup != copy[i].markup) {
            return false;
        }
    }
    return true;
}

// Of content: text, values and comments.
std::array<std::size_t, 256> charactersOf(const std::vector<Part>& parts) {
    std::array<std::size_t, 256> counts{};
    const auto count = [&counts](std::string_view text) {
        for (const char c : text) {
            counts[static_cast<unsigned char>(c)] +=
                kBlanks.find(c) == std::string_view::npos ? 1 : 0;
        }
    };
    for (const Part& part : parts) {
        count(part.text);
        const std::string_view markup = part.markup;
        if (markup[0] == ' ') {
            count(markup.substr(markup.find('=') + 1));
        } else if (markup[0] == '!' && !markup.starts_with("!DOCTYPE")) {
            count(markup.substr(1));
        }
    }
    return counts;
}

// What stood whole in front of a cut.
Canonical readUpToCut(const std::string& text) {
    static const std::vector<std::size_t> kNone;
    Canonical whole(text, kNone);
    const std::size_t tag = text.rfind('<');
    if (text.find('>', tag) == std::string::npos) {
        while (!whole.parts().empty() && whole.parts().back().offset >= tag) {
            whole.parts().pop_back();
        }
    }
    return whole;
}

// The text in front of a cut.
std::string_view textBeforeCut(std::string_view text) {
    const std::string_view rest = text.substr(text.rfind('>') + 1);
    return withoutBlanksBehind(rest.substr(0, rest.find('<')));
}

// Whether everything that stood whole before a cut is there and in its place.
bool keepsBeginning(const std::string& text, const std::vector<Part>& whole,
                    const std::vector<Part>& copy) {
    return beginsLike(whole, copy, whole.size()) && copy.size() > whole.size() &&
           withoutBlanksBehind(copy[whole.size()].text).ends_with(textBeforeCut(text));
}

}  // namespace

Score scoreOf(FaultKind kind, const FaultyText& faulty, const std::vector<std::string>& copies) {
    static const std::vector<std::size_t> kNone;
    Score score;
    score.cases = 1;
    const bool isCut = kind == FaultKind::cutOff;
    const Canonical expected =
        isCut ? readUpToCut(faulty.text) : Canonical(faulty.expected, faulty.restored);
    const auto wanted = charactersOf(expected.parts());
    std::array<std::size_t, 256> found{};
    bool isWellFormed = !copies.empty();
    bool isExact = copies.size() == (kind == FaultKind::secondRoot ? 2 : 1);
    for (const std::string& text : copies) {
        const Canonical copy(text, kNone);
        isWellFormed = isWellFormed && copy.isWhole();
        const auto characters = charactersOf(copy.parts());
        for (std::size_t i = 0; copy.isWhole() && i < found.size(); ++i) {
            found[i] += characters[i];
        }
        const bool isAlike =
            isCut ? keepsBeginning(faulty.text, expected.parts(), copy.parts())
                  : copy.parts().size() == expected.parts().size() &&
                        beginsLike(expected.parts(), copy.parts(), expected.parts().size());
        isExact = isExact && copy.isWhole() && isAlike;
    }
    score.exact = isExact ? 1 : 0;
    score.wellFormed = isWellFormed ? 1 : 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        score.characters += wanted[i];
        score.kept += std::min(wanted[i], found[i]);
    }
    return score;
}

}  // namespace vornic::bench
