#include "tests/convert/fcpxml/DocumentMeaning.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "formats/fcpxml/Definition.h"
#include "report/RuleTable.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/AttributeValue.h"

namespace vornic::test {

namespace {

using fcpxml::Definition;
using fcpxml::ElementDefinition;
using fcpxml::Version;
using std::string;

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

struct Attribute {
    string name;
    string rawValue;
    // Of the value.
    std::size_t offset = 0;
};

// An element, or a piece of text, a comment or an instruction, which have no name.
struct Node {
    string name = {};
    std::size_t offset = 0;
    std::vector<Attribute> attributes = {};
    std::vector<Node> children = {};
    string text = {};

    [[nodiscard]] Attribute* attribute(std::string_view wanted) {
        const auto found =
            std::find_if(attributes.begin(), attributes.end(),
                         [wanted](const auto& entry) { return entry.name == wanted; });
        return found == attributes.end() ? nullptr : &*found;
    }
    void write(std::string_view wanted, const string& value) {
        if (Attribute* const present = attribute(wanted)) {
            present->rawValue = value;
        } else {
            attributes.push_back({string(wanted), value});
        }
    }
};

class TreeReader final : public XMLReaderEvents {
  public:
    static Node read(std::string_view text) {
        TreeReader reader;
        static_cast<void>(readXML(text, XMLMode::strict, &reader));
        return std::move(reader.open_.front());
    }

    void startElement(std::string_view name) override {
        open_.push_back({.name = string(name), .offset = place().offset});
    }
    void attribute(std::string_view name, std::string_view rawValue) override {
        open_.back().attributes.push_back({string(name), string(rawValue), valuePlace().offset});
    }
    void endElement(std::string_view /*name*/, bool /*selfClosed*/) override {
        Node ended = std::move(open_.back());
        open_.pop_back();
        open_.back().children.push_back(std::move(ended));
    }
    void text(std::string_view rawText) override { add(string(rawText)); }
    void cdata(std::string_view content) override { add("<![CDATA[" + string(content) + "]]>"); }
    void comment(std::string_view content) override { add("<!--" + string(content) + "-->"); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("<?" + string(target) + " " + string(data) + "?>");
    }
    void documentType(std::string_view /*name*/, std::string_view /*declaration*/) override {}

  private:
    void add(string text) { open_.back().children.push_back({.text = std::move(text)}); }

    // The first one stands for the document.
    std::vector<Node> open_ = std::vector<Node>(1);
};

// Writes down what a tree says.
class Meaning {
  public:
    explicit Meaning(Version version) : definition_(Definition::of(version)) {}

    string of(const Node& document) && {
        addChildren(document);
        return std::move(text_);
    }

  private:
    void addChildren(const Node& node) {
        // What stands between two texts may have gone.
        string text;
        for (const Node& child : node.children) {
            if (child.name.empty()) {
                text += child.text;
                continue;
            }
            addText(std::exchange(text, ""));
            addElement(child);
        }
        addText(text);
    }

    void addText(const string& text) {
        if (!isBlank(text)) {
            text_ += "text " + text + "\n";
        }
    }

    void addElement(const Node& node) {
        text_ += "<" + node.name;
        const ElementDefinition* const definition = definition_.element(node.name);
        std::vector<std::pair<string, string>> attributes;
        for (const Attribute& attribute : node.attributes) {
            attributes.emplace_back(attribute.name, valueOf(definition, attribute));
        }
        if (definition != nullptr) {
            addDefaults(*definition, attributes);
        }
        std::sort(attributes.begin(), attributes.end());
        for (const auto& [name, value] : attributes) {
            text_.append(" ").append(name).append("=").append(value);
        }
        text_ += ">\n";
        addChildren(node);
        text_ += "</" + node.name + ">\n";
    }

    static string valueOf(const ElementDefinition* definition, const Attribute& attribute) {
        const auto* const declared =
            definition == nullptr ? nullptr : definition->attribute(attribute.name);
        return normalisedAttributeValue(
            attribute.rawValue,
            declared != nullptr && declared->type != fcpxml::AttributeType::text);
    }

    static void addDefaults(const ElementDefinition& definition,
                            std::vector<std::pair<string, string>>& attributes) {
        for (const fcpxml::AttributeDefinition& declared : definition.attributes) {
            const bool isWritten =
                std::any_of(attributes.begin(), attributes.end(),
                            [&](const auto& entry) { return entry.first == declared.name; });
            if (!isWritten && declared.defaultKind == fcpxml::AttributeDefault::value) {
                attributes.emplace_back(declared.name, declared.defaultValue);
            }
        }
    }

    const Definition& definition_;
    string text_;
};

string argument(const Finding& finding, std::string_view name) {
    for (const Argument& candidate : finding.arguments) {
        if (candidate.name == name) {
            return candidate.value;
        }
    }
    return "";
}

// Does to a tree what was told, and nothing else.
class ToldChanges {
  public:
    explicit ToldChanges(Version version) : definition_(Definition::of(version)) {}

