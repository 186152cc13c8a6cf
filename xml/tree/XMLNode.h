#ifndef VORNIC_XML_TREE_XML_NODE_H
#define VORNIC_XML_TREE_XML_NODE_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pugi {
struct xml_node_struct;
struct xml_attribute_struct;
}  // namespace pugi

namespace vornic {

/// A handle on a node of an `XMLDocument`: the document node itself, an element, an attribute,
/// text, and so on. Handles are small values; they stay good while the document lives and the node
/// is not removed from it. A default-made handle is no node, tests false, and every operation on it
/// yields nothing. Operations never recurse on the depth of the tree.
class XMLNode {
  public:
    enum class Kind {
        none,
        document,
        element,
        attribute,
        text,
        cdata,
        comment,
        processingInstruction,
        documentType,
        declaration,
    };

    XMLNode() = default;

    explicit operator bool() const { return node_ != nullptr || attribute_ != nullptr; }
    friend bool operator==(const XMLNode&, const XMLNode&) = default;

    [[nodiscard]] Kind kind() const;
    [[nodiscard]] bool isElement() const { return kind() == Kind::element; }

    /// The name of an element, attribute or processing instruction; "" for other nodes.
    [[nodiscard]] std::string_view name() const;
    /// The string value as XPath 1.0 section 5 defines it: of an element or the document all text
    /// in it, of an attribute its value, of other nodes their content.
    [[nodiscard]] std::string stringValue() const;

    /// The parent; of an attribute the element that carries it; of the root element the document.
    [[nodiscard]] XMLNode parent() const;
    [[nodiscard]] XMLNode firstChild() const;
    [[nodiscard]] XMLNode nextSibling() const;
    [[nodiscard]] XMLNode previousSibling() const;

    /// The value of an element's attribute, references replaced; nothing when it has none of the
    /// name.
    [[nodiscard]] std::optional<std::string> attribute(std::string_view name) const;
    /// The element's attributes in their order.
    [[nodiscard]] std::vector<XMLNode> attributes() const;
    /// Sets an attribute of an element, making it when it is missing; one that is there keeps its
    /// place among the others. Control characters that XML forbids are left out when the value is
    /// written. @throws std::bad_alloc, with the element as it was.
    void setAttribute(std::string_view name, std::string_view value) const;
    /// Adds an attribute only when the element has none of the name. @return true when it was
    /// added. @throws std::bad_alloc, with the element as it was.
    bool addAttribute(std::string_view name, std::string_view value) const;

  private:
    friend class XMLDocument;
    friend class XMLWriter;
    friend struct std::hash<XMLNode>;
    explicit XMLNode(pugi::xml_node_struct* node, pugi::xml_attribute_struct* attribute = nullptr)
        : node_(node), attribute_(attribute) {}

    // For an attribute both are set: the element that carries it and the attribute.
    pugi::xml_node_struct* node_ = nullptr;
    pugi::xml_attribute_struct* attribute_ = nullptr;
};

}  // namespace vornic

template <>
struct std::hash<vornic::XMLNode> {
    [[nodiscard]] std::size_t operator()(const vornic::XMLNode& node) const noexcept {
        return std::hash<void*>{}(node.attribute_ != nullptr ? static_cast<void*>(node.attribute_)
                                                             : static_cast<void*>(node.node_));
    }
};

#endif
