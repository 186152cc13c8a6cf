#include "repair/EventRepair.h"

#include <string>

#include "xml/QMXMLParser.h"

namespace vornic {

namespace {

using Nodes = QMXMLParser::Nodes;

Nodes nodesFor(std::string_view query, XMLNode node) {
    return QMXMLParser::nodesForQuery(query, node).value_or(Nodes());
}

/// @return true when references were missing and have been added.
bool mendClip(XMLNode video) {
    const Nodes audios = nodesFor("./audio", video);
    const Nodes references = nodesFor("./audio/@ref", video);
    if (references.empty() || references.size() == audios.size()) {
        return false;
    }
    const std::string reference = references.front().stringValue();
    for (const XMLNode& audio : audios) {
        audio.addAttribute("ref", reference);
    }
    return true;
}

}  // namespace

std::unique_ptr<XMLDocument> repairFCPXDocument(RepairHost& host,
                                                std::unique_ptr<XMLDocument> document,
                                                bool* hasErrors) {
    host.appendInfoText("Checking for FCPX-specific errors...");
    bool mended = false;
    if (document) {
        for (const XMLNode& video :
             nodesFor("./fcpxml[1]/library[1]/event//video", document->documentNode())) {
            mended = mendClip(video) || mended;
        }
    }
    if (hasErrors != nullptr) {
        *hasErrors = mended;
    }
    return document;
}

}  // namespace vornic
