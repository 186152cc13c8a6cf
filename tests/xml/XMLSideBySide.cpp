#include "tests/xml/XMLSideBySide.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "xml/XMLDocument.h"
#include "xml/XMLReader.h"

namespace vornic::test {

namespace {

std::string utf8(unsigned long value) {
    const auto byte = [](unsigned long bits) { return static_cast<char>(bits); };
    if (value < 0x80) {
        return {byte(value)};
    }
    if (value < 0x800) {
        return {byte(0xC0 | value >> 6), byte(0x80 | (value & 0x3F))};
    }
    if (value < 0x10000) {
        return {byte(0xE0 | value >> 12), byte(0x80 | (value >> 6 & 0x3F)),
                byte(0x80 | (value & 0x3F))};
    }
    return {byte(0xF0 | value >> 18), byte(0x80 | (value >> 12 & 0x3F)),
            byte(0x80 | (value >> 6 & 0x3F)), byte(0x80 | (value & 0x3F))};
}

std::string replacementOf(const std::string& reference) {
    static const std::map<std::string, std::string> kNamed = {
        {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};
    if (reference[0] != '#') {
        return kNamed.at(reference);
    }
    return reference[1] == 'x' ? utf8(std::stoul(reference.substr(2), nullptr, 16))
                               : utf8(std::stoul(reference.substr(1)));
}

std::string withoutReferences(const std::string& raw) {
    std::string result;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '&') {
            result += raw[at];
            continue;
        }
        const std::size_t end = raw.find(';', at);
        result += replacementOf(raw.substr(at + 1, end - at - 1));
        at = end;
    }
    return result;
}

std::string withLineFeeds(std::string_view raw) {
    std::string result;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '\r') {
            result += raw[at];
        } else if (at + 1 == raw.size() || raw[at + 1] != '\n') {
            result += '\n';
        }
    }
    return result;
}

std::string attributeValue(std::string_view raw) {
    std::string value = withLineFeeds(raw);
    std::replace_if(
        value.begin(), value.end(), [](char c) { return c == '\t' || c == '\n'; }, ' ');
    return withoutReferences(value);
}

bool isWhiteSpace(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

class Recorder : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override { add("start", name); }
    void attribute(std::string_view name, std::string_view rawValue) override {
        add("attribute", std::string(name) + "=" + attributeValue(rawValue));
    }
    void endElement(std::string_view name, bool) override { add("end", name); }
    void text(std::string_view rawText) override {
        const std::string value = withoutReferences(withLineFeeds(rawText));
        if (!isWhiteSpace(value)) {
            add("text", value);
        }
    }
    void cdata(std::string_view content) override { add("cdata", withLineFeeds(content)); }
    void comment(std::string_view content) override { add("comment", withLineFeeds(content)); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("instruction", std::string(target) + " " + withLineFeeds(data));
    }
    void documentType(std::string_view, std::string_view rawDeclaration) override {
        add("type", withLineFeeds(rawDeclaration));
    }

    ContentLines lines;

  private:
    void add(const char* kind, std::string_view what) {
        lines.push_back(std::string(kind) + " " + std::string(what));
    }
};

void addNode(XMLNode node, ContentLines& lines) {
    switch (node.kind()) {
        case XMLNode::Kind::element:
            lines.push_back("start " + std::string(node.name()));
            for (const XMLNode& attribute : node.attributes()) {
                lines.push_back("attribute " + std::string(attribute.name()) + "=" +
                                attribute.stringValue());
            }
            break;
        case XMLNode::Kind::text:
            if (!isWhiteSpace(node.stringValue())) {
                lines.push_back("text " + node.stringValue());
            }
            break;
        case XMLNode::Kind::cdata:
            lines.push_back("cdata " + node.stringValue());
            break;
        case XMLNode::Kind::comment:
            lines.push_back("comment " + node.stringValue());
            break;
        case XMLNode::Kind::processingInstruction:
            lines.push_back("instruction " + std::string(node.name()) + " " + node.stringValue());
            break;
        case XMLNode::Kind::documentType:
            lines.push_back("type " + node.stringValue());
            break;
        default:
            break;
    }
}

}  // namespace

ContentLines contentLinesOfReader(std::string_view text) {
    Recorder recorder;
    const XMLReading reading = readXML(text, XMLMode::strict, &recorder);
    return reading.fault ? ContentLines() : recorder.lines;
}

ContentLines contentLinesOfTree(XMLNode document) {
    ContentLines lines;
    XMLNode node = document.firstChild();
    while (node && node != document) {
        addNode(node, lines);
        if (node.firstChild()) {
            node = node.firstChild();
            continue;
        }
        for (;; node = node.parent()) {
            if (node.isElement()) {
                lines.push_back("end " + std::string(node.name()));
            }
            if (node.nextSibling() || node.parent() == document) {
                break;
            }
        }
        node = node.nextSibling();
    }
    return lines;
}

std::string differenceOfReaderAndTree(const std::string& text) {
    ErrorSlot error;
    const std::unique_ptr<XMLDocument> document = XMLDocument::parse(text, XMLMode::strict, error);
    if (document == nullptr) {
        return "";
    }
    const ContentLines read = contentLinesOfReader(text);
    const ContentLines built = contentLinesOfTree(document->documentNode());
    const auto [left, right] = std::mismatch(read.begin(), read.end(), built.begin(), built.end());
    if (left == read.end() && right == built.end()) {
        return "";
    }
    const auto shown = [](ContentLines::const_iterator at, const ContentLines& lines) {
        return at == lines.end() ? std::string("the end") : "\"" + *at + "\"";
    };
    return "line " + std::to_string(left - read.begin()) + ": the reader tells " +
           shown(left, read) + ", the tree has " + shown(right, built);
}

}  // namespace vornic::test
