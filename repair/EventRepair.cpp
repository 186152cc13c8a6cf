#include "repair/EventRepair.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "formats/fcpxml/AudioReferences.h"
#include "repair/ElementPlace.h"
#include "report/Message.h"
#include "report/RuleTable.h"
#include "xml/QMXMLParser.h"
#include "xml/TextPlace.h"

namespace vornic {

namespace {

void reportRefusal(RepairHost& host, XMLNode document, XMLNode video, const FileText& fileText) {
    constexpr std::string_view kSentence =
        "the audio elements of this video that lack a reference were left as they are; with it, "
        "the "
        "file would grow beyond four times its size.";
    const std::optional<std::string> text = fileText ? fileText() : std::nullopt;
    const QMXMLParser::Nodes videos =
        QMXMLParser::nodesForQuery("//video", document).value_or(QMXMLParser::Nodes());
    const auto index = std::find(videos.begin(), videos.end(), video) - videos.begin();
    const auto place =
        text ? placeOfElement(*text, "video", static_cast<std::size_t>(index)) : std::nullopt;
    host.setFileHasErrs(true);
    host.setFileWasRepaired(false);
    host.appendErrorInfoText(place ? sentenceWithPlace(place->line, place->column, kSentence)
                                   : std::string(kSentence));
}

}  // namespace

std::unique_ptr<XMLDocument> repairFCPXDocument(RepairHost& host,
                                                std::unique_ptr<XMLDocument> document,
                                                bool* hasErrors, const FileText& fileText) {
    host.appendInfoText(messageOf("repair-checking-events"_rule));
    bool mended = false;
    if (document) {
        const fcpxml::AddedReferences added = fcpxml::addMissingAudioReferences(*document);
        if (added.refused) {
            reportRefusal(host, document->documentNode(), added.refused, fileText);
        }
        mended = added.mended;
    }
    if (hasErrors != nullptr) {
        *hasErrors = mended;
    }
    return document;
}

}  // namespace vornic
