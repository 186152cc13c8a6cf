#include "formats/fcpxml/AudioReferences.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "xml/tree/QMXMLParser.h"

namespace vornic::fcpxml {

namespace {

using Nodes = QMXMLParser::Nodes;

Nodes nodesFor(std::string_view query, XMLNode node) {
    return QMXMLParser::nodesForQuery(query, node).value_or(Nodes());
}

enum class Clip { sound, mended, refused };

/// How many bytes a document may still be given.
std::size_t roomIn(const XMLDocument& document) {
    constexpr std::size_t kAlwaysAllowed = std::size_t{64} << 20U;
    constexpr std::size_t kMostTimes = 4;
    const std::size_t size = document.textSize();
    return std::max(kAlwaysAllowed, size * kMostTimes) - size;
}

/// Adds the references that are missing, when there is room for them, and takes that off the room.
Clip mendClip(XMLNode video, std::size_t& room) {
    const Nodes audios = nodesFor("./audio", video);
    const Nodes references = nodesFor("./audio/@ref", video);
    if (references.empty() || references.size() == audios.size()) {
        return Clip::sound;
    }
    constexpr std::size_t kMarkup = std::string_view(R"( ref="")").size();
    const std::string reference = references.front().stringValue();
    const std::size_t missing = audios.size() - references.size();
    if (room / missing < reference.size() + kMarkup) {
        return Clip::refused;
    }
    room -= missing * (reference.size() + kMarkup);
    for (const XMLNode& audio : audios) {
        audio.addAttribute("ref", reference);
    }
    return Clip::mended;
}

}  // namespace

AddedReferences addMissingAudioReferences(XMLDocument& document) {
    AddedReferences result;
    std::size_t room = roomIn(document);
    for (const XMLNode& video :
         nodesFor("./fcpxml[1]/library[1]/event//video", document.documentNode())) {
        const Clip clip = mendClip(video, room);
        if (clip == Clip::refused) {
            result.refused = video;
            break;
        }
        result.mended = result.mended || clip == Clip::mended;
    }
    return result;
}

}  // namespace vornic::fcpxml
