#include "tests/xml/reader/XMLSideBySide.h"

#include <algorithm>

#include "tests/xml/reader/RawText.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/TextDecoding.h"
#include "xml/tree/XMLDocument.h"

namespace vornic::test {

namespace {

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

std::unique_ptr<XMLDocument> parsed(const std::string& text) {
    ErrorSlot error;
    return XMLDocument::parse(text, XMLMode::strict, error);
}

std::string differenceOf(const std::string& leftName, const ContentLines& left,
                         const std::string& rightName, const ContentLines& right) {
    const auto [inLeft, inRight] =
        std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (inLeft == left.end() && inRight == right.end()) {
        return "";
    }
    const auto shown = [](ContentLines::const_iterator at, const ContentLines& lines) {
        return at == lines.end() ? std::string("the end") : "\"" + *at + "\"";
    };
    return "line " + std::to_string(inLeft - left.begin()) + ": " + leftName + " has " +
           shown(inLeft, left) + ", " + rightName + " has " + shown(inRight, right);
}

}  // namespace

ContentLines contentLinesOfReader(std::string_view text) {
    Recorder recorder;
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
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
    const std::unique_ptr<XMLDocument> document = parsed(text);
    if (document == nullptr) {
        return "";
    }
    return differenceOf("the reader", contentLinesOfReader(text), "the tree",
                        contentLinesOfTree(document->documentNode()));
}

std::string differenceAfterWriting(const std::string& text) {
    const std::unique_ptr<XMLDocument> document = parsed(text);
    if (document == nullptr) {
        return "";
    }
    const std::string written = document->xmlString();
    const std::unique_ptr<XMLDocument> again = parsed(written);
    if (again == nullptr) {
        return "what was written is not well-formed";
    }
    if (again->xmlString() != written) {
        return "what is written differs the second time";
    }
    // From here on the tree is there, and what is written is written from it.
    const XMLNode tree = document->documentNode();
    if (document->xmlString() != written) {
        return "what is written from the tree differs from what is written from the text";
    }
    return differenceOf("the text", contentLinesOfTree(tree), "the written text",
                        contentLinesOfTree(again->documentNode()));
}

}  // namespace vornic::test
