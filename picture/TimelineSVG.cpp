#include "picture/TimelineSVG.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <utility>

#include "base/Utf8.h"

namespace vornic {

namespace {

using fcpxml::Time;

constexpr double kLeft = 110;
constexpr double kMargin = 16;
constexpr double kRow = 30;
constexpr double kTrackGap = 6;
constexpr double kRuler = 26;
constexpr double kTitle = 46;
constexpr double kNarrowest = 1100;
constexpr double kWidest = 24000;
// What the clips of the fullest track get on the average.
constexpr double kClipWidth = 70;
constexpr std::size_t kMostClips = 50000;
constexpr std::size_t kMostMessages = 5;

struct Colours {
    const char* fill;
    const char* stroke;
};

// Dark text is readable on each of the fills.
Colours coloursOf(TimelineKind kind) {
    constexpr std::array<Colours, 12> kColours = {{{"#b9d2f5", "#5580b8"},
                                                   {"#bfe6c4", "#4f9560"},
                                                   {"#ddc9f2", "#8560ad"},
                                                   {"#ead9c0", "#a07f4d"},
                                                   {"#a9dce0", "#3f8d94"},
                                                   {"#f2cde0", "#a95c85"},
                                                   {"#c9cdf4", "#666cb5"},
                                                   {"#f6dfa9", "#ab8532"},
                                                   {"#f4f0a6", "#9b953a"},
                                                   {"#f3f3f3", "#a9a9a9"},
                                                   {"#ffffff", "#555555"},
                                                   {"#e4e7ea", "#9aa3ad"}}};
    return kColours.at(static_cast<std::size_t>(kind));
}

const char* colourOf(Severity severity) {
    return severity == Severity::error     ? "#c21f1f"
           : severity == Severity::warning ? "#a85b00"
                                           : "#1f5fc2";
}

std::string number(double value) {
    constexpr std::size_t kLongest = 340;
    char buffer[kLongest];
    std::snprintf(buffer, sizeof(buffer), "%.2f", value);
    std::string text = buffer;
    // Some locales have a comma.
    std::replace(text.begin(), text.end(), ',', '.');
    text.resize(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

bool isForbidden(char32_t code) {
    return (code < 0x20 && code != '\t' && code != '\n' && code != '\r') || code == 0x7F ||
           (code >= 0xFFFE && code <= 0xFFFF) || (code >= 0x80 && code < 0xA0);
}

// At a size of 11, in the fonts of common desktops.
double widthOf(char32_t code) {
    constexpr std::string_view kNarrow = "iljtfrI.,:;'|!()[] ";
    constexpr double kThin = 4.2;
    constexpr double kMiddle = 6.8;
    constexpr double kBroad = 9.2;
    constexpr double kFull = 11.5;
    if (code < 0x80) {
        const char c = static_cast<char>(code);
        return kNarrow.find(c) != std::string_view::npos                                ? kThin
               : (c >= 'A' && c <= 'Z') || c == 'm' || c == 'w' || c == '@' || c == '%' ? kBroad
                                                                                        : kMiddle;
    }
    return code < 0x1100 ? kBroad : kFull;
}

class Picture {
  public:
    Picture(const Timeline& timeline, const std::vector<TimelineMark>& marks,
            std::string_view title)
        : timeline_(timeline), title_(title) {
        for (const TimelineMark& mark : marks) {
            marks_[{mark.item.sequence, mark.item.clip}].push_back(&mark);
        }
    }

    std::string draw() {
        for (std::uint32_t number = 0; number < timeline_.sequences().size(); ++number) {
            drawSequence(number);
        }
        if (timeline_.sequences().empty()) {
            text(kMargin, y_ + kTitle / 2, "There is no sequence in this file.", "#333333", 13);
            y_ += kTitle;
        }
        if (left_ != 0) {
            text(kMargin, y_ + kTitle / 2, std::to_string(left_) + " more clips are not drawn.",
                 "#333333", 13);
            y_ += kTitle;
        }
        return head() + body_ + "</svg>\n";
    }

  private:
    using Marks = std::vector<const TimelineMark*>;

    [[nodiscard]] std::string head() const;
    void drawSequence(std::uint32_t number);
    void setScale();
    void drawTitle(std::uint32_t number);
    void drawRuler();
    void drawTracks();
    void drawClips(std::uint32_t number, bool over);
    void drawClip(std::uint32_t number, std::uint32_t clip);
    void drawShape(const TimelineClip& clip, double x, double y, double width);
    void drawMarks(const Marks& marks, double x, double y, double width);
    void drawMarkers();
    void rect(double x, double y, double width, double height, const std::string& attributes);
    void text(double x, double y, std::string_view content, std::string_view colour, int size,
              std::string_view more = "");
    [[nodiscard]] std::string tooltipOf(const TimelineClip& clip, const Marks* marks) const;
    [[nodiscard]] const Marks* marksOf(std::uint32_t sequence, std::uint32_t clip) const;
    [[nodiscard]] double xOf(Time time) const {
        return kLeft + (time.approximateSeconds() - begin_) * scale_;
    }
    [[nodiscard]] const TimelineSequence& sequence() const {
        return timeline_.sequences()[sequence_];
    }

    const Timeline& timeline_;
    std::string_view title_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, Marks> marks_;
    std::string body_;
    double y_ = kMargin;
    double width_ = kNarrowest;
    std::size_t drawn_ = 0;
    std::size_t left_ = 0;
    // Of the sequence that is being drawn: pixels a second, its left edge in seconds, the upper
    // edges of its tracks.
    std::uint32_t sequence_ = 0;
    double scale_ = 1;
    double begin_ = 0;
    double end_ = 1;
    std::vector<double> tops_;
};

std::string Picture::head() const {
    const std::string size =
        number(width_ + kLeft + 2 * kMargin) + "\" height=\"" + number(y_ + kMargin);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" version=\"1.1\" width=\"" +
           size +
           "\" stroke=\"none\" font-family=\"DejaVu Sans, Noto Sans, Helvetica, Arial, "
           "sans-serif\">\n<title>" +
           svgText(title_) + "</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
}

void Picture::rect(double x, double y, double width, double height, const std::string& attributes) {
    body_ += "<rect x=\"" + number(x) + "\" y=\"" + number(y) + "\" width=\"" + number(width) +
             "\" height=\"" + number(height) + "\" " + attributes + "/>\n";
}

void Picture::text(double x, double y, std::string_view content, std::string_view colour, int size,
                   std::string_view more) {
    body_ += "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" font-size=\"" +
             std::to_string(size) + "\" fill=\"" + std::string(colour) + "\"" + std::string(more) +
             ">" + svgText(content) + "</text>\n";
}

const Picture::Marks* Picture::marksOf(std::uint32_t sequence, std::uint32_t clip) const {
    const auto found = marks_.find({sequence, clip});
    return found == marks_.end() ? nullptr : &found->second;
}

// The whole sequence in one picture, wide enough for the names of its fullest track.
void Picture::setScale() {
    std::vector<std::size_t> counts(sequence().tracks.size());
    begin_ = 0;
    for (const TimelineClip& clip : sequence().clips) {
        ++counts[clip.track];
        begin_ = std::min(begin_, clip.position.approximateSeconds());
    }
    const std::size_t most = counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end());
    end_ = std::max(sequence().duration.approximateSeconds(), begin_);
    end_ = end_ > begin_ ? end_ : begin_ + 1;
    const double width = std::clamp(static_cast<double>(most) * kClipWidth, kNarrowest, kWidest);
    scale_ = width / (end_ - begin_);
    width_ = std::max(width_, width);
}

void Picture::drawSequence(std::uint32_t number) {
    sequence_ = number;
    setScale();
    body_ += "<g id=\"sequence-" + std::to_string(number + 1) + "\">\n";
    drawTitle(number);
    drawRuler();
    drawTracks();
    drawClips(number, false);
    drawClips(number, true);
    drawMarkers();
    body_ += "</g>\n";
    y_ += kMargin;
}

void Picture::drawTitle(std::uint32_t number) {
    const std::string name =
        sequence().name.empty() ? "Sequence " + std::to_string(number + 1) : sequence().name;
    text(kMargin, y_ + 18, elidedText(name, kNarrowest / 2), "#111111", 16,
         " font-weight=\"bold\"");
    const std::string from = sequence().timecodeAt(Time(0));
    std::string line = std::to_string(sequence().clips.size()) +
                       (sequence().clips.size() == 1 ? " item, " : " items, ") +
                       sequence().duration.seconds();
    line += from.empty() ? "" : ", from " + from;
    text(kMargin, y_ + 36, line, "#444444", 11);
    if (const Marks* const marks = marksOf(number, kNoTimelineItem)) {
        body_ += "<g><title>";
        for (std::size_t i = 0; i < std::min(marks->size(), kMostMessages); ++i) {
            body_ += (i == 0 ? "" : "&#10;") + svgText((*marks)[i]->message);
        }
        body_ += "</title>\n";
        text(kLeft + kNarrowest / 2, y_ + 36,
             std::to_string(marks->size()) +
                 (marks->size() == 1 ? " finding beside the clips" : " findings beside the clips"),
             colourOf((*marks)[0]->severity), 11);
        body_ += "</g>\n";
    }
    y_ += kTitle;
}

// Lines at whole numbers of frames, far enough from each other to be read.
void Picture::drawRuler() {
    constexpr double kApart = 110;
    constexpr std::array<std::int64_t, 16> kSteps = {1,   2,   5,   10,   15,   30,   60,    120,
                                                     300, 600, 900, 1800, 3600, 7200, 21600, 86400};
    const bool isCounted = !sequence().timecodeAt(Time(0)).empty();
    const Time frame = sequence().frame;
    const std::int64_t rate = isCounted ? Time(1).framesOf(frame) : 1;
    Time step = isCounted ? Time::ofFrames(rate * kSteps.back(), frame) : Time(kSteps.back());
    for (const std::int64_t seconds : kSteps) {
        const Time candidate = isCounted ? Time::ofFrames(rate * seconds, frame) : Time(seconds);
        if (candidate.approximateSeconds() * scale_ >= kApart) {
            step = candidate;
            break;
        }
    }
    const double length = step.approximateSeconds();
    const std::int64_t count =
        length > 0 ? static_cast<std::int64_t>(std::min(end_ / length, kWidest / kApart)) : 0;
    Time at(0);
    for (std::int64_t line = 0; line <= count; ++line) {
        const std::string label = isCounted ? sequence().timecodeAt(at) : at.seconds();
        rect(xOf(at), y_ + kRuler - 8, 1, 8, "fill=\"#777777\"");
        if ((end_ - begin_) * scale_ - (xOf(at) - kLeft) >= kApart / 2) {
            text(xOf(at) + 3, y_ + kRuler - 12, label, "#444444", 10);
        }
        at = at + step;
    }
    y_ += kRuler;
}

void Picture::drawTracks() {
    tops_.clear();
    for (const TimelineTrack& track : sequence().tracks) {
        const double height = kRow * track.rows + kTrackGap;
        tops_.push_back(y_ + kTrackGap / 2);
        rect(kMargin, y_, kLeft - kMargin + (end_ - begin_) * scale_, height - 1,
             std::string("fill=\"") + (track.isAudio ? "#f4f8f4" : "#f5f6f9") + "\"");
        text(kMargin + 4, y_ + height / 2 + 4, elidedText(track.name, kLeft - kMargin - 10),
             "#333333", 11);
        y_ += height;
    }
    if (sequence().tracks.empty()) {
        text(kMargin, y_ + 16, "This sequence has no clips.", "#444444", 11);
        y_ += kRow;
    }
}

// Storylines lie behind their clips, as they come first; transitions in front of them.
void Picture::drawClips(std::uint32_t number, bool over) {
    for (std::uint32_t clip = 0; clip < sequence().clips.size(); ++clip) {
        const TimelineClip& drawn = sequence().clips[clip];
        if ((drawn.kind == TimelineKind::transition) != over || !drawn.position.isKnown()) {
            continue;
        }
        if (drawn_ == kMostClips) {
            ++left_;
            continue;
        }
        ++drawn_;
        drawClip(number, clip);
    }
}

void Picture::drawClip(std::uint32_t number, std::uint32_t clip) {
    const TimelineClip& drawn = sequence().clips[clip];
    const Marks* const marks = marksOf(number, clip);
    const double x = xOf(drawn.position);
    const double y = tops_[drawn.track] + kRow * drawn.row;
    constexpr double kThinnest = 1.5;
    const double width = std::max(drawn.duration.approximateSeconds() * scale_, kThinnest);
    const bool opens = drawn.opens != kNoTimelineItem;
    if (opens) {
        body_ += "<a xlink:href=\"#sequence-" + std::to_string(drawn.opens + 1) + "\">";
    }
    body_ += drawn.isEnabled ? "<g>" : "<g opacity=\"0.45\">";
    body_ += "<title>" + tooltipOf(drawn, marks) + "</title>\n";
    drawShape(drawn, x, y, width);
    if (marks != nullptr) {
        drawMarks(*marks, x, y, width);
    }
    body_ += opens ? "</g></a>\n" : "</g>\n";
}

void Picture::drawShape(const TimelineClip& clip, double x, double y, double width) {
    const Colours colours = coloursOf(clip.kind);
    const bool isLine = clip.kind == TimelineKind::storyline;
    const bool isTransition = clip.kind == TimelineKind::transition;
    const double inset = isLine ? 0 : isTransition ? 6 : 3;
    const double height = kRow - 2 * inset;
    rect(x, y + inset, width, height,
         std::string("rx=\"2\" fill=\"") + colours.fill + "\" stroke=\"" + colours.stroke + "\"" +
             (clip.kind == TimelineKind::gap ? " stroke-dasharray=\"3 2\"" : "") +
             (isTransition ? " fill-opacity=\"0.75\"" : ""));
    if (isTransition) {
        body_ += "<path d=\"M" + number(x) + " " + number(y + inset) + "L" + number(x + width) +
                 " " + number(y + inset + height) + "M" + number(x) + " " +
                 number(y + inset + height) + "L" + number(x + width) + " " + number(y + inset) +
                 "\" stroke=\"" + colours.stroke + "\" fill=\"none\"/>\n";
        return;
    }
    const std::string shown =
        elidedText((clip.opens == kNoTimelineItem ? "" : "▸ ") + clip.name, width - 8);
    if (!isLine && !shown.empty()) {
        text(x + 4, y + kRow / 2 + 4, shown, "#1a1a1a", 11);
    }
}

// A frame and a badge, in a colour and with a number, so that neither alone has to be seen.
void Picture::drawMarks(const Marks& marks, double x, double y, double width) {
    Severity worst = Severity::info;
    for (const TimelineMark* const mark : marks) {
        worst = std::max(worst, mark->severity);
    }
    const std::string colour = colourOf(worst);
    rect(x, y + 2, width, kRow - 4,
         "rx=\"2\" fill=\"none\" stroke-width=\"2\" stroke=\"" + colour + "\"");
    const double radius = 7;
    const double centre = x + std::max(width - radius, radius);
    body_ += "<circle cx=\"" + number(centre) + "\" cy=\"" + number(y + radius) + "\" r=\"" +
             number(radius) + "\" fill=\"" + colour + "\"/>\n";
    text(centre, y + radius + 3, marks.size() > 99 ? "!" : std::to_string(marks.size()), "#ffffff",
         9, " text-anchor=\"middle\"");
}

std::string Picture::tooltipOf(const TimelineClip& clip, const Marks* marks) const {
    std::string tooltip = svgText(nameOf(clip.kind)) + (clip.isEnabled ? "" : ", disabled");
    const auto add = [&tooltip](std::string_view label, std::string_view value) {
        if (!value.empty()) {
            tooltip += "&#10;" + std::string(label) + svgText(value);
        }
    };
    add("", clip.name);
    add("at ", sequence().timecodeAt(clip.position));
    add("length ", clip.duration.seconds());
    add("in ", clip.in.seconds());
    add("out ", clip.out.seconds());
    add("media ", clip.media);
    for (std::size_t i = 0; marks != nullptr && i < std::min(marks->size(), kMostMessages); ++i) {
        add(std::string(nameOf((*marks)[i]->severity)) + ": ", (*marks)[i]->message);
    }
    if (marks != nullptr && marks->size() > kMostMessages) {
        add("", "and " + std::to_string(marks->size() - kMostMessages) + " more findings");
    }
    return tooltip;
}

void Picture::drawMarkers() {
    constexpr double kHalf = 4;
    std::size_t drawn = 0;
    for (const TimelineMarker& marker : sequence().markers) {
        const bool isOnClip = marker.clip != kNoTimelineItem;
        if (!marker.position.isKnown() || ++drawn > kMostClips) {
            continue;
        }
        const TimelineClip* const clip = isOnClip ? &sequence().clips[marker.clip] : nullptr;
        const double x = xOf(marker.position);
        const double first = tops_.empty() ? y_ : tops_[0];
        const double y =
            clip == nullptr ? first - kTrackGap : tops_[clip->track] + kRow * clip->row + 3;
        body_ += "<path d=\"M" + number(x - kHalf) + " " + number(y) + "L" + number(x + kHalf) +
                 " " + number(y) + "L" + number(x) + " " + number(y + 2 * kHalf) +
                 "Z\" fill=\"#3b5bdb\" stroke=\"#ffffff\" stroke-width=\"0.5\"><title>marker&#10;" +
                 svgText(marker.name) + "&#10;at " +
                 svgText(sequence().timecodeAt(marker.position)) + "</title></path>\n";
    }
}

}  // namespace

std::string svgText(std::string_view text) {
    std::string escaped;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        at += character.length;
        if (!character.isValid || isForbidden(character.code)) {
            escaped += "\xEF\xBF\xBD";
        } else if (character.code == '&') {
            escaped += "&amp;";
        } else if (character.code == '<') {
            escaped += "&lt;";
        } else if (character.code == '>') {
            escaped += "&gt;";
        } else if (character.code == '"') {
            escaped += "&quot;";
        } else if (character.code < ' ') {
            escaped += ' ';
        } else {
            appendUtf8(escaped, character.code);
        }
    }
    return escaped;
}

std::string elidedText(std::string_view text, double width) {
    constexpr char32_t kEllipsis = U'…';
    const double ellipsis = widthOf(kEllipsis);
    double taken = 0;
    std::size_t fits = 0;
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character character = utf8CharacterAt(text, at);
        taken += widthOf(character.code);
        at += character.length;
        if (taken > width) {
            return fits == 0 ? "" : std::string(text.substr(0, fits)) + "…";
        }
        fits = taken + ellipsis <= width ? at : fits;
    }
    return std::string(text);
}

std::string timelineSVG(const Timeline& timeline, const std::vector<TimelineMark>& marks,
                        std::string_view title) {
    return Picture(timeline, marks, title).draw();
}

}  // namespace vornic
