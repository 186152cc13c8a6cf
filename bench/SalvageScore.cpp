#include "bench/SalvageScore.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "xml/reader/XMLReader.h"

namespace vornic::bench {

namespace {

// What a document says, without white space between its parts.
class Canonical final : public XMLReaderEvents {
  public:
    static std::optional<std::vector<std::string>> of(std::string_view text) {
        Canonical canonical;
        if (readXML(text, XMLMode::strict, &canonical).fault) {
            return std::nullopt;
        }
        canonical.flush();
        return std::move(canonical.parts_);
    }
    static std::vector<std::string> beginningOf(std::string_view text) {
        Canonical canonical;
        static_cast<void>(readXML(text, XMLMode::strict, &canonical));
        return std::move(canonical.parts_);
    }

    void startElement(std::string_view name) override { add("<" + std::string(name)); }
    void attribute(std::string_view name, std::string_view rawValue) override {
        add(" " + std::string(name) + "=" + std::string(rawValue));
    }
    void endElement(std::string_view name, bool /*selfClosed*/) override {
        add("</" + std::string(name));
    }
    void text(std::string_view rawText) override { text_ += rawText; }
    void cdata(std::string_view content) override { text_ += content; }
    void comment(std::string_view content) override { add("!" + trimmed(content)); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("?" + std::string(target) + " " + std::string(data));
    }
    void documentType(std::string_view name, std::string_view /*raw*/) override {
        add("!DOCTYPE " + std::string(name));
    }

  private:
    static std::string trimmed(std::string_view text) {
        const std::size_t from = text.find_first_not_of(" \t\r\n");
        return from == std::string_view::npos
                   ? ""
                   : std::string(text.substr(from, text.find_last_not_of(" \t\r\n") + 1 - from));
    }
    void flush() {
        if (std::string text = trimmed(text_); !text.empty()) {
            parts_.push_back("\"" + text);
        }
        text_.clear();
    }
    void add(std::string part) {
        flush();
        parts_.push_back(std::move(part));
    }

    std::vector<std::string> parts_;
    std::string text_;
};

std::array<std::size_t, 256> charactersOf(const std::vector<std::string>& parts) {
    std::array<std::size_t, 256> counts{};
    for (const std::string& part : parts) {
        std::size_t from = part[0] == ' ' ? part.find('=') + 1 : 1;
        if (part[0] != ' ' && part[0] != '"' && !(part[0] == '!' && part[1] != 'D')) {
            continue;
        }
        for (; from < part.size(); ++from) {
            if (part[from] != ' ' && part[from] != '\n' && part[from] != '\t' &&
                part[from] != '\r') {
                ++counts[static_cast<unsigned char>(part[from])];
            }
        }
    }
    return counts;
}

// Whether everything that stood whole before a cut is there and in its place.
bool keepsBeginning(const FaultyText& faulty, const std::vector<std::string>& copy) {
    std::vector<std::string> whole = Canonical::beginningOf(faulty.text);
    while (!whole.empty() && whole.back()[0] == ' ') {
        whole.pop_back();  // of a tag that was cut
    }
    if (!whole.empty() && whole.back()[0] == '<' && whole.back()[1] != '/') {
        const std::size_t tag = faulty.text.rfind('<');
        if (faulty.text.find('>', tag) == std::string::npos) {
            whole.pop_back();
        }
    }
    std::size_t i = 0;
    for (const std::string& part : whole) {
        if (i >= copy.size() || (copy[i] != part && !copy[i].starts_with(part))) {
            return false;
        }
        ++i;
    }
    return true;
}

}  // namespace

Score scoreOf(FaultKind kind, const FaultyText& faulty, const std::vector<std::string>& copies) {
    Score score;
    score.cases = 1;
    const auto expected = Canonical::of(faulty.expected);
    std::array<std::size_t, 256> wanted{};
    if (kind == FaultKind::cutOff) {
        wanted = charactersOf(Canonical::beginningOf(faulty.text));
    } else if (expected) {
        wanted = charactersOf(*expected);
    }
    std::array<std::size_t, 256> found{};
    bool isWellFormed = !copies.empty();
    bool isExact = !copies.empty();
    for (const std::string& text : copies) {
        const auto copy = Canonical::of(text);
        isWellFormed = isWellFormed && copy;
        if (!copy) {
            isExact = false;
            continue;
        }
        const auto characters = charactersOf(*copy);
        for (std::size_t i = 0; i < found.size(); ++i) {
            found[i] += characters[i];
        }
        isExact = isExact && (kind == FaultKind::cutOff ? keepsBeginning(faulty, *copy)
                                                        : expected && *copy == *expected);
    }
    isExact = isExact && copies.size() == (kind == FaultKind::secondRoot ? 2 : 1);
    score.exact = isExact ? 1 : 0;
    score.wellFormed = isWellFormed ? 1 : 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        score.characters += wanted[i];
        score.kept += std::min(wanted[i], found[i]);
    }
    return score;
}

}  // namespace vornic::bench
