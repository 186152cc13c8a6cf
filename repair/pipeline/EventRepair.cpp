#include "repair/pipeline/EventRepair.h"

#include <algorithm>
#include <cstddef>

#include "formats/fcpxml/AudioReferences.h"
#include "repair/pipeline/ElementPlace.h"
#include "report/RuleTable.h"
#include "xml/tree/QMXMLParser.h"

namespace vornic {

namespace {

Place placeOfVideo(XMLNode document, XMLNode video, const FileText& fileText) {
    const std::optional<std::string> text = fileText ? fileText() : std::nullopt;
    const QMXMLParser::Nodes videos =
        QMXMLParser::nodesForQuery("//video", document).value_or(QMXMLParser::Nodes());
    const auto index = std::find(videos.begin(), videos.end(), video) - videos.begin();
    return text ? placeOfElement(*text, "video", static_cast<std::size_t>(index)).value_or(Place())
                : Place();
}

}  // namespace

std::unique_ptr<XMLDocument> repairFCPXDocument(std::unique_ptr<XMLDocument> document,
                                                bool* hasErrors, const FoundInRepair& found,
                                                const FileText& fileText) {
    bool mended = false;
    if (document) {
        const fcpxml::AddedReferences added = fcpxml::addMissingAudioReferences(*document);
        if (added.refused) {
            found({"repair-references-refused"_rule,
                   FindingEffect::unmended,
                   {},
                   placeOfVideo(document->documentNode(), added.refused, fileText)});
        }
        mended = added.mended;
    }
    if (hasErrors != nullptr) {
        *hasErrors = mended;
    }
    return document;
}

}  // namespace vornic
