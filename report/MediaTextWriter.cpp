#include "report/MediaTextWriter.h"

#include <algorithm>

#include "base/FormatString.h"
#include "base/TerminalText.h"

namespace vornic {

namespace {

constexpr std::string_view kDetail = "        ";

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
    return formatString("%llu %@", count, count == 1 ? one : many);
}

std::string_view labelOf(const MediaRecord& record) {
    if (!record.newPath.empty()) {
        return "relinked";
    }
    switch (record.state) {
        case MediaState::unknown:
            return record.why.empty() ? "" : "left";
        case MediaState::otherName:
            return "other name";
        case MediaState::notMounted:
            return "not mounted";
        case MediaState::noAnswer:
            return "no answer";
        default:
            return nameOf(record.state);
    }
}

// "3 clips: "Interview" (2), "Cutaway"", not more names than fit into a few lines.
std::string usesOf(const MediaRecord& record) {
    constexpr std::size_t kMostNames = 10;
    const std::uint64_t clips = record.uses + record.browserClips;
    if (clips == 0) {
        return "no clip";
    }
    std::string text = counted(clips, "clip", "clips");
    if (record.browserClips != 0) {
        text += record.uses == 0 ? ", none in a sequence"
                                 : formatString(", %llu in sequences", record.uses);
    }
    std::size_t shown = 0;
    for (const MediaRecord::Clip& clip : record.clips) {
        if (shown++ == kMostNames) {
            return text + ", ...";
        }
        text += shown == 1 ? ": " : ", ";
        text += "\"" + escapedForTerminal(clip.name) + "\"";
        text += clip.count == 1 ? "" : formatString(" (%llu)", clip.count);
    }
    return text;
}

std::string rangeOf(const MediaRecord& record) {
    const bool isUsed = !record.usedStart.seconds.empty() && !record.usedEnd.seconds.empty();
    std::string text;
    if (isUsed) {
        text = formatString("; %@ s to %@ s", record.usedStart.seconds, record.usedEnd.seconds);
    }
    if (!record.duration.seconds.empty()) {
        text += formatString(isUsed ? " of %@ s" : "; %@ s", record.duration.seconds);
    }
    const bool startsLater = !record.start.seconds.empty() && record.start.seconds != "0";
    return startsLater && !text.empty() ? text + formatString(" from %@ s", record.start.seconds)
                                        : text;
}

std::string tracksOf(const MediaRecord& record) {
    std::string text;
    if (!record.rate.empty()) {
        text += formatString("; %@ frames a second", record.rate);
    }
    if (record.videoTracks.value_or(0) != 0) {
        text += formatString("; %llu video", *record.videoTracks);
    }
    if (record.audioTracks.value_or(0) != 0) {
        text += formatString(record.videoTracks.value_or(0) != 0 ? ", %llu audio" : "; %llu audio",
                             *record.audioTracks);
    }
    return text;
}

bool isNotThere(const MediaRecord& record) {
    return record.state != MediaState::unknown && record.state != MediaState::there;
}

std::string headingOf(const Report& report) {
    const std::vector<MediaRecord>& media = *report.media;
    const auto missing =
        static_cast<std::uint64_t>(std::count_if(media.begin(), media.end(), isNotThere));
    const auto relinked = static_cast<std::uint64_t>(
        std::count_if(media.begin(), media.end(),
                      [](const MediaRecord& record) { return !record.newPath.empty(); }));
    std::string text =
        escapedForTerminal(report.path) + ": " + counted(media.size(), "media file", "media files");
    text += missing == 0 ? "" : formatString(", %llu not there", missing);
    return text + (relinked == 0 ? "" : formatString(", %llu relinked", relinked)) + "\n";
}

}  // namespace

void MediaTextWriter::relinked(const MediaRecord& record) {
    if (!record.newPath.empty()) {
        sink_(std::string(kDetail) + "to " +
              escapedForTerminal(record.newPath == record.path ? record.newURL : record.newPath) +
              "\n");
    }
    if (record.droppedBookmarks != 0) {
        sink_(std::string(kDetail) + counted(record.droppedBookmarks, "bookmark", "bookmarks") +
              " dropped, which would have led back\n");
    }
    if (!record.why.empty()) {
        sink_(std::string(kDetail) + escapedForTerminal(record.why) + "\n");
    }
    for (const std::string& candidate : record.candidates) {
        sink_(std::string(kDetail) + "    " + escapedForTerminal(candidate) + "\n");
    }
}

void MediaTextWriter::medium(const MediaRecord& record, std::size_t width) {
    std::string label(labelOf(record));
    label.resize(std::max(width, label.size()), ' ');
    sink_("    " + label + escapedForTerminal(record.path) + "\n");
    if (!record.found.empty()) {
        sink_(std::string(kDetail) + "is there as " + escapedForTerminal(record.found) + "\n");
    }
    relinked(record);
    const std::string kind = record.kind.empty() ? "" : escapedForTerminal(record.kind) + "; ";
    sink_(std::string(kDetail) + kind + usesOf(record) + rangeOf(record) + tracksOf(record) + "; " +
          record.form + "\n");
}

void MediaTextWriter::file(const Report& report) {
    if (!report.media) {
        return;
    }
    std::size_t width = 0;
    for (const MediaRecord& record : *report.media) {
        const std::size_t label = labelOf(record).size();
        width = std::max(width, label == 0 ? 0 : label + 2);
    }
    sink_(headingOf(report));
    for (const MediaRecord& record : *report.media) {
        medium(record, width);
    }
}

}  // namespace vornic
