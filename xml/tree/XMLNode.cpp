#include "xml/tree/XMLNode.h"

#include <pugixml.hpp>

#include "xml/tree/XMLTree.h"

namespace vornic {

namespace {

pugi::xml_attribute attributeNamed(pugi::xml_node node, std::string_view name) {
    pugi::xml_attribute attribute = node.first_attribute();
    while (attribute && attribute.name() != name) {
        attribute = attribute.next_attribute();
    }
    return attribute;
}

std::string textBelow(pugi::xml_node top) {
    std::string text;
    for (pugi::xml_node node = top; !xmltree::isNull(node); node = xmltree::nextInside(node, top)) {
        if (xmltree::isText(node)) {
            text += node.value();
        }
    }
    return text;
}

}  // namespace

XMLNode::Kind XMLNode::kind() const {
    if (attribute_ != nullptr) {
        return Kind::attribute;
    }
    switch (pugi::xml_node(node_).type()) {
        case pugi::node_document:
            return Kind::document;
        case pugi::node_element:
            return Kind::element;
        case pugi::node_pcdata:
            return Kind::text;
        case pugi::node_cdata:
            return Kind::cdata;
        case pugi::node_comment:
            return Kind::comment;
        case pugi::node_pi:
            return Kind::processingInstruction;
        case pugi::node_declaration:
            return Kind::declaration;
        case pugi::node_doctype:
            return Kind::documentType;
        case pugi::node_null:
            break;
    }
    return Kind::none;
}

std::string_view XMLNode::name() const {
    switch (kind()) {
        case Kind::attribute:
            return pugi::xml_attribute(attribute_).name();
        case Kind::element:
        case Kind::processingInstruction:
            return pugi::xml_node(node_).name();
        default:
            return {};
    }
}

std::string XMLNode::stringValue() const {
    switch (kind()) {
        case Kind::attribute:
            return pugi::xml_attribute(attribute_).value();
        case Kind::document:
        case Kind::element:
            return textBelow(pugi::xml_node(node_));
        case Kind::processingInstruction:
        case Kind::documentType:
            return xmltree::rawContent(pugi::xml_node(node_));
        default:
            return pugi::xml_node(node_).value();
    }
}

XMLNode XMLNode::parent() const {
    if (attribute_ != nullptr) {
        return XMLNode(node_);
    }
    return XMLNode(pugi::xml_node(node_).parent().internal_object());
}

XMLNode XMLNode::firstChild() const {
    return attribute_ != nullptr ? XMLNode()
                                 : XMLNode(pugi::xml_node(node_).first_child().internal_object());
}

XMLNode XMLNode::nextSibling() const {
    return attribute_ != nullptr ? XMLNode()
                                 : XMLNode(pugi::xml_node(node_).next_sibling().internal_object());
}

XMLNode XMLNode::previousSibling() const {
    return attribute_ != nullptr
               ? XMLNode()
               : XMLNode(pugi::xml_node(node_).previous_sibling().internal_object());
}

std::optional<std::string> XMLNode::attribute(std::string_view name) const {
    if (!isElement()) {
        return std::nullopt;
    }
    const pugi::xml_attribute found = attributeNamed(pugi::xml_node(node_), name);
    return found ? std::optional<std::string>(found.value()) : std::nullopt;
}

std::vector<XMLNode> XMLNode::attributes() const {
    std::vector<XMLNode> result;
    if (isElement()) {
        for (const pugi::xml_attribute& attribute : pugi::xml_node(node_).attributes()) {
            result.push_back(XMLNode(node_, attribute.internal_object()));
        }
    }
    return result;
}

void XMLNode::setAttribute(std::string_view name, std::string_view value) const {
    if (!isElement()) {
        return;
    }
    pugi::xml_attribute found = attributeNamed(pugi::xml_node(node_), name);
    if (found) {
        xmltree::require(found.set_value(value.data(), value.size()));
    } else {
        xmltree::appendAttribute(pugi::xml_node(node_), name, value);
    }
}

bool XMLNode::addAttribute(std::string_view name, std::string_view value) const {
    if (!isElement() || attributeNamed(pugi::xml_node(node_), name)) {
        return false;
    }
    xmltree::appendAttribute(pugi::xml_node(node_), name, value);
    return true;
}

}  // namespace vornic
