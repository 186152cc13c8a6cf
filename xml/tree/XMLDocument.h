#ifndef VORNIC_XML_TREE_XML_DOCUMENT_H
#define VORNIC_XML_TREE_XML_DOCUMENT_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "platform/files/FileSnapshot.h"
#include "xml/reader/XMLReader.h"
#include "xml/tree/XMLNode.h"
#include "xml/writer/XMLOutput.h"

namespace vornic {

/// A parsed document: tree, XPath 1.0 queries, serialisation. The tree is built only from text that
/// `readXML` has passed, and only when an operation first hands out a node of it: parsing costs one
/// pass over the text, and the operations that say so work without the tree. One thread at a time.
class XMLDocument {
  public:
    /// Parses text that is text already: whatever encoding its declaration names, it is UTF-8. A
    /// byte order mark at the very beginning is passed over.
    /// @return the document, or null with the slot filled. A success leaves the slot as it was.
    [[nodiscard]] static std::unique_ptr<XMLDocument> parse(std::string text, XMLMode mode,
                                                            ErrorSlot& error);
    /// A document of text that was read already.
    /// @param text without a byte order mark, well-formed.
    /// @param reading what `readXML` told of the text, in either mode and without a sink: no fault.
    [[nodiscard]] static std::unique_ptr<XMLDocument> fromReading(std::string text,
                                                                  XMLReading reading);
    /// Loads a file, decoded by its byte order mark or its encoding declaration (UTF-8, UTF-16,
    /// ISO-8859-1, windows-1252, macintosh).
    /// @return the document, or null with the slot filled.
    [[nodiscard]] static std::unique_ptr<XMLDocument> load(const std::string& path, XMLMode mode,
                                                           ErrorSlot& error);
    ~XMLDocument();
    XMLDocument(const XMLDocument&) = delete;
    XMLDocument& operator=(const XMLDocument&) = delete;

    /// How long the text is, in bytes, that the document was parsed from, as mended once something
    /// has looked into it.
    [[nodiscard]] std::size_t textSize() const;

    /// What the file at a path was when the document was loaded from it; nothing when the document
    /// comes from another path or from text.
    [[nodiscard]] std::optional<platform::FileSnapshot> snapshotOfFile(std::string_view path) const;

    /// What tolerant mode mended, in the order of the text.
    [[nodiscard]] const std::vector<XMLMend>& mends() const;

    /// The document node, the parent of the root element.
    [[nodiscard]] XMLNode documentNode() const;
    /// The root element; every parsed document has one.
    [[nodiscard]] XMLNode rootElement() const;

    /// The name of the root element. Needs no tree.
    [[nodiscard]] std::string rootName() const;
    /// The value of an attribute of the root element, or nothing when it has none of that name.
    /// Needs no tree.
    [[nodiscard]] std::optional<std::string> rootAttribute(std::string_view name) const;
    /// Sets an attribute of the root element, which is added when it is not there. Needs no tree.
    void setRootAttribute(std::string_view name, std::string_view value);
    /// True when the root element has an element of that name somewhere inside, which is what the
    /// query `.//name` finds from there. Needs no tree.
    [[nodiscard]] bool hasElementInRoot(std::string_view name) const;

    /// The name in the document type declaration, or nothing when there is no declaration. Needs no
    /// tree.
    [[nodiscard]] std::optional<std::string> documentTypeName() const;
    /// Replaces the document type declaration, or adds one before the root element, by one with the
    /// name and nothing else (`<!DOCTYPE name>`). Needs no tree.
    void setDocumentType(std::string_view name);

    /// Evaluates an XPath 1.0 expression that yields nodes. The context carries all that is needed,
    /// so that no document object is; a context that is no node finds nothing.
    /// @return the nodes in document order without duplicates, none when nothing matches. An
    ///     expression that cannot be compiled or yields no node set fills the slot and returns
    ///     none.
    [[nodiscard]] static std::vector<XMLNode> nodesForXPath(std::string_view query, XMLNode context,
                                                            ErrorSlot& error);
    /// True when the expression finds at least one node; stops at the first. Errors count as no.
    [[nodiscard]] static bool hasNodeForXPath(std::string_view query, XMLNode context);

    /// Removes a node and everything below it. A node that is no longer in the tree, because a node
    /// above it was removed before, must not be passed; see `removeNodes`.
    void removeNode(XMLNode node);
    /// Removes the nodes of a list in which some may lie inside others.
    void removeNodes(const std::vector<XMLNode>& nodes);

    /// Writes the document as UTF-8 with the declaration `<?xml version="1.0" encoding="UTF-8"?>`
    /// (version and standalone as they were): four blanks a level down to level 64 and no deeper
    /// (and none once they make more than 64 MiB and more than four times of the rest so far), text
    /// and mixed content to the letter, `<name/>` and `<name></name>` each as it was. Writing
    /// what was written changes nothing. Pieces are large, so that the sink may be slow to call.
    /// Needs no tree unless an element has text beside other nodes.
    /// @return false when the sink stopped it.
    bool serialize(const XMLSink& sink) const;
    /// `serialize` into one string.
    [[nodiscard]] std::string xmlString() const;

  private:
    struct State;
    static std::unique_ptr<XMLDocument> parse(std::string text, XMLForbidden forbidden,
                                              XMLMode mode, ErrorSlot& error);
    explicit XMLDocument(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace vornic

#endif
