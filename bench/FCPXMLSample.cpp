#include "bench/FCPXMLSample.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <random>
#include <string_view>

namespace vornic::bench {

namespace {

constexpr int kClipsOfAProject = 200;
constexpr int kStraysOfAClip = 180;
// An asset for each few clips, which is what shows in real files.
constexpr std::size_t kBytesOfAnAsset = 6000;

constexpr std::array<std::string_view, 6> kNames = {
    "Interview Anna, wide", "Café terrace &amp; street", "東京 駅前 drone",
    "B-roll hands (close)", "Übergabe Straße",           "Titles &quot;final&quot; v3"};

// A time of so many frames at 25 frames a second.
std::string time(std::int64_t frames) {
    return std::to_string(frames * 100) + "/2500s";
}

class SampleWriter {
  public:
    SampleWriter(const FCPXMLSample& sample, std::ostream& stream)
        : sample_(sample), stream_(stream) {}

    void write() {
        stream_ << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml"
                << (sample_.definition.empty() ? "" : " SYSTEM \"" + sample_.definition + "\"")
                << ">\n<fcpxml version=\"1.10\">\n";
        writeResources();
        stream_ << "    <library location=\"file:///Library.fcpbundle/\">\n";
        while (static_cast<std::size_t>(stream_.tellp()) < sample_.bytes ||
               strays_ < sample_.strayAmpersands) {
            writeEvent();
        }
        stream_ << "    </library>\n</fcpxml>\n";
    }

  private:
    [[nodiscard]] std::int64_t random(std::int64_t below) {
        return static_cast<std::int64_t>(random_()) % below;
    }
    [[nodiscard]] std::string_view name() {
        return kNames.at(static_cast<std::size_t>(random(kNames.size())));
    }

    void writeResources() {
        stream_ << "    <resources>\n        <format id=\"r1\" name=\"FFVideoFormat1080p25\" "
                   "frameDuration=\"100/2500s\" width=\"1920\" height=\"1080\" "
                   "colorSpace=\"1-1-1 (Rec. 709)\"/>\n"
                   "        <effect id=\"r2\" name=\"Basic Title\" "
                   "uid=\".../Titles.localized/Basic Title.moti\"/>\n"
                   "        <effect id=\"r3\" name=\"Gaussian\" uid=\"FFGaussian\"/>\n";
        assets_ = static_cast<std::int64_t>(sample_.bytes / kBytesOfAnAsset) + 1;
        for (std::int64_t asset = 0; asset < assets_; ++asset) {
            stream_ << "        <asset id=\"a" << asset << "\" name=\"" << name() << "\" uid=\"UID"
                    << asset << "\" start=\"0s\" duration=\"" << time(100'000)
                    << "\" hasVideo=\"1\" format=\"r1\" hasAudio=\"1\" audioSources=\"1\" "
                       "audioChannels=\"2\" audioRate=\"48000\">\n"
                       "            <media-rep kind=\"original-media\" sig=\"SIG"
                    << asset << "\" src=\"file:///Volumes/Media/Day%201/clip" << asset
                    << ".mov\"/>\n        </asset>\n";
        }
        stream_ << "    </resources>\n";
    }

    void writeEvent() {
        const std::string number = std::to_string(++events_);
        stream_ << "        <event name=\"Day " << number << "\" uid=\"E" << number
                << "\">\n            <project name=\"Reel " << number << "\" uid=\"P" << number
                << "\" modDate=\"2026-11-20 10:00:00 +0100\">\n"
                   "                <sequence format=\"r1\" duration=\""
                << time(kClipsOfAProject * kClipLength)
                << "\" tcStart=\"0s\" tcFormat=\"NDF\" audioLayout=\"stereo\" "
                   "audioRate=\"48k\">\n                    <spine>\n";
        for (std::int64_t clip = 0; clip < kClipsOfAProject; ++clip) {
            writeClip(clip * kClipLength);
        }
        stream_ << "                    </spine>\n                </sequence>\n"
                   "            </project>\n        </event>\n";
    }

    void writeClip(std::int64_t offset) {
        const std::int64_t start = random(90'000);
        stream_ << "                        <asset-clip ref=\"a" << random(assets_)
                << "\" offset=\"" << time(offset) << "\" name=\"" << name() << "\" start=\""
                << time(start) << "\" duration=\"" << time(kClipLength)
                << "\" tcFormat=\"NDF\" audioRole=\"dialogue\">\n"
                   "                            <note>Good take, the director's favourite";
        for (int i = 0; i < kStraysOfAClip && strays_ < sample_.strayAmpersands; ++i) {
            stream_ << "& ";
            ++strays_;
        }
        stream_ << "</note>\n"
                   "                            <adjust-transform position=\"1.5 -2.25\" "
                   "scale=\"1.1 1.1\"/>\n"
                   "                            <adjust-volume amount=\"-3dB\"/>\n";
        if (random(2) == 0) {
            writeTitle(start);
        }
        stream_ << "                            <marker start=\"" << time(start + 10)
                << "\" duration=\"100/2500s\" value=\"Check sound &amp; light\"/>\n"
                   "                            <keyword start=\""
                << time(start) << "\" duration=\"" << time(kClipLength)
                << "\" value=\"B-roll, hands\"/>\n"
                   "                            <filter-video ref=\"r3\" name=\"Gaussian\">\n"
                   "                                <param name=\"Amount\" key=\"1\" value=\""
                << random(100)
                << "\"/>\n                                <param name=\"Horizontal\" key=\"2\" "
                   "value=\"50\"/>\n                            </filter-video>\n"
                   "                        </asset-clip>\n";
    }

    void writeTitle(std::int64_t start) {
        const std::string style = "ts" + std::to_string(++titles_);
        stream_ << "                            <title ref=\"r2\" lane=\"1\" offset=\""
                << time(start + 5) << "\" name=\"" << name() << "\" start=\"3600s\" duration=\""
                << time(kClipLength / 2)
                << "\">\n                                <text>\n"
                   "                                    <text-style ref=\""
                << style << "\">" << name()
                << "</text-style>\n                                </text>\n"
                   "                                <text-style-def id=\""
                << style
                << "\">\n                                    <text-style font=\"Helvetica\" "
                   "fontSize=\"63\" fontColor=\"1 1 1 1\" alignment=\"center\"/>\n"
                   "                                </text-style-def>\n"
                   "                            </title>\n";
    }

    static constexpr std::int64_t kClipLength = 100;

    const FCPXMLSample& sample_;
    std::ostream& stream_;
    std::minstd_rand random_;
    std::int64_t assets_ = 0;
    std::int64_t events_ = 0;
    std::int64_t titles_ = 0;
    std::size_t strays_ = 0;
};

}  // namespace

bool saveFCPXMLSample(const FCPXMLSample& sample, const std::string& path) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    SampleWriter(sample, stream).write();
    stream.flush();
    return stream.good();
}

}  // namespace vornic::bench
