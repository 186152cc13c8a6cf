#include "bench/SampleProject.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace vornic::bench {

namespace {

using Sink = std::function<void(std::string_view)>;

constexpr std::size_t kPieceBytes = std::size_t{1} << 20U;
constexpr int kBlankIndentedVersion = 5;
constexpr int kClipsOfATrack = 120;
constexpr std::int64_t kTracksOfAKind = 2;
constexpr std::int64_t kClipsOfAFile = 3;

constexpr std::array<std::string_view, 8> kNames = {
    "Interview Anna, wide", "Café terrace &amp; street", "東京 駅前 drone",
    "B-roll hands (close)", "Übergabe Straße",           "Bride &amp; groom, 2nd angle",
    "A&amp;R meeting",      "Titles \"final\" v3",
};
constexpr std::array<std::string_view, 6> kNotes = {
    "Good take, the director's favourite",
    "Boom in shot until 00:12; usable after &quot;action&quot;",
    "",
    "Zweite Hälfte unscharf",
    "Levels above -12 dB &gt; please lower",
    "",
};
// namespace

// Writes elements with indentation, in large pieces.
class ElementText {
  public:
    ElementText(const SampleProject& project, const Sink& sink)
        : sink_(sink),
          indent_(project.version == kBlankIndentedVersion ? "    " : "\t"),
          faultEvery_(project.faultEvery),
          fault_(project.fault) {
        piece_.reserve(kPieceBytes + kPieceBytes / 4);
    }

    [[nodiscard]] std::size_t bytes() const { return sent_ + piece_.size(); }

    void raw(std::string_view text) { piece_ += text; }

    void open(std::string_view name, std::string_view attributes = "") {
        line();
        piece_.append("<").append(name).append(attributes).append(">\n");
        names_.emplace_back(name);
    }

    void close() {
        const std::string name = std::move(names_.back());
        names_.pop_back();
        line();
        piece_.append("</").append(name).append(">\n");
        if (piece_.size() >= kPieceBytes) {
            flush();
        }
    }

    void leaf(std::string_view name, std::string_view text) {
        line();
        piece_.append("<").append(name).append(">").append(text);
        if (faultEvery_ != 0 && bytes() - lastFault_ >= faultEvery_) {
            lastFault_ += faultEvery_;
            piece_ += fault_;
        }
        piece_.append("</").append(name).append(">\n");
    }

    void empty(std::string_view name, std::string_view attributes) {
        line();
        piece_.append("<").append(name).append(attributes).append("/>\n");
    }

    void leaf(std::string_view name, std::int64_t number) { leaf(name, std::to_string(number)); }

    void flush() {
        sink_(piece_);
        sent_ += piece_.size();
        piece_.clear();
    }

  private:
    void line() {
        for (std::size_t level = 0; level < names_.size(); ++level) {
            piece_ += indent_;
        }
    }

    const Sink& sink_;
    std::string_view indent_;
    std::size_t faultEvery_;
    char fault_;
    std::size_t lastFault_ = 0;
    std::size_t sent_ = 0;
    std::string piece_;
    std::vector<std::string> names_;
};

class ProjectWriter {
  public:
    ProjectWriter(const SampleProject& project, const Sink& sink)
        : project_(project), text_(project, sink) {}

    void write() {
        text_.raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n");
        text_.open("xmeml", " version=\"" + std::to_string(project_.version) + "\"");
        do {
            writeSequence();
        } while (!isLongEnough());
        text_.close();
        text_.flush();
    }

  private:
    [[nodiscard]] bool isLongEnough() const { return text_.bytes() >= project_.bytes; }

    [[nodiscard]] std::int64_t random(std::int64_t below) {
        return static_cast<std::int64_t>(random_()) % below;
    }

    // The number of the media file of the clip item that is being written.
    [[nodiscard]] std::int64_t source() const { return 1 + (clips_ - 1) / kClipsOfAFile; }

    void writeSequence() {
        const std::string number = std::to_string(++sequences_);
        text_.open("sequence", " id=\"sequence-" + number + "\"");
        text_.leaf("name", "Reel " + number);
        text_.leaf("duration", 90000);
        writeRate();
        writeTimecode("01:00:00:00", 90000);
        text_.open("media");
        for (const char* kind : {"video", "audio"}) {
            text_.open(kind);
            for (std::int64_t track = 1; track <= kTracksOfAKind && (track == 1 || !isLongEnough());
                 ++track) {
                writeTrack(kind, track);
            }
            text_.close();
        }
        text_.close();
        text_.close();
    }

    void writeTrack(std::string_view kind, std::int64_t track) {
        text_.open("track");
        track_ = track;
        firstOfTrack_ = clips_ + 1;
        std::int64_t frame = 0;
        for (int clip = 0; clip < kClipsOfATrack && (clip == 0 || !isLongEnough()); ++clip) {
            const std::int64_t length = 25 + random(200);
            writeClip(kind, frame, length);
            frame += length;
        }
        text_.leaf("enabled", "TRUE");
        text_.leaf("locked", "FALSE");
        text_.close();
    }

