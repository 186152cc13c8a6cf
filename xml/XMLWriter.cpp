#include "xml/XMLWriter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "xml/XMLTree.h"

namespace vornic {

namespace {

constexpr std::size_t kBufferSize = 256U * 1024U;
constexpr std::size_t kIndentation = 4;
constexpr std::size_t kDeepestIndentation = 64;

// What ends a run of bytes that are written as they are. NUL ends every run.
enum StopClass : std::uint8_t { kStopsText = 1U << 0U, kStopsValue = 1U << 1U };

consteval std::array<std::uint8_t, 256> stopClasses() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned byte = 0; byte < 0x20; ++byte) {
        table[byte] = kStopsText | kStopsValue;
    }
    table['\t'] = kStopsValue;
    table['\n'] = kStopsValue;
    table['&'] = kStopsText | kStopsValue;
    table['<'] = kStopsText | kStopsValue;
    table['>'] = kStopsText | kStopsValue;
    table['"'] = kStopsValue;
    return table;
}

constexpr std::array<std::uint8_t, 256> kStopClasses = stopClasses();

constexpr std::string_view kBlanks =
    "                                                                ";

bool isWhiteSpace(const char* text) {
    return text[std::strspn(text, " \t\r\n")] == '\0';
}

// True when the children of the element are written without line breaks between them.
bool isVerbatim(pugi::xml_node element) {
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (xmltree::isText(child)) {
            return true;
        }
    }
    return xmltree::preservesSpace(element);
}

// True when the element has text beside other nodes, all of it white space.
bool hasOnlyBlankText(pugi::xml_node element) {
    bool hasText = false;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_cdata ||
            (child.type() == pugi::node_pcdata && !isWhiteSpace(child.value()))) {
            return false;
        }
        hasText = hasText || child.type() == pugi::node_pcdata;
    }
    return hasText && element.first_child() != element.last_child() &&
           !xmltree::preservesSpace(element);
}

}  // namespace

XMLWriter::XMLWriter(const XMLSink& sink, const std::vector<std::size_t>& emptyPairs)
    : sink_(sink), emptyPairs_(emptyPairs), buffer_(kBufferSize, '\0') {}

bool XMLWriter::write(pugi::xml_node document) {
    writeDeclaration(document);
    for (pugi::xml_node node = document.first_child(); node && !stopped_;
         node = node.next_sibling()) {
        if (node.type() != pugi::node_declaration) {
            writeTree(node);
            put('\n');
        }
    }
    flush();
    return !stopped_;
}

void XMLWriter::writeDeclaration(pugi::xml_node document) {
    const pugi::xml_node declaration = document.first_child();
    const bool declared = declaration.type() == pugi::node_declaration;
    const pugi::xml_attribute version = declaration.attribute("version");
    put("<?xml version=\"");
    put(declared && version ? version.value() : "1.0");
    put("\" encoding=\"UTF-8\"");
    const pugi::xml_attribute standalone = declaration.attribute("standalone");
    if (declared && standalone) {
        put(" standalone=\"");
        put(standalone.value());
        put('"');
    }
    put("?>\n");
}

void XMLWriter::writeTree(pugi::xml_node top) {
    pugi::xml_node node = top;
    while (node && !stopped_) {
        writeNode(node);
        const pugi::xml_node child =
            node.type() == pugi::node_element ? node.first_child() : pugi::xml_node();
        if (child) {
            ++depth_;
            node = child;
        } else {
            while (node != top && !node.next_sibling()) {
                node = node.parent();
                --depth_;
                closeElement(node);
            }
            node = node == top ? pugi::xml_node() : node.next_sibling();
        }
        if (node && !verbatim_) {
            beginLine();
        }
    }
}

void XMLWriter::writeNode(pugi::xml_node node) {
    switch (node.type()) {
        case pugi::node_element:
            openElement(node);
            break;
        case pugi::node_pcdata:
            writeText(node);
            break;
        case pugi::node_cdata:
            writeCDATA(node.value());
            break;
        case pugi::node_comment:
            put("<!--");
            put(node.value());
            put("-->");
            break;
        case pugi::node_pi:
            writeInstruction(node);
            break;
        case pugi::node_doctype:
            writeDocumentType(node);
            break;
        default:
            break;
    }
}

void XMLWriter::openElement(pugi::xml_node element) {
    const std::string_view name = element.name();
    put('<');
    put(name);
    writeAttributes(element);
    if (element.first_child()) {
        put('>');
        if (!verbatim_ && isVerbatim(element)) {
            verbatim_ = element;
            hasOnlyBlanks_ = hasOnlyBlankText(element);
        }
    } else if (isEmptyPair(element)) {
        put("></");
        put(name);
        put('>');
    } else {
        put("/>");
    }
}

