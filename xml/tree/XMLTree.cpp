#include "xml/tree/XMLTree.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "xml/text/XMLCharacters.h"

namespace vornic::xmltree {

namespace {

using NodeKey = const pugi::xml_node_struct*;
using AttributeKey = const pugi::xml_attribute_struct*;

// Up to this many nodes are compared with each other, which may take the way to their common parent
// and from there to both of them.
constexpr std::size_t kFewNodes = 64;

// Finds the nodes of a set one after the other by walking over the whole tree.
class OrderedWalk {
  public:
    explicit OrderedWalk(const pugi::xpath_node_set& found) {
        for (const pugi::xpath_node& node : found) {
            if (node.attribute()) {
                attributes_.insert(node.attribute().internal_object());
                owners_.insert(node.parent().internal_object());
            } else {
                nodes_.insert(node.node().internal_object());
            }
        }
        result_.reserve(found.size());
    }

    std::vector<pugi::xpath_node> over(pugi::xml_node document) {
        for (pugi::xml_node node = document; !isNull(node); node = nextInside(node, document)) {
            const NodeKey key = node.internal_object();
            if (nodes_.count(key) != 0 && isNodeOfXPath(node)) {
                result_.emplace_back(node);
            }
            if (owners_.count(key) != 0) {
                addAttributes(node);
            }
        }
        return std::move(result_);
    }

  private:
    void addAttributes(pugi::xml_node node) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            if (attributes_.count(attribute.internal_object()) != 0) {
                result_.emplace_back(attribute, node);
            }
        }
    }

    std::unordered_set<NodeKey> nodes_;
    std::unordered_set<NodeKey> owners_;
    std::unordered_set<AttributeKey> attributes_;
    std::vector<pugi::xpath_node> result_;
};

bool isBlankText(pugi::xml_node node) {
    if (node.type() != pugi::node_pcdata) {
        return false;
    }
    const std::string_view text = node.value();
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return xmlchars::is(c, xmlchars::kSpace); });
}

bool isReferenced(pugi::xml_node text, const std::vector<std::size_t>& offsets) {
    const std::ptrdiff_t offset = text.offset_debug();
    return offset >= 0 &&
           std::binary_search(offsets.begin(), offsets.end(), static_cast<std::size_t>(offset));
}

bool keepsBlanks(pugi::xml_node element, const std::vector<std::size_t>& referencedBlanks) {
    if (preservesSpace(element)) {
        return true;
    }
    return std::any_of(element.begin(), element.end(), [&](pugi::xml_node child) {
        return isText(child) && (!isBlankText(child) || isReferenced(child, referencedBlanks));
    });
}

void removeBlankChildren(pugi::xml_node element) {
    for (pugi::xml_node child = element.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        if (isBlankText(child)) {
            element.remove_child(child);
        }
        child = next;
    }
}

// True for nodes in document order, none of which was made by the program.
bool isAscending(const std::vector<pugi::xml_node>& nodes) {
    std::ptrdiff_t last = -1;
    return std::all_of(nodes.begin(), nodes.end(), [&last](pugi::xml_node node) {
        const std::ptrdiff_t offset = node.offset_debug();
        const bool ascends = offset > last;
        last = offset;
        return ascends;
    });
}

// Tells for nodes whether they lie inside one of a set of nodes. What was found on the way up is
// kept, so that many nodes below a long way up cost no more than one.
class Enclosure {
  public:
    explicit Enclosure(const std::vector<pugi::xml_node>& nodes) {
        for (const pugi::xml_node& node : nodes) {
            nodes_.insert(node.internal_object());
        }
    }

    bool encloses(pugi::xml_node node) {
        std::vector<NodeKey> way;
        bool enclosed = false;
        for (node = node.parent(); node; node = node.parent()) {
            const NodeKey key = node.internal_object();
            const auto known = known_.find(key);
            if (known != known_.end() || nodes_.count(key) != 0) {
                enclosed = known == known_.end() || known->second;
                break;
            }
            way.push_back(key);
        }
        for (const NodeKey key : way) {
            known_.emplace(key, enclosed);
        }
        return enclosed;
    }

