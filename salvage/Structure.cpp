#include "salvage/Structure.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "formats/fcpxml/Time.h"
#include "salvage/Tokenizer.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

using fcpxml::Definition;
using fcpxml::Version;

// Elements that one format has and the other has not.
constexpr std::array<std::string_view, 7> kOfFCPXML = {
    "<asset ", "<asset-clip ", "<spine", "<resources", "<media-rep ", "</resources>", "</spine>"};
constexpr std::array<std::string_view, 7> kOfXMEML = {
    "<clipitem",     "<timebase>",  "<pathurl>",  "<samplecharacteristics>",
    "<linkclipref>", "</clipitem>", "</timebase>"};

template <std::size_t Size>
bool hasAny(std::string_view text, const std::array<std::string_view, Size>& parts) {
    return std::any_of(parts.begin(), parts.end(), [text](std::string_view part) {
        return text.find(part) != std::string_view::npos;
    });
}

// The version that a root element's start tag declares, whatever else is wrong with it.
Version versionOf(std::string_view text) {
    const std::size_t root = text.find("<fcpxml");
    const std::size_t attribute =
        root == std::string_view::npos ? root : text.substr(0, root + 200).find("version", root);
    if (attribute != std::string_view::npos) {
        const std::size_t from = text.find_first_of("0123456789", attribute);
        const std::size_t end = text.find_first_not_of("0123456789.", from);
        if (from != std::string_view::npos && from < attribute + 12) {
            if (const auto version = Version::parse(text.substr(from, end - from))) {
                return *version;
            }
        }
    }
    return Version(Version::kNewestMinor);
}

// How well a value fits what the attribute may hold.
int fitOf(const fcpxml::AttributeDefinition& attribute, std::string_view value) {
    constexpr std::array<std::string_view, 8> kTimes = {
        "offset",        "start",      "duration",      "tcStart",
        "frameDuration", "audioStart", "audioDuration", "time"};
    int fit = attribute.allows(value) ? 2 : 0;
    if (std::find(kTimes.begin(), kTimes.end(), attribute.name) != kTimes.end()) {
        fit += fcpxml::parsedTime(value).time.isKnown() ? 1 : -1;
    }
    const bool isId = attribute.type == fcpxml::AttributeType::id ||
                      attribute.type == fcpxml::AttributeType::reference;
    if (isId) {
        const bool isName =
            !value.empty() &&
            xmlchars::nameLength(value.data(), value.data() + value.size()) == value.size();
        fit += isName ? 1 : -1;
    }
    return fit + (value.empty() ? -1 : 0);
}

ValueJudge judgeOf(FileKind kind, const Definition& definition) {
    if (kind != FileKind::fcpxml) {
        return {};
    }
    return [&definition](std::string_view element, std::string_view attribute,
                         std::string_view first, std::string_view second) {
        const fcpxml::ElementDefinition* const known = definition.element(element);
        const fcpxml::AttributeDefinition* const type =
            known == nullptr ? nullptr : known->attribute(attribute);
        return type == nullptr ? 0 : fitOf(*type, second) - fitOf(*type, first);
    };
}

// What stands between root elements: text becomes a comment, a second declaration goes, and each
// root element begins a copy.
class DocumentLevel {
  public:
    DocumentLevel(std::string_view text, const std::vector<Token>& tokens, const Balance& balance,
                  const Grammar& grammar)
        : text_(text), tokens_(tokens), balance_(balance), grammar_(grammar) {}

    void run(Structure& structure) {
        const auto count = static_cast<std::uint32_t>(tokens_.size());
        std::uint32_t at = 0;
        bool hasRoot = false;
        structure.copies.push_back({0, text_.size()});
        for (const RootElement& root : balance_.roots) {
            outside(at, root.first, hasRoot, structure);
            if (!grammar_.isRoot(root.name)) {
                comment(root.first, endOf(root), structure);
            } else {
                if (hasRoot) {
                    split(structure);
                }
                hasRoot = true;
                afterRoot_ = endOf(root);
                inside(root.first, endOf(root), structure);
            }
            at = endOf(root);
        }
        outside(at, count, hasRoot, structure);
    }

  private:
    // The end of a root element reaches to the next one; text and the like between them is no part
    // of it.
    [[nodiscard]] std::uint32_t endOf(const RootElement& root) const {
        return lastTag(root.first, root.end) + 1;
    }
    [[nodiscard]] std::uint32_t lastTag(std::uint32_t first, std::uint32_t end) const {
        std::uint32_t last = end - 1;
        while (last > first && tokens_[last].kind != TokenKind::end &&
               tokens_[last].kind != TokenKind::empty && end != tokens_.size()) {
            --last;
        }
        if (end == tokens_.size()) {
            last = lastOfText(first, end);
        }
        return last;
    }
    // In a text that was cut off everything up to the end belongs to the element.
    [[nodiscard]] std::uint32_t lastOfText(std::uint32_t first, std::uint32_t end) const {
        if (hasEndOfDocument()) {
            std::uint32_t last = end - 1;
            while (last > first && tokens_[last].kind != TokenKind::end &&
                   tokens_[last].kind != TokenKind::empty) {
                --last;
            }
            return last;
        }
        return end - 1;
    }
    [[nodiscard]] bool hasEndOfDocument() const {
        return std::none_of(
            balance_.changes.begin(), balance_.changes.end(),
            [](const Change& change) { return change.kind == ChangeKind::closeAtEnd; });
    }