    void addFirst(const ConvertedText& there) {
        for (const Finding& finding : there.findings.kept()) {
            told_.emplace(finding.where.offset, &finding);
        }
    }
    // The places of the second conversion are those of what the first one made.
    void addSecond(const ConvertedText& there, const ConvertedText& back) {
        const OldOffsets offsets(there.conversion.edits);
        for (const Finding& finding : back.findings.kept()) {
            told_.emplace(offsets.of(finding.where.offset), &finding);
        }
    }

    void applyTo(Node& parent) const {
        std::vector<Node> kept;
        for (Node& child : parent.children) {
            if (child.name.empty()) {
                kept.push_back(std::move(child));
            } else if (std::optional<Node> left = leftOf(std::move(child))) {
                kept.push_back(std::move(*left));
            }
        }
        parent.children = std::move(kept);
    }

  private:
    template <class Condition>
    [[nodiscard]] bool isTold(std::size_t offset, Condition condition) const {
        const auto [first, last] = told_.equal_range(offset);
        return std::any_of(first, last,
                           [&](const auto& entry) { return condition(*entry.second); });
    }

    [[nodiscard]] bool becomesGap(const Node& node) const {
        return isTold(node.offset,
                      [](const Finding& finding) { return finding.rule == "conversion-gap"_rule; });
    }

    [[nodiscard]] bool goes(const Node& node) const {
        return isTold(node.offset, [](const Finding& finding) {
            return finding.rule == "conversion-element-lost"_rule ||
                   finding.rule == "conversion-value-not-known"_rule ||
                   finding.rule == "conversion-value-missing"_rule ||
                   finding.rule == "conversion-disabled-element"_rule ||
                   finding.rule == "conversion-collection"_rule ||
                   finding.rule == "conversion-incomplete"_rule ||
                   finding.rule == "conversion-referring-element"_rule;
        });
    }

    [[nodiscard]] bool loses(const Attribute& attribute) const {
        return isTold(attribute.offset, [&](const Finding& finding) {
            return (finding.rule == "conversion-attribute-lost"_rule ||
                    finding.rule == "conversion-value-lost"_rule ||
                    finding.rule == "conversion-reference-lost"_rule ||
                    finding.rule == "conversion-no-original-media"_rule) &&
                   argument(finding, "attribute") == attribute.name;
        });
    }

    [[nodiscard]] std::optional<Node> leftOf(Node node) const {
        if (becomesGap(node)) {
            leaveOutUnsaid(node);
            node.name = "gap";
        } else if (goes(node)) {
            return gapOfAudition(std::move(node));
        }
        std::erase_if(node.attributes, [this](const Attribute& attribute) {
            return attribute.offset != 0 && loses(attribute);
        });
        writeDefaults(node);
        applyTo(node);
        return node;
    }

    // An audition leaves the gap that its first item becomes, at the place of the audition.
    [[nodiscard]] std::optional<Node> gapOfAudition(Node audition) const {
        const auto item = std::find_if(audition.children.begin(), audition.children.end(),
                                       [](const Node& child) { return !child.name.empty(); });
        if (audition.name != "audition" || item == audition.children.end() || !becomesGap(*item)) {
            return std::nullopt;
        }
        std::optional<Node> gap = leftOf(std::move(*item));
        if (const Attribute* const offset = audition.attribute("offset")) {
            gap->write("offset", offset->rawValue);
        }
        return gap;
    }

    // What a gap does not have goes without a word where it says what holds without it.
    void leaveOutUnsaid(Node& node) const {
        const ElementDefinition& old = *definition_.element(node.name);
        const ElementDefinition& gap = *definition_.element("gap");
        std::erase_if(node.attributes, [&](const Attribute& attribute) {
            const auto* const declared = old.attribute(attribute.name);
            return gap.attribute(attribute.name) == nullptr && declared != nullptr &&
                   declared->defaultKind == fcpxml::AttributeDefault::value &&
                   declared->defaultValue == attribute.rawValue;
        });
    }

    void writeDefaults(Node& node) const {
        const auto [first, last] = told_.equal_range(node.offset);
        for (auto told = first; told != last; ++told) {
            if (told->second->rule == "conversion-default-written"_rule) {
                node.write(argument(*told->second, "attribute"),
                           argument(*told->second, "instead"));
            }
        }
    }

    const Definition& definition_;
    // By their places in the first text.
    std::multimap<std::size_t, const Finding*> told_;
};

}  // namespace

string meaningOf(std::string_view text, Version version) {
    return Meaning(version).of(TreeReader::read(text));
}

string meaningByWhatWasTold(std::string_view text, Version version, const ConvertedText& there,
                            const ConvertedText& back) {
    ToldChanges told(version);
    told.addFirst(there);
    told.addSecond(there, back);
    Node document = TreeReader::read(text);
    told.applyTo(document);
    return Meaning(version).of(document);
}

}  // namespace vornic::test
