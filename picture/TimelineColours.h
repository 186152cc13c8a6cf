#ifndef VORNIC_PICTURE_TIMELINE_COLOURS_H
#define VORNIC_PICTURE_TIMELINE_COLOURS_H

#include <array>
#include <cstddef>

#include "formats/Timeline.h"
#include "picture/Canvas.h"
#include "report/Severity.h"

namespace vornic {

inline constexpr std::size_t kTimelineKindCount = 12;

/// The colours of a timeline's picture. Texts have a contrast of at least 4.5 to 1 on each ground
/// that they stand on; no colour says what a form or a word does not.
struct TimelineColours {
    struct OfKind {
        Colour fill;
        Colour stroke;
    };
    Colour paper;
    Colour pictureTrack;
    Colour soundTrack;
    Colour text;
    Colour faintText;
    Colour line;
    /// On every kind.
    Colour clipText;
    Colour marker;
    /// The frame of the clip that is looked at.
    Colour cursor;
    /// On the sign of a finding.
    Colour sign;
    std::array<OfKind, kTimelineKindCount> kinds;
    std::array<Colour, kSeverityCount> severities;

    [[nodiscard]] const OfKind& of(TimelineKind kind) const {
        return kinds.at(static_cast<std::size_t>(kind));
    }
    [[nodiscard]] Colour of(Severity severity) const {
        return severities.at(static_cast<std::size_t>(severity));
    }

    /// On paper and on light windows.
    [[nodiscard]] static const TimelineColours& light();
    [[nodiscard]] static const TimelineColours& dark();
};

}  // namespace vornic

#endif
