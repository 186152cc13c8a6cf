#include "job/MediaReport.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string_view>

#include "formats/PlaceFinder.h"

namespace vornic {

namespace {

MediaRecord::Time timeOf(const fcpxml::Time& time) {
    constexpr std::string_view kUnit = " s";
    std::string seconds = time.seconds();
    if (!seconds.empty()) {
        seconds.resize(seconds.size() - kUnit.size());
    }
    return {time.text(), std::move(seconds)};
}

// "1001/24000s" is 23.976 frames a second.
std::string rateOf(const fcpxml::Time& frame) {
    const std::string text = frame.text();
    char* end = nullptr;
    const double numerator = std::strtod(text.c_str(), &end);
    const double denominator = *end == '/' ? std::strtod(end + 1, nullptr) : 1;
    if (!(numerator > 0)) {
        return "";
    }
    // More frames a second are a mistake of the file's, and too long a number.
    constexpr double kFastest = 1e6;
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.3f",
                  std::min(denominator / numerator, kFastest));
    std::string rate = buffer.data();
    rate.resize(rate.find_last_not_of('0') + 1);
    if (rate.back() == '.') {
        rate.pop_back();
    }
    return rate;
}

MediaRecord recordOf(const Medium& medium) {
    MediaRecord record;
    record.path = medium.path.text();
    record.url = medium.url;
    record.form = nameOf(medium.form);
    record.name = medium.name;
    record.kind = medium.kind;
    record.places = medium.places.size();
    for (const ClipUse& clip : medium.clips) {
        record.clips.push_back({clip.name, clip.count});
    }
    record.uses = medium.uses;
    record.browserClips = medium.browserClips;
    record.usedStart = timeOf(medium.usedStart);
    record.usedEnd = timeOf(medium.usedEnd);
    record.start = timeOf(medium.start);
    record.duration = timeOf(medium.duration);
    record.rate = rateOf(medium.frameDuration);
    record.videoTracks = medium.videoTracks;
    record.audioTracks = medium.audioTracks;
    return record;
}

}  // namespace

std::vector<MediaRecord> recordsOf(const std::vector<Medium>& media, const ProjectText& project,
                                   bool hasPlaces) {
    std::vector<MediaRecord> records;
    records.reserve(media.size());
    PlaceFinder places(project.index(), project.source().decoding);
    for (const Medium& medium : media) {
        records.push_back(recordOf(medium));
        if (hasPlaces) {
            records.back().where = places.placeOf(medium.places.front().value);
        }
    }
    return records;
}

void takeSights(const std::vector<MediaSight>& sights, std::vector<MediaRecord>& records) {
    for (std::size_t index = 0; index < records.size(); ++index) {
        records[index].state = sights[index].state;
        records[index].found =
            sights[index].state == MediaState::otherName ? sights[index].path : "";
    }
}

Report headOf(const ProjectText& project, std::size_t bytes) {
    Report report;
    report.kind = nameOf(project.index().kind());
    report.version = project.index().version();
    report.encoding = project.source().decoding.encoding;
    report.bytes = bytes;
    for (const RuleGroup group : kCheckedGroups) {
        report.groups.push_back({group, false, std::string(kNotAskedFor)});
    }
    return report;
}

}  // namespace vornic