  private:
    std::unordered_set<NodeKey> nodes_;
    std::unordered_map<NodeKey, bool> known_;
};

}  // namespace

void appendAttribute(pugi::xml_node element, std::string_view name, std::string_view value) {
    pugi::xml_attribute attribute = element.append_attribute(std::string(name).c_str());
    // An attribute whose name could not be stored is there all the same, without one.
    if (attribute.name() != name || !attribute.set_value(value.data(), value.size())) {
        element.remove_attribute(attribute);
        throw std::bad_alloc();
    }
}

std::string rawContent(pugi::xml_node node) {
    std::string content;
    for (const char* text = node.value(); *text != '\0'; ++text) {
        if (*text != '\r') {
            content += *text;
        } else if (text[1] != '\n') {
            content += '\n';
        }
    }
    return content;
}

pugi::xml_node nextInside(pugi::xml_node node, pugi::xml_node top) {
    const pugi::xml_node child = node.first_child();
    return isNull(child) ? nextPast(node, top) : child;
}

pugi::xml_node nextPast(pugi::xml_node node, pugi::xml_node top) {
    while (!isSame(node, top)) {
        const pugi::xml_node next = node.next_sibling();
        if (!isNull(next)) {
            return next;
        }
        node = node.parent();
    }
    return {};
}

bool preservesSpace(pugi::xml_node element) {
    for (pugi::xml_attribute attribute = element.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        const char* const name = attribute.name();
        if (name[0] == 'x' && std::string_view(name) == "xml:space") {
            return std::string_view(attribute.value()) == "preserve";
        }
    }
    return false;
}

bool isNodeOfXPath(pugi::xml_node node) {
    return node.type() != pugi::node_declaration && node.type() != pugi::node_doctype;
}

std::vector<pugi::xpath_node> inDocumentOrder(pugi::xpath_node_set found) {
    if (found.type() == pugi::xpath_node_set::type_unsorted && found.size() > kFewNodes) {
        const pugi::xpath_node first = found[0];
        const pugi::xml_node any = first.attribute() ? first.parent() : first.node();
        return OrderedWalk(found).over(any.root());
    }
    found.sort();
    std::vector<pugi::xpath_node> result;
    result.reserve(found.size());
    std::copy_if(found.begin(), found.end(), std::back_inserter(result),
                 [](const pugi::xpath_node& node) { return isNodeOfXPath(node.node()); });
    return result;
}

void remove(pugi::xml_node node) {
    // Children before their parents: removing a node that has some would recurse.
    pugi::xml_node current = node;
    while (current) {
        const pugi::xml_node child = current.first_child();
        if (child) {
            current = child;
            continue;
        }
        pugi::xml_node parent = current.parent();
        const bool done = current == node;
        parent.remove_child(current);
        current = done ? pugi::xml_node() : parent;
    }
}

void removeAll(const std::vector<pugi::xml_node>& nodes) {
    if (isAscending(nodes)) {
        // What lies inside a node comes after it.
        std::for_each(nodes.rbegin(), nodes.rend(), remove);
        return;
    }
    Enclosure enclosure(nodes);
    std::unordered_set<NodeKey> outermost;
    for (const pugi::xml_node& node : nodes) {
        if (!enclosure.encloses(node)) {
            outermost.insert(node.internal_object());
        }
    }
    for (const pugi::xml_node& node : nodes) {
        // A node that is no longer in the set is gone and must not be touched.
        if (outermost.erase(node.internal_object()) != 0) {
            remove(node);
        }
    }
}

void removeBlanksBetweenNodes(pugi::xml_node document,
                              const std::vector<std::size_t>& referencedBlanks) {
    for (pugi::xml_node node = document.first_child(); !isNull(node);) {
        if (keepsBlanks(node, referencedBlanks)) {
            node = nextPast(node, document);
            continue;
        }
        if (!isSame(node.first_child(), node.last_child())) {
            removeBlankChildren(node);
        }
        node = nextInside(node, document);
    }
}

}  // namespace vornic::xmltree
