#ifndef VORNIC_XML_TREE_XML_TREE_H
#define VORNIC_XML_TREE_XML_TREE_H

#include <bit>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

/// Walks over the nodes of a pugixml tree and changes to it, none of which recurse on its depth.
namespace vornic::xmltree {

/// A handle is nothing but a pointer, and asking the library about it is a call, which the loops
/// over all nodes can do without.
[[nodiscard]] inline bool isNull(pugi::xml_node node) {
    return std::bit_cast<pugi::xml_node_struct*>(node) == nullptr;
}
[[nodiscard]] inline bool isSame(pugi::xml_node left, pugi::xml_node right) {
    return std::bit_cast<pugi::xml_node_struct*>(left) ==
           std::bit_cast<pugi::xml_node_struct*>(right);
}

/// What the library could not do for want of memory must not pass for done.
/// @throws std::bad_alloc when it is not done.
inline void require(bool isDone) {
    if (!isDone) {
        throw std::bad_alloc();
    }
}

/// Adds an attribute behind the others, or leaves the element as it was.
/// @throws std::bad_alloc
void appendAttribute(pugi::xml_node element, std::string_view name, std::string_view value);

/// True for text and CDATA sections.
[[nodiscard]] inline bool isText(pugi::xml_node node) {
    const pugi::xml_node_type type = node.type();
    return type == pugi::node_pcdata || type == pugi::node_cdata;
}

/// The content of a processing instruction or document type declaration with its line ends as every
/// reader of XML takes them. (The library does that itself for all other nodes.)
[[nodiscard]] std::string rawContent(pugi::xml_node node);

/// The node that follows in document order inside the tree below `top`, or null after the last.
[[nodiscard]] pugi::xml_node nextInside(pugi::xml_node node, pugi::xml_node top);
/// The same, passing over what is below `node`.
[[nodiscard]] pugi::xml_node nextPast(pugi::xml_node node, pugi::xml_node top);

/// True when white space inside the element has a meaning: it has an attribute
/// xml:space="preserve".
[[nodiscard]] bool preservesSpace(pugi::xml_node element);

/// False for the declaration and the document type, which XPath does not know.
[[nodiscard]] bool isNodeOfXPath(pugi::xml_node node);

/// What an XPath query found, in document order and without what XPath does not know, in time that
/// is linear in the tree.
[[nodiscard]] std::vector<pugi::xpath_node> inDocumentOrder(pugi::xpath_node_set found);

/// Removes a node with everything below it.
void remove(pugi::xml_node node);

/// Removes the nodes of a list in any order, in which some may lie inside others or come twice.
void removeAll(const std::vector<pugi::xml_node>& nodes);

/// Removes the white space between the children of elements that hold nothing but white space,
/// elements, comments and processing instructions; where there is other text, and in everything
/// below, white space stays. White space that is an element's only content stays, too.
/// @param referencedBlanks offsets, ascending, of white space that was written as character
///     references and counts as other text.
void removeBlanksBetweenNodes(pugi::xml_node document,
                              const std::vector<std::size_t>& referencedBlanks);

}  // namespace vornic::xmltree

#endif
