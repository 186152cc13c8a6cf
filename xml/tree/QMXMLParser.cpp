#include "xml/tree/QMXMLParser.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "base/Error.h"
#include "base/Exception.h"
#include "base/FormatString.h"
#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "foundation/log/QMLog.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

namespace {

using Nodes = QMXMLParser::Nodes;

constexpr std::string_view kEscapedAmpersand = "&amp;";
constexpr std::string_view kJoinedEdge = "-1";

/// True when the ampersand that the text begins with begins an "&amp;".
/// @param unitLength the length of the whole query.
bool beginsEscapedAmpersand(std::string_view rest, std::size_t unitLength) {
    // The look-ahead of five units is made up to the length less 4, without a sign. In a shorter
    // query that limit is huge, and the look-ahead always leaves the query.
    if (unitLength < kEscapedAmpersand.size() - 1) {
        throw platform::RangeException(
            formatString("A range of %lu units is outside a string of %lu units.",
                         kEscapedAmpersand.size(), unitLength));
    }
    return rest.starts_with(kEscapedAmpersand);
}

void appendUnit(std::string& result, char32_t unit) {
    result += formatString("&#%i;", static_cast<std::uint32_t>(unit));
}

/// Appends a character that is neither an ampersand nor an ASCII character that is kept.
void appendEscaped(std::string& result, std::string_view bytes, char32_t value) {
    if (value >= 0x10000) {
        appendUnit(result, 0xD800 + ((value - 0x10000) >> 10U));
        appendUnit(result, 0xDC00 + ((value - 0x10000) & 0x3FFU));
    } else if (value >= 160) {
        appendUnit(result, value);
    } else if (value == '\r') {
        result += "&#13;";
    } else if (value < 20) {
        QMLog::appendLog("Stripped character %C", static_cast<std::uint32_t>(value));
    } else {
        result += bytes;
    }
}

/// The first node that a query, run as it stands, finds; errors count as nothing found.
XMLNode firstNode(std::string_view query, XMLNode node) {
    ErrorSlot ignored;
    const Nodes nodes = XMLDocument::nodesForXPath(query, node, ignored);
    return nodes.empty() ? XMLNode() : nodes.front();
}

std::string decodedOrRaw(std::string raw) {
    std::optional<std::string> decoded = platform::percentDecodedASCII(raw);
    return decoded ? std::move(*decoded) : std::move(raw);
}

/// The text of the child of the name or, when asked for, of the first such element below the node.
std::optional<std::string> textOfElement(XMLNode node, std::string_view name,
                                         bool immediateChildOnly) {
    XMLNode text = firstNode(formatString("./%@[1]/text()", name), node);
    if (!text && !immediateChildOnly) {
        text = firstNode(formatString(".//%@[1]/text()", name), node);
    }
    if (!text) {
        return std::nullopt;
    }
    return decodedOrRaw(text.stringValue());
}

void logQueryError(const Error& error) {
    QMLog::appendLog("XML parsing error: %@", error.localizedDescription());
}

enum class Direction { backward, forward };

XMLNode neighbour(XMLNode node, Direction direction) {
    return direction == Direction::forward ? node.nextSibling() : node.previousSibling();
}

XMLNode neighbourElement(XMLNode node, Direction direction) {
    XMLNode sibling = neighbour(node, direction);
    while (sibling && !sibling.isElement()) {
        sibling = neighbour(sibling, direction);
    }
    return sibling;
}

std::optional<std::string> startOf(XMLNode item) {
    return QMXMLParser::stringValueForQuery("./start[1]/text()", item);
}

std::optional<std::string> endOf(XMLNode item) {
    return QMXMLParser::stringValueForQuery("./end[1]/text()", item);
}

/// One end of a chain of items.
struct Edge {
    /// The place of the edge as the file has it; "-1" while it is joined to a further item.
    std::optional<std::string> place;
    /// The items beyond the clip, from the nearest to the farthest.
    Nodes items;
};

/// Follows a chain from the clip for as long as its edge is joined.
Edge followChain(XMLNode clip, Direction direction) {
    const auto nearPlace = direction == Direction::forward ? startOf : endOf;
    const auto farPlace = direction == Direction::forward ? endOf : startOf;
    Edge edge{farPlace(clip), {}};
    XMLNode item = neighbourElement(clip, direction);
    while (edge.place == kJoinedEdge && item) {
        const XMLNode beyond = neighbourElement(item, direction);
        const bool isJoined = item.name() == "transitionitem" && nearPlace(beyond) == kJoinedEdge;
        if (!isJoined) {
            edge.place = farPlace(item);
        }
        edge.items.push_back(item);
        item = beyond;
    }
    return edge;
}

}  // namespace

std::string QMXMLParser::escapeQueryString(std::string_view query) {
    const std::size_t unitLength = utf16Length(query);
    std::string result;
    result.reserve(query.size());
    for (std::size_t offset = 0; offset < query.size();) {
        const Utf8Character character = utf8CharacterAt(query, offset);
        if (character.code == '&') {
            const bool isEscaped = beginsEscapedAmpersand(query.substr(offset), unitLength);
            result += isEscaped ? "&" : kEscapedAmpersand;
        } else {
            appendEscaped(result, query.substr(offset, character.length), character.code);
        }
        offset += character.length;
    }
    return result;
}

