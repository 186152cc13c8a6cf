#ifndef VORNIC_XML_TREE_QM_XML_PARSER_H
#define VORNIC_XML_TREE_QM_XML_PARSER_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xml/tree/XMLNode.h"

namespace vornic {

/// Queries on XML trees, and what Final Cut Pro XML files have by convention: names and UUIDs in
/// child elements, percent-escaped text, clip items that transitions join to their neighbours.
///
/// All operations are class-level, hold no data and may be called from the thread that holds the
/// document. "None" is a node that tests false, an absent optional or an absent list. A missing
/// node as argument finds nothing. A query that fails counts as one that finds nothing. Only
/// `escapeQueryString`, and so every operation that says "escaped", can raise.
class QMXMLParser {
  public:
    using Nodes = std::vector<XMLNode>;

    /// Writes a query in the form in which queries are run, by UTF-16 code units: 160 and above as
    /// "&#%i;" (a character outside the basic plane as two of them), an ampersand that does not
    /// begin
    /// "&amp;" as "&amp;", a carriage return as "&#13;"; any other unit below 20 is dropped and
    /// logged; the rest, the units 20 to 31 too, is kept. A byte that is no UTF-8 counts as U+FFFD.
    /// An "&amp;" is recognised wherever all five units of it are there.
    /// @throws platform::RangeException for a string of fewer than four units with an ampersand.
    [[nodiscard]] static std::string escapeQueryString(std::string_view query);

    /// The nodes that the escaped query finds, in document order.
    /// @return none when the query fails, which is logged; an empty list when nothing is found.
    [[nodiscard]] static std::optional<Nodes> nodesForQuery(std::string_view query,
                                                            XMLNode inElement);
    /// The first node of `nodesForQuery`, or none.
    [[nodiscard]] static XMLNode nodeForQuery(std::string_view query, XMLNode inElement);
    /// The string value of the first node that the escaped query finds, or none.
    [[nodiscard]] static std::optional<std::string> stringValueForQuery(std::string_view query,
                                                                        XMLNode inElement);
    /// The string values of all nodes that the escaped query finds.
    /// @return none, and never an empty list, when nothing is found.
    [[nodiscard]] static std::optional<std::vector<std::string>> stringValuesForQuery(
        std::string_view query, XMLNode node);
    /// The results of the escaped query on each node, one after the other, duplicates kept.
    [[nodiscard]] static Nodes queryNodes(const Nodes& nodes, std::string_view withXPath);
    /// The results of several escaped queries, each node once, where it was first seen. After a
    /// query that failed, each later query logs that error again.
    [[nodiscard]] static Nodes nodeNodesFromQueries(XMLNode node,
                                                    const std::vector<std::string>& queries);

    /// The attribute "id", percent-decoded as ASCII.
    /// @return none when there is no such attribute or it cannot be decoded.
    [[nodiscard]] static std::optional<std::string> idAttributeForNode(XMLNode node);
    /// The path of a URL (RFC 3986: scheme, authority, query and fragment cut off), percent escapes
    /// decoded, so that a file URL gives its path on the disk, as bytes. A path alone is a URL too.
    /// "%" that begins no escape, and the escape of NUL, which no path can hold, stand for
    /// themselves.
    /// @return none for none.
    [[nodiscard]] static std::optional<std::string> filenameFromPathURLString(
        const std::optional<std::string>& string);

    /// `nameForNode` that looks below the immediate children too.
    [[nodiscard]] static std::optional<std::string> nameForNode(XMLNode node);
    /// The text of the node's child "name"; unless only an immediate child is asked for, else that
    /// of the first "name" below it, else the attribute "id". Percent-decoded as ASCII, or as it
    /// stands when it cannot be decoded.
    [[nodiscard]] static std::optional<std::string> nameForNode(XMLNode node,
                                                                bool immediateChildOnly);
    /// `uuidForNode` that looks below the immediate children too.
    [[nodiscard]] static std::optional<std::string> uuidForNode(XMLNode node);
    /// The same as `nameForNode` for "uuid", without the attribute.
    [[nodiscard]] static std::optional<std::string> uuidForNode(XMLNode node,
                                                                bool immediateChildOnly);

    /// The nearest element above the node that has the name, or none.
    [[nodiscard]] static XMLNode nodeParentWithName(XMLNode node, std::string_view name);
    /// The same, up to the nearest element whose name is in the limits: nothing is found there or
    /// above, even when the name is wanted and a limit at once.
    [[nodiscard]] static XMLNode nodeParentWithName(XMLNode node, std::string_view name,
                                                    const std::vector<std::string>& limits);
    /// The next node in document order that is not below the node, or none.
    [[nodiscard]] static XMLNode nextSiblingForNode(XMLNode node);

    /// `affectedNodesForClip` without the range.
    [[nodiscard]] static Nodes affectedNodesForClip(XMLNode clip);
    /// The chain of items that a clip item is joined to through transitions, in document order. An
    /// edge of "-1" says that a transition lies there. Only elements are items: comments and text
    /// between them are passed over.
    /// @param rangeStart where the chain starts, in frames; -1 when no item tells, 0 when it is no
    ///     number. Null when not wanted.
    /// @param rangeEnd where it ends, likewise.
    [[nodiscard]] static Nodes affectedNodesForClip(XMLNode clip, std::int64_t* rangeStart,
                                                    std::int64_t* rangeEnd);
};

}  // namespace vornic

#endif
