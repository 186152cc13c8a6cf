#include "report/MediaCSVWriter.h"

#include <vector>

namespace vornic {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

// Quoted where the standard asks for it, or where the cell looks like a formula or like a number
// with blanks around it.
std::string cell(std::string_view text) {
    const bool isPlain =
        text.find_first_of(",\"\r\n") == std::string_view::npos &&
        (text.empty() || std::string_view("=+-@ \t").find(text.front()) == std::string_view::npos);
    if (isPlain) {
        return std::string(text);
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c;
        if (c == '"') {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string line(const std::vector<std::string>& cells) {
    std::string text;
    for (const std::string& content : cells) {
        text += cell(content) + ",";
    }
    text.pop_back();
    return text + std::string(kLineEnd);
}

// "Interview (2); Cutaway"
std::string clipsOf(const MediaRecord& record) {
    std::string text;
    for (const MediaRecord::Clip& clip : record.clips) {
        text += (text.empty() ? "" : "; ") + clip.name;
        text += clip.count == 1 ? "" : " (" + std::to_string(clip.count) + ")";
    }
    return text;
}

std::string numberOf(const std::optional<std::uint64_t>& number) {
    return number ? std::to_string(*number) : "";
}

}  // namespace

MediaCSVWriter::MediaCSVWriter(ReportSink sink) : sink_(std::move(sink)) {
    sink_(line({"project", "path", "url", "form", "name", "kind", "uses", "browser clips", "clips",
                "used from", "used to", "start", "duration", "rate", "video", "audio", "state",
                "found", "new path"}));
}

void MediaCSVWriter::file(const Report& report) {
    for (const MediaRecord& record : report.media.value_or(std::vector<MediaRecord>())) {
        sink_(line({report.path, record.path, record.url, record.form, record.name, record.kind,
                    std::to_string(record.uses), std::to_string(record.browserClips),
                    clipsOf(record), record.usedStart.seconds, record.usedEnd.seconds,
                    record.start.seconds, record.duration.seconds, record.rate,
                    numberOf(record.videoTracks), numberOf(record.audioTracks),
                    std::string(nameOf(record.state)), record.found, record.newPath}));
    }
}

}  // namespace vornic
