#include "xml/tree/XMLDocument.h"

#include <new>

#include <pugixml.hpp>

#include "base/Exception.h"
#include "platform/files/FileSystem.h"
#include "xml/text/TextDecoding.h"
#include "xml/text/XMLCharacters.h"
#include "xml/text/XMLErrorCode.h"
#include "xml/tree/XMLTree.h"
#include "xml/writer/XMLWriter.h"

namespace vornic {

struct XMLDocument::State {
    // The tree's names and values lie in the text, which therefore stays where it is.
    std::string text;
    // Where the document begins in the text, after a byte order mark.
    std::size_t offset = 0;
    XMLReading reading;
    XMLSourceFacts facts;
    // The file that it was loaded from.
    std::string path;
    std::optional<platform::FileSnapshot> snapshot;

    /// The whole document.
    pugi::xml_document& tree() {
        if (!isBuilt_) {
            buildTree();
        }
        return tree_;
    }
    /// The document type declaration, the root element with its attributes, and what stands before
    /// them; the rest only if the tree has been built.
    pugi::xml_document& head() {
        if (!isBuilt_ && !head_.first_child()) {
            buildHead();
        }
        return isBuilt_ ? tree_ : head_;
    }
    pugi::xml_node root() { return head().document_element(); }
    /// True when everything inside the root element is as the text has it.
    [[nodiscard]] bool isInText() const { return !isBuilt_ && reading.contentOffset != 0; }
    /// What follows the root element's start tag. For a document that is in the text.
    std::string_view content() {
        applyEdits();
        return std::string_view(text).substr(offset + reading.contentOffset);
    }

  private:
    void applyEdits();
    void buildTree();
    void buildHead();
    void parse(char* begin, std::size_t length, pugi::xml_document& into);
    void adoptHead();
    void forget();

