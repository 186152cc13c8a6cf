#include "xml/XMLDocument.h"

#include <new>

#include <pugixml.hpp>

#include "platform/Exception.h"
#include "platform/FileSystem.h"
#include "xml/TextDecoding.h"
#include "xml/XMLCharacters.h"
#include "xml/XMLErrorCode.h"
#include "xml/XMLTree.h"
#include "xml/XMLWriter.h"

namespace vornic {

// The tree is built when it is first asked for: whoever only wants to know whether a text is
// well-formed does not pay for it.
struct XMLDocument::State {
    // The tree's names and values lie in the text, which therefore stays where it is.
    std::string text;
    // Where the document begins in the text, after a byte order mark.
    std::size_t offset = 0;
    XMLReading reading;
    XMLSourceFacts facts;
    pugi::xml_document tree;
    bool isBuilt = false;

    pugi::xml_document& builtTree() {
        if (!isBuilt) {
            buildTree();
            isBuilt = true;
        }
        return tree;
    }

  private:
    void buildTree();
};

namespace {

Error xmlError(XMLErrorCode code, std::string description) {
    return {std::string(kXMLErrorDomain), static_cast<int>(code), std::move(description)};
}

pugi::xml_node documentTypeOf(const pugi::xml_document& tree) {
    for (const pugi::xml_node& node : tree.children()) {
        if (node.type() == pugi::node_doctype) {
            return node;
        }
    }
    return {};
}

// Whether there is a first node is whether there is one at all, which is found out sooner. Only
// after a name, an asterisk or a bracket can the end of the query be such a predicate.
std::string_view withoutFirstPredicate(std::string_view query) {
    constexpr std::string_view kFirst = "[1]";
    while (query.size() > kFirst.size() && query.ends_with(kFirst)) {
        const char before = query[query.size() - kFirst.size() - 1];
        const bool endsStep = (xmlchars::is(before, xmlchars::kName) && before != '.') ||
                              before == '*' || before == ']' || before == ')';
        if (!endsStep) {
            break;
        }
        query.remove_suffix(kFirst.size());
    }
    return query;
}

pugi::xpath_node contextOf(pugi::xml_node_struct* node, pugi::xml_attribute_struct* attribute) {
    return attribute == nullptr
               ? pugi::xpath_node(pugi::xml_node(node))
               : pugi::xpath_node(pugi::xml_attribute(attribute), pugi::xml_node(node));
}

}  // namespace

void XMLDocument::State::buildTree() {
    if (!reading.edits.empty()) {
        text = applyXMLEdits(std::string_view(text).substr(offset), reading.edits);
        offset = 0;
        reading.edits = {};
    }
    const unsigned blanks =
        facts.hasMixedContent ? pugi::parse_ws_pcdata : pugi::parse_ws_pcdata_single;
    const pugi::xml_parse_result result = tree.load_buffer_inplace(
        text.data() + offset, text.size() - offset, pugi::parse_full | blanks, pugi::encoding_utf8);
    if (!result) {
        // What is left of the text must not be taken for the document.
        text.clear();
        offset = 0;
        if (result.status == pugi::status_out_of_memory) {
            throw std::bad_alloc();
        }
        throw platform::Exception("XMLTreeException", result.description());
    }
    if (facts.hasMixedContent) {
        xmltree::removeBlanksBetweenNodes(tree, reading.referencedBlanks);
    }
}

XMLDocument::XMLDocument(std::unique_ptr<State> state) : state_(std::move(state)) {}

XMLDocument::~XMLDocument() = default;

std::unique_ptr<XMLDocument> XMLDocument::parse(std::string text, XMLMode mode, ErrorSlot& error) {
    auto state = std::make_unique<State>();
    state->text = std::move(text);
    state->offset = state->text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    state->reading = readXML(std::string_view(state->text).substr(state->offset), mode);
    if (state->reading.fault) {
        error = std::move(state->reading.fault);
        return nullptr;
    }
    state->facts = {std::move(state->reading.emptyPairs), state->reading.hasMixedContent};
    return std::unique_ptr<XMLDocument>(new XMLDocument(std::move(state)));
}

std::unique_ptr<XMLDocument> XMLDocument::load(const std::string& path, XMLMode mode,
                                               ErrorSlot& error) {
    std::optional<std::string> bytes = platform::readFile(path, error);
    if (!bytes) {
        return nullptr;
    }
    std::optional<std::string> text = decodeXMLBytes(std::move(*bytes), error);
    return text ? parse(std::move(*text), mode, error) : nullptr;
}

const std::vector<XMLMend>& XMLDocument::mends() const {
    return state_->reading.mends;
}

XMLNode XMLDocument::documentNode() const {
    return XMLNode(state_->builtTree().internal_object());
}

XMLNode XMLDocument::rootElement() const {
    return XMLNode(state_->builtTree().document_element().internal_object());
}

std::optional<std::string> XMLDocument::documentTypeName() const {
    const pugi::xml_node type = documentTypeOf(state_->builtTree());
    if (!type) {
        return std::nullopt;
    }
    const std::string_view declaration = type.value();
    return std::string(declaration.substr(0, declaration.find_first_of(" \t\r\n[")));
}

void XMLDocument::setDocumentType(std::string_view name) {
    pugi::xml_document& tree = state_->builtTree();
    pugi::xml_node type = documentTypeOf(tree);
    if (!type) {
        type = tree.insert_child_before(pugi::node_doctype, tree.document_element());
    }
    type.set_value(name.data(), name.size());
}

std::vector<XMLNode> XMLDocument::nodesForXPath(std::string_view query, XMLNode context,
                                                ErrorSlot& error) {
    std::vector<XMLNode> result;
    if (!context) {
        return result;
    }
    try {
        const pugi::xpath_query compiled(std::string(query).c_str());
        const std::vector<pugi::xpath_node> nodes = xmltree::inDocumentOrder(
            compiled.evaluate_node_set(contextOf(context.node_, context.attribute_)));
        result.reserve(nodes.size());
        for (const pugi::xpath_node& node : nodes) {
            result.push_back(node.attribute() ? XMLNode(node.parent().internal_object(),
                                                        node.attribute().internal_object())
                                              : XMLNode(node.node().internal_object()));
        }
    } catch (const pugi::xpath_exception& exception) {
        error = xmlError(XMLErrorCode::malformedQuery,
                         std::string("The query is not valid: ") + exception.what() + ".");
    }
    return result;
}

bool XMLDocument::hasNodeForXPath(std::string_view query, XMLNode context) {
    if (!context) {
        return false;
    }
    query = withoutFirstPredicate(query);
    try {
        const pugi::xpath_query compiled(std::string(query).c_str());
        const pugi::xpath_node found =
            compiled.evaluate_node(contextOf(context.node_, context.attribute_));
        if (!found || xmltree::isNodeOfXPath(found.node())) {
            return static_cast<bool>(found);
        }
    } catch (const pugi::xpath_exception&) {
        return false;
    }
    ErrorSlot ignored;
    return !nodesForXPath(query, context, ignored).empty();
}

void XMLDocument::removeNode(XMLNode node) {
    if (node.attribute_ != nullptr) {
        pugi::xml_node(node.node_).remove_attribute(pugi::xml_attribute(node.attribute_));
    } else {
        xmltree::remove(pugi::xml_node(node.node_));
    }
}

void XMLDocument::removeNodes(const std::vector<XMLNode>& nodes) {
    std::vector<pugi::xml_node> found;
    for (const XMLNode& node : nodes) {
        if (node.attribute_ != nullptr) {
            removeNode(node);
        } else {
            found.emplace_back(node.node_);
        }
    }
    xmltree::removeAll(found);
}

bool XMLDocument::serialize(const XMLSink& sink) const {
    return XMLWriter(sink, state_->facts).write(state_->builtTree());
}

std::string XMLDocument::xmlString() const {
    std::string result;
    serialize([&result](std::string_view piece) {
        result += piece;
        return true;
    });
    return result;
}

}  // namespace vornic