    void writeClip(std::string_view kind, std::int64_t start, std::int64_t length) {
        const std::string number = std::to_string(++clips_);
        const std::int64_t in = random(3000);
        text_.open("clipitem", " id=\"clipitem-" + number + "\"");
        text_.leaf("masterclipid", "masterclip-" + std::to_string(source()));
        text_.leaf("name", kNames.at(static_cast<std::size_t>(random(kNames.size()))));
        text_.leaf("enabled", "TRUE");
        text_.leaf("duration", length + in);
        writeRate();
        text_.leaf("start", start);
        text_.leaf("end", start + length);
        text_.leaf("in", in);
        text_.leaf("out", in + length);
        text_.leaf("alphatype", "none");
        writeFile(number);
        text_.open("sourcetrack");
        text_.leaf("mediatype", kind);
        text_.leaf("trackindex", 1);
        text_.close();
        if (random(2) == 0) {
            writeFilter(kind);
        }
        writeLinks(kind);
        writeLoggingInfo();
        writeColorInfo();
        text_.close();
    }

    void writeRate() {
        text_.open("rate");
        text_.leaf("timebase", 25);
        text_.leaf("ntsc", "FALSE");
        text_.close();
    }

    void writeTimecode(std::string_view string, std::int64_t frame) {
        text_.open("timecode");
        writeRate();
        text_.leaf("string", string);
        text_.leaf("frame", frame);
        text_.leaf("displayformat", "NDF");
        text_.close();
    }

    // The first clip item that uses a file describes it, the next two only name it.
    void writeFile(const std::string& number) {
        const std::string attribute = " id=\"file-" + std::to_string(source()) + "\"";
        if (clips_ % kClipsOfAFile != 1) {
            text_.empty("file", attribute);
            return;
        }
        text_.open("file", attribute);
        text_.leaf("name", "A" + number + "_C002.mov");
        text_.leaf("pathurl", "file://localhost/Volumes/Media/Project%20One/Day%2003/A" + number +
                                  "_C002.mov");
        writeRate();
        text_.leaf("duration", 5000);
        writeTimecode("14:27:03:11", 1300586);
        text_.open("media");
        text_.open("video");
        text_.open("samplecharacteristics");
        writeRate();
        text_.leaf("width", 1920);
        text_.leaf("height", 1080);
        text_.leaf("anamorphic", "FALSE");
        text_.leaf("pixelaspectratio", "square");
        text_.leaf("fielddominance", "none");
        text_.close();
        text_.close();
        text_.open("audio");
        text_.open("samplecharacteristics");
        text_.leaf("depth", 16);
        text_.leaf("samplerate", 48000);
        text_.close();
        text_.close();
        text_.close();
        text_.close();
    }

    void writeFilter(std::string_view kind) {
        text_.open("filter");
        text_.open("effect");
        text_.leaf("name", "Basic Motion");
        text_.leaf("effectid", "basic");
        text_.leaf("effectcategory", "motion");
        text_.leaf("effecttype", "motion");
        text_.leaf("mediatype", kind);
        for (const char* parameter : {"scale", "rotation", "opacity"}) {
            text_.open("parameter");
            text_.leaf("parameterid", parameter);
            text_.leaf("name", parameter);
            text_.leaf("valuemin", -8640);
            text_.leaf("valuemax", 8640);
            text_.leaf("value", random(100));
            text_.close();
        }
        text_.close();
        text_.close();
    }

    void writeLinks(std::string_view kind) {
        for (const std::int64_t clip : {clips_, firstOfTrack_}) {
            text_.open("link");
            text_.leaf("linkclipref", "clipitem-" + std::to_string(clip));
            text_.leaf("mediatype", kind);
            text_.leaf("trackindex", track_);
            text_.leaf("clipindex", clip - firstOfTrack_ + 1);
            text_.close();
        }
    }

    void writeLoggingInfo() {
        text_.open("logginginfo");
        text_.leaf("description", "");
        text_.leaf("scene", random(90));
        text_.leaf("shottake", "");
        text_.leaf("lognote", kNotes.at(static_cast<std::size_t>(random(kNotes.size()))));
        text_.leaf("good", "");
        text_.close();
    }

    void writeColorInfo() {
        text_.open("colorinfo");
        for (const char* name : {"lut", "lut1", "asc_sop", "asc_sat", "lut2"}) {
            text_.leaf(name, "");
        }
        text_.close();
        text_.open("labels");
        text_.leaf("label2", "Iris");
        text_.close();
    }

    const SampleProject& project_;
    ElementText text_;
    // Always seeded alike, so that figures of different days compare.
    std::mt19937 random_{20};  // NOLINT(cert-msc32-c,cert-msc51-cpp)
    std::int64_t sequences_ = 0;
    std::int64_t clips_ = 0;
    std::int64_t track_ = 1;
    std::int64_t firstOfTrack_ = 1;
};

}  // namespace

void writeSampleProject(const SampleProject& project, const Sink& sink) {
    ProjectWriter(project, sink).write();
}

std::string sampleProjectText(const SampleProject& project) {
    std::string text;
    writeSampleProject(project, [&](std::string_view piece) { text += piece; });
    return text;
}

bool saveSampleProject(const SampleProject& project, const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"),
                                                               &std::fclose);
    if (!file) {
        return false;
    }
    bool good = true;
    writeSampleProject(project, [&](std::string_view piece) {
        good = std::fwrite(piece.data(), 1, piece.size(), file.get()) == piece.size() && good;
    });
    return std::fflush(file.get()) == 0 && good;
}

}  // namespace vornic::bench