    // The next root element's copy begins behind the last one.
    void split(Structure& structure) const {
        const std::size_t end = tokens_[afterRoot_ - 1].end;
        structure.copies.back().end = end;
        structure.copies.push_back({end, text_.size()});
    }

    void outside(std::uint32_t first, std::uint32_t end, bool hasRoot, Structure& structure) {
        bool hasType = false;
        for (std::uint32_t i = first; i < end; ++i) {
            const Token& token = tokens_[i];
            if (token.kind == TokenKind::text || token.kind == TokenKind::end) {
                comment(i, i + 1, structure);
            } else if (token.kind == TokenKind::other) {
                const std::string_view raw = rawText(token);
                const bool isDeclaration = isXMLDeclaration(raw) && (i > 0 || hasRoot);
                const bool isType = raw.starts_with("<!DOCTYPE");
                // In front of a later root element they are its own.
                if ((isDeclaration && !hasRoot) || (isType && hasType)) {
                    remove(token, structure);
                }
                hasType = hasType || isType;
            }
        }
    }

    void inside(std::uint32_t first, std::uint32_t end, Structure& structure) {
        for (std::uint32_t i = first; i < end; ++i) {
            const std::string_view raw = rawText(tokens_[i]);
            if (tokens_[i].kind == TokenKind::other &&
                (isXMLDeclaration(raw) || raw.starts_with("<!DOCTYPE"))) {
                remove(tokens_[i], structure);
            }
        }
    }

    [[nodiscard]] static bool isXMLDeclaration(std::string_view raw) {
        return raw.starts_with("<?xml") && raw.size() > 5 &&
               (xmlchars::is(raw[5], xmlchars::kSpace) || raw[5] == '?');
    }
    [[nodiscard]] std::string_view rawText(const Token& token) const {
        return text_.substr(token.offset, token.end - token.offset);
    }

    void comment(std::uint32_t first, std::uint32_t end, Structure& structure) {
        add(ChangeKind::commentText, tokens_[first].offset, tokens_[end - 1].end, structure);
    }
    void remove(const Token& token, Structure& structure) {
        add(ChangeKind::removeDeclaration, token.offset, token.end, structure);
    }
    static void add(ChangeKind kind, std::uint32_t offset, std::uint32_t end,
                    Structure& structure) {
        Change change;
        change.kind = kind;
        change.offset = offset;
        change.length = end - offset;
        structure.changes[2].push_back(change);
    }

    std::string_view text_;
    const std::vector<Token>& tokens_;
    const Balance& balance_;
    const Grammar& grammar_;
    std::uint32_t afterRoot_ = 0;
};

}  // namespace

FileKind guessKind(std::string_view text) {
    const std::size_t fcpxml = text.find("<fcpxml");
    const std::size_t xmeml = text.find("<xmeml");
    if (fcpxml != xmeml) {
        return fcpxml < xmeml ? FileKind::fcpxml : FileKind::xmeml;
    }
    if (text.find("</fcpxml>") != std::string_view::npos || hasAny(text, kOfFCPXML)) {
        return FileKind::fcpxml;
    }
    if (text.find("</xmeml>") != std::string_view::npos || hasAny(text, kOfXMEML)) {
        return FileKind::xmeml;
    }
    return FileKind::none;
}

Structure findStructure(std::string_view text, FileKind kind, const Weights& weights) {
    Structure structure;
    structure.kind = kind;
    structure.version = versionOf(text);
    const Definition& definition = Definition::of(structure.version);
    std::unique_ptr<Format> format = kind == FileKind::fcpxml
                                         ? makeFCPXMLFormat(definition, structure.names)
                                         : makeXMEMLFormat(structure.names);
    Tokens tokens = tokenize(text, nameOf(kind), structure.names, judgeOf(kind, definition));
    if (tokens.list.empty() || structure.names.isFull()) {
        return structure;
    }
    Grammar grammar(std::move(format), structure.names);
    grammar.setRootName(structure.names.find(nameOf(kind)));
    grammar.learn(tokens.list);
    Balance balance =
        Balancer(text, tokens.list, grammar, structure.names, weights).run(tokens.isCut);
    structure.cost = balance.cost;
    structure.isCut = tokens.isCut;
    DocumentLevel(text, tokens.list, balance, grammar).run(structure);
    structure.changes[0] = std::move(tokens.changes);
    structure.changes[1] = std::move(balance.changes);
    return structure;
}

}  // namespace vornic::salvage