    pugi::xml_document tree_;
    bool isBuilt_ = false;
    std::string headText_;
    pugi::xml_document head_;
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

void setDocumentTypeOf(pugi::xml_document& tree, std::string_view declaration) {
    pugi::xml_node type = documentTypeOf(tree);
    const bool isNew = !type;
    if (isNew) {
        type = tree.insert_child_before(pugi::node_doctype, tree.document_element());
    }
    if (!type.set_value(declaration.data(), declaration.size())) {
        if (isNew) {
            tree.remove_child(type);
        }
        throw std::bad_alloc();
    }
}

constexpr std::string_view kCommentStart = "!--";

// True when a tag in the content of a root element, a text that `readXML` has passed, begins an
// element of that name.
bool hasStartTag(std::string_view content, std::string_view name) {
    std::size_t at = content.find('<');
    while (at != std::string_view::npos) {
        const std::string_view markup = content.substr(at + 1);
        std::string_view end = "<";
        std::size_t inside = at + 1;
        if (markup.starts_with(kCommentStart)) {
            end = "-->";
            // The mark that ends a comment shares no hyphen with the one that begins it.
            inside += kCommentStart.size();
        } else if (markup.starts_with("![CDATA[")) {
            end = "]]>";
        } else if (markup.starts_with('?')) {
            end = "?>";
        } else if (markup.starts_with(name) &&
                   xmlchars::nameTokenLength(markup.data(), markup.data() + markup.size()) ==
                       name.size()) {
            return true;
        }
        at = content.find(end, inside);
        if (at != std::string_view::npos && end != "<") {
            at = content.find('<', at);
        }
    }
    return false;
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

void XMLDocument::State::applyEdits() {
    if (!reading.edits.empty()) {
        text = applyXMLEdits(std::string_view(text).substr(offset), reading.edits);
        offset = 0;
        reading.edits = {};
    }
}

void XMLDocument::State::buildTree() {
    applyEdits();
    parse(text.data() + offset, text.size() - offset, tree_);
    if (facts.hasMixedContent) {
        xmltree::removeBlanksBetweenNodes(tree_, reading.referencedBlanks);
    }
    try {
        adoptHead();
    } catch (...) {
        forget();
        throw;
    }
    isBuilt_ = true;
}

void XMLDocument::State::buildHead() {
    if (reading.contentOffset == 0) {
        buildTree();
        return;
    }
    applyEdits();
    headText_ = std::string_view(text).substr(offset, reading.contentOffset);
    // An element that is closed at once needs no end tag.
    headText_.back() = '/';
    headText_ += '>';
    parse(headText_.data(), headText_.size(), head_);
}

void XMLDocument::State::parse(char* begin, std::size_t length, pugi::xml_document& into) {
    const unsigned blanks =
        facts.hasMixedContent ? pugi::parse_ws_pcdata : pugi::parse_ws_pcdata_single;
    const pugi::xml_parse_result result =
        into.load_buffer_inplace(begin, length, pugi::parse_full | blanks, pugi::encoding_utf8);
    if (result) {
        return;
    }
    forget();
    if (result.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    throw platform::Exception("XMLTreeException", result.description());
}

// What is left of the text and of a tree that could not be finished must not be taken for the
// document.
void XMLDocument::State::forget() {
    text.clear();
    offset = 0;
    reading.contentOffset = 0;
    tree_.reset();
    head_.reset();
}

// What has been changed in the head so far is changed in the tree, too. Both were made from one
// text, and in the head attributes are changed and added but never removed, so that the two lists
// run side by side.
void XMLDocument::State::adoptHead() {
    const pugi::xml_node changedRoot = head_.document_element();
    if (!changedRoot) {
        return;
    }
    const pugi::xml_node root = tree_.document_element();
    pugi::xml_attribute adopted = root.first_attribute();
    for (const pugi::xml_attribute& attribute : changedRoot.attributes()) {
        const std::string_view value = attribute.value();
        if (!adopted) {
            xmltree::appendAttribute(root, attribute.name(), value);
            continue;
        }
        if (adopted.value() != value) {
            xmltree::require(adopted.set_value(value.data(), value.size()));
        }
        adopted = adopted.next_attribute();
    }
    if (const pugi::xml_node type = documentTypeOf(head_)) {
        setDocumentTypeOf(tree_, type.value());
    }
    head_.reset();
    headText_ = {};
}

XMLDocument::XMLDocument(std::unique_ptr<State> state) : state_(std::move(state)) {}

XMLDocument::~XMLDocument() = default;

std::unique_ptr<XMLDocument> XMLDocument::parse(std::string text, XMLMode mode, ErrorSlot& error) {
    return parse(std::move(text), XMLForbidden::unknown, mode, error);
}

std::unique_ptr<XMLDocument> XMLDocument::parse(std::string text, XMLForbidden forbidden,
                                                XMLMode mode, ErrorSlot& error) {
    const std::size_t offset = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    XMLReading reading = readXML(std::string_view(text).substr(offset), mode, nullptr, nullptr,
                                 XMLKeeping::nothing, forbidden);
    if (reading.fault) {
        error = std::move(reading.fault);
        return nullptr;
    }
    std::unique_ptr<XMLDocument> document = fromReading(std::move(text), std::move(reading));
    document->state_->offset = offset;
    return document;
}

std::unique_ptr<XMLDocument> XMLDocument::fromReading(std::string text, XMLReading reading) {
    auto state = std::make_unique<State>();
    state->text = std::move(text);
    state->reading = std::move(reading);
    state->facts = {std::move(state->reading.emptyPairs), state->reading.hasMixedContent};
    return std::unique_ptr<XMLDocument>(new XMLDocument(std::move(state)));
}

std::unique_ptr<XMLDocument> XMLDocument::load(const std::string& path, XMLMode mode,
                                               ErrorSlot& error) {
    platform::FileSnapshot snapshot;
    TextSurvey survey;
    std::optional<std::string> bytes = platform::readFileForChange(path, survey, snapshot, error);
    if (!bytes) {
        return nullptr;
    }
    TextDecoding how;
    std::optional<std::string> text = decodeXMLText(std::move(*bytes), survey, how, error);
    std::unique_ptr<XMLDocument> document =
        text ? parse(std::move(*text), how.forbidden, mode, error) : nullptr;
    if (document) {
        document->state_->path = path;
        document->state_->snapshot = snapshot;
    }
    return document;
}

std::optional<platform::FileSnapshot> XMLDocument::snapshotOfFile(std::string_view path) const {
    return state_->path == path ? state_->snapshot : std::nullopt;
}

std::size_t XMLDocument::textSize() const {
    return state_->text.size() - state_->offset;
}

const std::vector<XMLMend>& XMLDocument::mends() const {
    return state_->reading.mends;
}

XMLNode XMLDocument::documentNode() const {
    return XMLNode(state_->tree().internal_object());
}

XMLNode XMLDocument::rootElement() const {
    return XMLNode(state_->tree().document_element().internal_object());
}

std::string XMLDocument::rootName() const {
    return state_->root().name();
}

std::optional<std::string> XMLDocument::rootAttribute(std::string_view name) const {
    return XMLNode(state_->root().internal_object()).attribute(name);
}

void XMLDocument::setRootAttribute(std::string_view name, std::string_view value) {
    XMLNode(state_->root().internal_object()).setAttribute(name, value);
}

bool XMLDocument::hasElementInRoot(std::string_view name) const {
    return state_->isInText() ? hasStartTag(state_->content(), name)
                              : hasNodeForXPath(".//" + std::string(name), rootElement());
}

std::optional<std::string> XMLDocument::documentTypeName() const {
    const pugi::xml_node type = documentTypeOf(state_->head());
    if (!type) {
        return std::nullopt;
    }
    const std::string_view declaration = type.value();
    return std::string(declaration.substr(0, declaration.find_first_of(" \t\r\n[")));
}

void XMLDocument::setDocumentType(std::string_view name) {
    setDocumentTypeOf(state_->head(), name);
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
    XMLWriter writer(sink, state_->facts);
    return state_->isInText() && !state_->facts.hasMixedContent
               ? writer.write(state_->head(), state_->content())
               : writer.write(state_->tree());
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