std::optional<Nodes> QMXMLParser::nodesForQuery(std::string_view query, XMLNode inElement) {
    ErrorSlot error;
    Nodes nodes = XMLDocument::nodesForXPath(escapeQueryString(query), inElement, error);
    if (error) {
        logQueryError(*error);
        return std::nullopt;
    }
    return nodes;
}

XMLNode QMXMLParser::nodeForQuery(std::string_view query, XMLNode inElement) {
    const std::optional<Nodes> nodes = nodesForQuery(query, inElement);
    return nodes && !nodes->empty() ? nodes->front() : XMLNode();
}

std::optional<std::string> QMXMLParser::stringValueForQuery(std::string_view query,
                                                            XMLNode inElement) {
    const XMLNode node = firstNode(escapeQueryString(query), inElement);
    return node ? std::optional(node.stringValue()) : std::nullopt;
}

std::optional<std::vector<std::string>> QMXMLParser::stringValuesForQuery(std::string_view query,
                                                                          XMLNode node) {
    ErrorSlot ignored;
    const Nodes nodes = XMLDocument::nodesForXPath(escapeQueryString(query), node, ignored);
    if (nodes.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> values;
    values.reserve(nodes.size());
    for (const XMLNode& found : nodes) {
        values.push_back(found.stringValue());
    }
    return values;
}

Nodes QMXMLParser::queryNodes(const Nodes& nodes, std::string_view withXPath) {
    const std::string query = escapeQueryString(withXPath);
    Nodes results;
    for (const XMLNode& node : nodes) {
        ErrorSlot ignored;
        const Nodes found = XMLDocument::nodesForXPath(query, node, ignored);
        results.insert(results.end(), found.begin(), found.end());
    }
    return results;
}

Nodes QMXMLParser::nodeNodesFromQueries(XMLNode node, const std::vector<std::string>& queries) {
    Nodes results;
    std::unordered_set<XMLNode> seen;
    // One slot for all queries, never cleared: a failure is logged again after each later query.
    ErrorSlot error;
    for (const std::string& query : queries) {
        const Nodes found = XMLDocument::nodesForXPath(escapeQueryString(query), node, error);
        if (error) {
            logQueryError(*error);
        }
        std::copy_if(found.begin(), found.end(), std::back_inserter(results),
                     [&seen](XMLNode candidate) { return seen.insert(candidate).second; });
    }
    return results;
}

std::optional<std::string> QMXMLParser::idAttributeForNode(XMLNode node) {
    const std::optional<std::string> raw = stringValueForQuery("./@id[1]", node);
    return raw ? platform::percentDecodedASCII(*raw) : std::nullopt;
}

std::optional<std::string> QMXMLParser::filenameFromPathURLString(
    const std::optional<std::string>& string) {
    return string ? std::optional(platform::percentDecodedPath(platform::pathOfURL(*string)))
                  : std::nullopt;
}

std::optional<std::string> QMXMLParser::nameForNode(XMLNode node) {
    return nameForNode(node, false);
}

std::optional<std::string> QMXMLParser::nameForNode(XMLNode node, bool immediateChildOnly) {
    std::optional<std::string> name = textOfElement(node, "name", immediateChildOnly);
    if (name || immediateChildOnly) {
        return name;
    }
    std::optional<std::string> identifier = node.attribute("id");
    return identifier ? std::optional(decodedOrRaw(std::move(*identifier))) : std::nullopt;
}

std::optional<std::string> QMXMLParser::uuidForNode(XMLNode node) {
    return uuidForNode(node, false);
}

std::optional<std::string> QMXMLParser::uuidForNode(XMLNode node, bool immediateChildOnly) {
    return textOfElement(node, "uuid", immediateChildOnly);
}

XMLNode QMXMLParser::nodeParentWithName(XMLNode node, std::string_view name) {
    return nodeParentWithName(node, name, {});
}

XMLNode QMXMLParser::nodeParentWithName(XMLNode node, std::string_view name,
                                        const std::vector<std::string>& limits) {
    for (XMLNode ancestor = node.parent(); ancestor.isElement(); ancestor = ancestor.parent()) {
        if (std::find(limits.begin(), limits.end(), ancestor.name()) != limits.end()) {
            return {};
        }
        if (ancestor.name() == name) {
            return ancestor;
        }
    }
    return {};
}

XMLNode QMXMLParser::nextSiblingForNode(XMLNode node) {
    for (XMLNode current = node; current; current = current.parent()) {
        if (const XMLNode sibling = current.nextSibling()) {
            return sibling;
        }
    }
    return {};
}

Nodes QMXMLParser::affectedNodesForClip(XMLNode clip) {
    return affectedNodesForClip(clip, nullptr, nullptr);
}

Nodes QMXMLParser::affectedNodesForClip(XMLNode clip, std::int64_t* rangeStart,
                                        std::int64_t* rangeEnd) {
    const Edge before = followChain(clip, Direction::backward);
    const Edge after = followChain(clip, Direction::forward);
    Nodes chain(before.items.rbegin(), before.items.rend());
    chain.push_back(clip);
    chain.insert(chain.end(), after.items.begin(), after.items.end());
    if (rangeStart != nullptr) {
        *rangeStart = integerValue(before.place.value_or(""));
    }
    if (rangeEnd != nullptr) {
        *rangeEnd = integerValue(after.place.value_or(""));
    }
    return chain;
}

}  // namespace vornic
