#ifndef VORNIC_FORMATS_FCPXML_AUDIO_REFERENCES_H
#define VORNIC_FORMATS_FCPXML_AUDIO_REFERENCES_H

#include "xml/tree/XMLDocument.h"

namespace vornic::fcpxml {

struct AddedReferences {
    /// Whether a clip was mended.
    bool mended = false;
    /// The clip whose mend was refused; none mostly.
    XMLNode refused;
};

/// Gives every audio child of a video clip in the first library's events the reference of the first
/// one that has a reference, where some lack it. Clips without any reference, and whatever lies
/// outside the first library's events, stay as they are. A mend by which the document would grow
/// beyond 64 MiB and beyond four times its size is refused, and no further clip is looked at.
[[nodiscard]] AddedReferences addMissingAudioReferences(XMLDocument& document);

}  // namespace vornic::fcpxml

#endif
