#include "xml/writer/XMLWriter.h"

#include <cstring>

#include "xml/tree/XMLTree.h"
#include "xml/writer/XMLTextWriter.h"

namespace vornic {

namespace {

using xmltree::isNull;

bool isWhiteSpace(const char* text) {
    return text[std::strspn(text, " \t\r\n")] == '\0';
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

bool XMLWriter::write(pugi::xml_node document) {
    writeDeclaration(document);
    for (pugi::xml_node node = document.first_child(); node; node = node.next_sibling()) {
        if (node.type() != pugi::node_declaration) {
            writeTree(node);
            out_.put('\n');
        }
    }
    out_.flush();
    return !out_.stopped();
}

bool XMLWriter::write(pugi::xml_node head, std::string_view afterRootTag) {
    writeDeclaration(head);
    pugi::xml_node root = head.first_child();
    for (; root.type() != pugi::node_element; root = root.next_sibling()) {
        if (root.type() != pugi::node_declaration) {
            writeNode(root);
            out_.put('\n');
        }
    }
    out_.put('<');
    out_.putName(root.name());
    writeAttributes(root);
    out_.put('>');
    XMLTextWriter(out_).write(afterRootTag);
    out_.flush();
    return !out_.stopped();
}

void XMLWriter::writeDeclaration(pugi::xml_node document) {
    pugi::xml_node declaration = document.first_child();
    if (declaration.type() != pugi::node_declaration) {
        declaration = pugi::xml_node();
    }
    const pugi::xml_attribute version = declaration.attribute("version");
    out_.put("<?xml version=\"");
    out_.put(version ? version.value() : "1.0");
    out_.put("\" encoding=\"UTF-8\"");
    const pugi::xml_attribute standalone = declaration.attribute("standalone");
    if (standalone) {
        out_.put(" standalone=\"");
        out_.put(standalone.value());
        out_.put('"');
    }
    out_.put("?>\n");
}

void XMLWriter::writeTree(pugi::xml_node top) {
    pugi::xml_node node = top;
    while (!isNull(node) && !out_.stopped()) {
        const pugi::xml_node inside = writeNode(node);
        if (isNull(inside)) {
            node = goOn(node, top);
        } else {
            ++depth_;
            node = inside;
        }
        if (!isNull(node) && isNull(verbatim_)) {
            beginLine();
        }
    }
}

// Finds the node that follows one that is written whole, and closes the elements that end before
// it.
pugi::xml_node XMLWriter::goOn(pugi::xml_node node, pugi::xml_node top) {
    while (!xmltree::isSame(node, top)) {
        const pugi::xml_node next = node.next_sibling();
        if (!isNull(next)) {
            return next;
        }
        node = node.parent();
        --depth_;
        closeElement(node);
    }
    return {};
}

// Returns the first of the children, when there are some that have still to be written.
pugi::xml_node XMLWriter::writeNode(pugi::xml_node node) {
    switch (node.type()) {
        case pugi::node_element:
            return writeElement(node);
        case pugi::node_pcdata:
            writeText(node);
            break;
        case pugi::node_cdata:
            writeCDATA(node.value());
            break;
        case pugi::node_comment:
            out_.put("<!--");
            out_.put(node.value());
            out_.put("-->");
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
    return {};
}

pugi::xml_node XMLWriter::writeElement(pugi::xml_node element) {
    const char* const name = element.name();
    const pugi::xml_node child = element.first_child();
    out_.put('<');
    out_.putName(name);
    writeAttributes(element);
    if (isNull(child)) {
        if (!isEmptyPair(element)) {
            out_.put("/>");
            return {};
        }
        out_.put('>');
    } else {
        out_.put('>');
        if (child.type() != pugi::node_pcdata || !isNull(child.next_sibling())) {
            if (isNull(verbatim_) && isVerbatim(element, child)) {
                verbatim_ = element;
                hasOnlyBlanks_ = hasOnlyBlankText(element);
            }
            return child;
        }
        // Most elements hold nothing but text.
        out_.putText(child.value());
    }
    out_.put("</");
    out_.putName(name);
    out_.put('>');
    return {};
}

// True when the children are written without line breaks between them.
bool XMLWriter::isVerbatim(pugi::xml_node element, pugi::xml_node firstChild) const {
    if (!facts_.hasMixedContent) {
        return xmltree::isText(firstChild);
    }
    for (pugi::xml_node child = firstChild; !isNull(child); child = child.next_sibling()) {
        if (xmltree::isText(child)) {
            return true;
        }
    }
    return xmltree::preservesSpace(element);
}

void XMLWriter::closeElement(pugi::xml_node element) {
    if (isNull(verbatim_)) {
        beginLine();
    } else if (xmltree::isSame(verbatim_, element)) {
        verbatim_ = pugi::xml_node();
    }
    out_.put("</");
    out_.putName(element.name());
    out_.put('>');
}

void XMLWriter::writeAttributes(pugi::xml_node element) {
    for (pugi::xml_attribute attribute = element.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        out_.put(' ');
        out_.putName(attribute.name());
        out_.put("=\"");
        out_.putValue(attribute.value());
        out_.put('"');
    }
}

// White space that has a meaning although there is no other text around it is written so that it is
// not taken for indentation when the text is read again.
void XMLWriter::writeText(pugi::xml_node node) {
    const char* text = node.value();
    if (hasOnlyBlanks_ && *text != '\0' && xmltree::isSame(node.parent(), verbatim_)) {
        out_.putReference(*text);
        ++text;
    }
    out_.putText(text);
}

// The end mark of a section can't stand inside it, so a section that holds it is written as two.
void XMLWriter::writeCDATA(const char* content) {
    std::string_view rest = content;
    out_.put("<![CDATA[");
    for (std::size_t mark = rest.find("]]>"); mark != std::string_view::npos;
         mark = rest.find("]]>")) {
        out_.put(rest.substr(0, mark + 2));
        out_.put("]]><![CDATA[");
        rest.remove_prefix(mark + 2);
    }
    out_.put(rest);
    out_.put("]]>");
}

void XMLWriter::writeInstruction(pugi::xml_node node) {
    out_.put("<?");
    out_.putName(node.name());
    if (node.value()[0] != '\0') {
        out_.put(' ');
        out_.put(xmltree::rawContent(node));
    }
    out_.put("?>");
}

void XMLWriter::writeDocumentType(pugi::xml_node node) {
    out_.put("<!DOCTYPE ");
    out_.put(xmltree::rawContent(node));
    out_.put('>');
}

void XMLWriter::beginLine() {
    out_.put(out_.lineBeginning(depth_));
}

bool XMLWriter::isEmptyPair(pugi::xml_node element) {
    const std::ptrdiff_t offset = element.offset_debug();
    if (offset < 0) {
        return false;
    }
    const auto name = static_cast<std::size_t>(offset);
    const std::vector<std::size_t>& pairs = facts_.emptyPairs;
    while (nextPair_ < pairs.size() && pairs[nextPair_] < name) {
        ++nextPair_;
    }
    return nextPair_ < pairs.size() && pairs[nextPair_] == name;
}

}  // namespace vornic
