#include "job/ProjectText.h"

#include <utility>

#include "formats/ElementIndexBuilder.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/FileOffsets.h"

namespace vornic {

std::unique_ptr<ProjectText> ProjectText::read(std::string bytes, ErrorSlot& error) {
    std::optional<DecodedText> source = decodeXMLText(std::move(bytes), error);
    return source ? std::make_unique<ProjectText>(std::move(*source)) : nullptr;
}

ProjectText::ProjectText(DecodedText source) : source_(std::move(source)) {
    ElementIndexBuilder builder(source_.text);
    UnheardXMLMends mends;
    fault_ = readXML(source_.text, XMLMode::tolerant, &builder, &mends).fault;
    index_.emplace(std::move(builder).finish());
}

std::optional<EditList> editsOfFile(EditList edits, const DecodedText& source) {
    FileOffsets offsets(source.text, source.decoding);
    for (Edit& edit : edits) {
        const std::size_t end = offsets.of(edit.offset + edit.length);
        edit.offset = offsets.of(edit.offset);
        edit.length = end - edit.offset;
    }
    return encodeEdits(edits, source.decoding.encoding);
}

}  // namespace vornic