void XMLWriter::closeElement(pugi::xml_node element) {
    if (verbatim_ == element) {
        verbatim_ = pugi::xml_node();
    } else if (!verbatim_) {
        beginLine();
    }
    put("</");
    put(element.name());
    put('>');
}

void XMLWriter::writeAttributes(pugi::xml_node element) {
    for (pugi::xml_attribute attribute = element.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        put(' ');
        put(attribute.name());
        put("=\"");
        writeEscaped(attribute.value(), kStopsValue);
        put('"');
    }
}

void XMLWriter::writeInstruction(pugi::xml_node node) {
    put("<?");
    put(node.name());
    if (node.value()[0] != '\0') {
        put(' ');
        writeNormalized(node.value());
    }
    put("?>");
}

void XMLWriter::writeDocumentType(pugi::xml_node node) {
    put("<!DOCTYPE ");
    writeNormalized(node.value());
    put('>');
}

// The end mark of a section can't stand inside it, so a section that holds it is written as two.
void XMLWriter::writeCDATA(const char* content) {
    std::string_view rest = content;
    put("<![CDATA[");
    for (std::size_t mark = rest.find("]]>"); mark != std::string_view::npos;
         mark = rest.find("]]>")) {
        put(rest.substr(0, mark + 2));
        put("]]><![CDATA[");
        rest.remove_prefix(mark + 2);
    }
    put(rest);
    put("]]>");
}

// Line ends as every reader of XML takes them; only a text that the parser leaves as it stands can
// have other ones.
void XMLWriter::writeNormalized(const char* text) {
    for (; *text != '\0'; ++text) {
        if (*text != '\r') {
            put(*text);
        } else if (text[1] != '\n') {
            put('\n');
        }
    }
}

// White space that has a meaning although there is no other text around it is written so that it
// is not taken for indentation when the text is read again.
void XMLWriter::writeText(pugi::xml_node node) {
    const char* text = node.value();
    if (hasOnlyBlanks_ && node.parent() == verbatim_) {
        writeEscape(*text);
        ++text;
    }
    writeEscaped(text, kStopsText);
}

void XMLWriter::writeEscaped(const char* text, unsigned stopClass) {
    const char* run = text;
    for (;;) {
        const char* end = run;
        while ((kStopClasses[static_cast<unsigned char>(*end)] & stopClass) == 0) {
            ++end;
        }
        put(std::string_view(run, static_cast<std::size_t>(end - run)));
        if (*end == '\0') {
            return;
        }
        writeEscape(*end);
        run = end + 1;
    }
}

// Control characters that XML forbids are left out.
void XMLWriter::writeEscape(char c) {
    switch (c) {
        case '&':
            put("&amp;");
            break;
        case '<':
            put("&lt;");
            break;
        case '>':
            put("&gt;");
            break;
        case '"':
            put("&quot;");
            break;
        case '\t':
            put("&#9;");
            break;
        case '\n':
            put("&#10;");
            break;
        case '\r':
            put("&#13;");
            break;
        case ' ':
            put("&#32;");
            break;
        default:
            break;
    }
}

void XMLWriter::beginLine() {
    put('\n');
    std::size_t blanks = std::min(depth_, kDeepestIndentation) * kIndentation;
    while (blanks > 0) {
        const std::size_t part = std::min(blanks, kBlanks.size());
        put(kBlanks.substr(0, part));
        blanks -= part;
    }
}

bool XMLWriter::isEmptyPair(pugi::xml_node element) {
    const std::ptrdiff_t offset = element.offset_debug();
    if (offset < 0) {
        return false;
    }
    const auto name = static_cast<std::size_t>(offset);
    while (nextPair_ < emptyPairs_.size() && emptyPairs_[nextPair_] < name) {
        ++nextPair_;
    }
    return nextPair_ < emptyPairs_.size() && emptyPairs_[nextPair_] == name;
}

void XMLWriter::put(std::string_view piece) {
    while (piece.size() > buffer_.size() - used_) {
        const std::size_t part = buffer_.size() - used_;
        std::memcpy(buffer_.data() + used_, piece.data(), part);
        used_ += part;
        piece.remove_prefix(part);
        flush();
    }
    std::memcpy(buffer_.data() + used_, piece.data(), piece.size());
    used_ += piece.size();
}

void XMLWriter::flush() {
    if (used_ != 0 && !stopped_) {
        stopped_ = !sink_({buffer_.data(), used_});
    }
    used_ = 0;
}

}  // namespace vornic
