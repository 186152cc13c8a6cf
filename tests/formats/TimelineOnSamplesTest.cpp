#include <map>
#include <numeric>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formats/ElementIndexBuilder.h"
#include "formats/Timeline.h"
#include "platform/files/FileSystem.h"
#include "tests/support/texts/SampleFiles.h"
#include "xml/text/TextDecoding.h"
#include "xml/tree/XMLDocument.h"

namespace vornic::test {

namespace {

// A fraction of its own, so that nothing is compared with itself. Real files have small numbers.
struct Fraction {
    std::int64_t above = 0;
    std::int64_t below = 1;
    bool isKnown = false;

    static Fraction of(std::int64_t above, std::int64_t below) {
        const std::int64_t divisor = std::gcd(above, below);
        return {above / divisor, below / divisor, true};
    }
    static Fraction read(const std::string& text) {
        // What is no time is unknown.
        static const std::regex time("(-?[0-9]{1,18})(?:/([0-9]{1,9}))?s");
        std::smatch parts;
        if (!std::regex_match(text, parts, time)) {
            return {};
        }
        return of(std::stoll(parts[1]), parts[2].matched ? std::stoll(parts[2]) : 1);
    }
    [[nodiscard]] Fraction plus(const Fraction& other, int sign) const {
        if (!isKnown || !other.isKnown) {
            return {};
        }
        const std::int64_t common = std::lcm(below, other.below);
        return of(above * (common / below) + sign * other.above * (common / other.below), common);
    }
    friend Fraction operator+(const Fraction& left, const Fraction& right) {
        return left.plus(right, 1);
    }
    friend Fraction operator-(const Fraction& left, const Fraction& right) {
        return left.plus(right, -1);
    }
    [[nodiscard]] std::string text() const {
        return isKnown ? std::to_string(above) + "/" + std::to_string(below) : "?";
    }
};

std::vector<XMLNode> childrenOf(XMLNode node) {
    std::vector<XMLNode> children;
    for (XMLNode child = node.firstChild(); child; child = child.nextSibling()) {
        if (child.isElement()) {
            children.push_back(child);
        }
    }
    return children;
}

XMLNode childNamed(XMLNode node, std::string_view name) {
    for (const XMLNode child : childrenOf(node)) {
        if (child.name() == name) {
            return child;
        }
    }
    return {};
}

// Goes from each clip up to its sequence, where the program goes down.
class WalkOfFCPXML {
  public:
    explicit WalkOfFCPXML(XMLNode root) { gatherIds(root); }

    std::vector<std::vector<std::string>> sequencesIn(XMLNode node) {
        std::vector<std::vector<std::string>> found;
        if (node.name() == "sequence" || node.name() == "multicam") {
            found.emplace_back();
            gather(node, found.back());
            return found;
        }
        for (const XMLNode child : childrenOf(node)) {
            for (auto& sequence : sequencesIn(child)) {
                found.push_back(std::move(sequence));
            }
        }
        return found;
    }

  private:
    static bool isItem(XMLNode node) {
        static const std::vector<std::string_view> names = {
            "clip", "asset-clip", "video",     "audio",    "title",   "ref-clip",
            "gap",  "mc-clip",    "sync-clip", "audition", "caption", "live-drawing"};
        return std::find(names.begin(), names.end(), node.name()) != names.end();
    }
    static bool isStoryline(XMLNode node) {
        return node.name() == "spine" || node.name() == "mc-angle";
    }
    static std::string attribute(XMLNode node, std::string_view name) {
        return node.attribute(name).value_or("");
    }
    static bool hasLane(XMLNode node) {
        const std::string lane = attribute(node, "lane");
        return !lane.empty() && std::stoi(lane) != 0;
    }
    static XMLNode pickOf(XMLNode audition) {
        return audition.name() == "audition" ? childrenOf(audition).at(0) : audition;
    }

    void gatherIds(XMLNode node) {
        if (const auto id = node.attribute("id")) {
            ids_.try_emplace(*id, node);
        }
        for (const XMLNode child : childrenOf(node)) {
            gatherIds(child);
        }
    }

    bool isSeen(XMLNode node) {
        const XMLNode parent = node.parent();
        if (parent.name() == "sequence" || parent.name() == "multicam") {
            return isStoryline(node);
        }
        if (!parent.isElement() || !(isItem(parent) || isStoryline(parent)) || !isSeen(parent)) {
            return false;
        }
        if (parent.name() == "audition") {
            return node == pickOf(parent);
        }
        const bool holds = parent.name() == "clip" || parent.name() == "sync-clip";
        return isStoryline(parent) || !holds || hasLane(node);
    }

    Fraction startOf(XMLNode node) {
        if (node.name() == "audition") {
            return startOf(pickOf(node));
        }
        if (isStoryline(node)) {
            const std::string tcStart = attribute(node.parent(), "tcStart");
            const bool isFirst =
                node.parent().name() == "sequence" || node.parent().name() == "multicam";
            return Fraction::read(isFirst && !tcStart.empty() ? tcStart : "0s");
        }
        const std::string start = attribute(node, "start");
        if (start.empty() && node.name() == "asset-clip" && ids_.contains(attribute(node, "ref"))) {
            const std::string media = attribute(ids_.at(attribute(node, "ref")), "start");
            return Fraction::read(media.empty() ? "0s" : media);
        }
        return Fraction::read(start.empty() ? "0s" : start);
    }

    Fraction durationOf(XMLNode node) {
        node = pickOf(node);
        const std::string duration = attribute(node, "duration");
        if (duration.empty() && node.name() == "asset-clip" &&
            ids_.contains(attribute(node, "ref"))) {
            return Fraction::read(attribute(ids_.at(attribute(node, "ref")), "duration"));
        }
        return Fraction::read(duration);
    }

    Fraction positionOf(XMLNode node) {
        const XMLNode parent = node.parent();
        if (parent.name() == "sequence" || parent.name() == "multicam") {
            return Fraction::of(0, 1);
        }
        if (parent.name() == "audition") {
            return positionOf(parent);
        }
        std::string offset = attribute(node, "offset");
        if (offset.empty() && node.name() == "audition") {
            offset = attribute(pickOf(node), "offset");
        }
        if (!offset.empty() || !isStoryline(parent)) {
            return positionOf(parent) + Fraction::read(offset.empty() ? "0s" : offset) -
                   startOf(parent);
        }
        Fraction due = positionOf(parent);
        for (const XMLNode sibling : childrenOf(parent)) {
            if (sibling == node) {
                break;
            }
            if (isItem(sibling)) {
                due = positionOf(sibling) + durationOf(sibling);
            }
        }
        return due;
    }

    void gather(XMLNode node, std::vector<std::string>& found) {
        for (const XMLNode child : childrenOf(node)) {
            const bool isTransition = child.name() == "transition" && isStoryline(node);
            const bool isPick = node.name() == "audition";
            const bool isTopmost = node.name() == "sequence" || node.name() == "multicam";
            if ((isItem(child) || isTransition || (isStoryline(child) && !isTopmost)) && !isPick &&
                isSeen(child)) {
                const std::string length = isStoryline(child) ? "" : durationOf(child).text();
                found.push_back(positionOf(child).text() + " " + length);
            }
            gather(child, found);
        }
    }

    std::map<std::string, XMLNode> ids_;
};

class WalkOfXMEML {
  public:
    static std::vector<std::vector<std::string>> sequencesIn(XMLNode node) {
        std::vector<std::vector<std::string>> found;
        const bool isReference = node.attribute("id") && childrenOf(node).empty();
        if (node.name() == "sequence" && !isReference) {
            found.emplace_back();
            gather(node, found.back());
        }
        for (const XMLNode child : childrenOf(node)) {
            for (auto& sequence : sequencesIn(child)) {
                found.push_back(std::move(sequence));
            }
        }
        return found;
    }

  private:
    static std::string textOf(XMLNode node, std::string_view name) {
        const XMLNode child = childNamed(node, name);
        std::string text = child ? child.stringValue() : "";
        std::erase_if(text,
                      [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; });
        return text;
    }
    static bool isItem(XMLNode node) {
        return node.name() == "clipitem" || node.name() == "generatoritem" ||
               node.name() == "transitionitem";
    }
    static Fraction timeOf(XMLNode node, std::string_view name, XMLNode sequence) {
        const std::optional<std::int64_t> frames = numberOf(node, name);
        XMLNode rate = childNamed(sequence, "rate");
        if (!numberOf(rate, "timebase")) {
            rate = childNamed(childNamed(sequence, "timecode"), "rate");
        }
        const std::int64_t base = numberOf(rate, "timebase").value_or(0);
        if (!frames || base == 0) {
            return {};
        }
        const bool isSlow = textOf(rate, "ntsc") == "TRUE";
        return isSlow ? Fraction::of(*frames * 1001, base * 1000) : Fraction::of(*frames, base);
    }
    // From 0 on.
    static std::optional<std::int64_t> numberOf(XMLNode node, std::string_view name) {
        const std::string text = node ? textOf(node, name) : "";
        const bool isNumber = !text.empty() && text.size() < 12 &&
                              text.find_first_not_of("0123456789") == std::string::npos;
        return isNumber ? std::optional(std::stoll(text)) : std::nullopt;
    }

    static void gather(XMLNode sequence, std::vector<std::string>& found) {
        for (const XMLNode kind : childrenOf(childNamed(sequence, "media"))) {
            for (const XMLNode track : childrenOf(kind)) {
                std::vector<XMLNode> items;
                for (const XMLNode item : childrenOf(track)) {
                    if (isItem(item)) {
                        items.push_back(item);
                    }
                }
                for (std::size_t i = 0; track.name() == "track" && i < items.size(); ++i) {
                    Fraction begin = timeOf(items[i], "start", sequence);
                    Fraction end = timeOf(items[i], "end", sequence);
                    if (!begin.isKnown && i > 0 && items[i - 1].name() == "transitionitem") {
                        begin = timeOf(items[i - 1], "start", sequence);
                    }
                    if (!end.isKnown && i + 1 < items.size() &&
                        items[i + 1].name() == "transitionitem") {
                        end = timeOf(items[i + 1], "end", sequence);
                    }
                    // What follows from the media alone has tests of its own.
                    found.push_back(begin.isKnown && end.isKnown
                                        ? begin.text() + " " + (end - begin).text()
                                        : "");
                }
            }
        }
    }
};

std::string textOf(fcpxml::Time time) {
    return Fraction::read(time.text()).text();
}

struct Counts {
    std::size_t files = 0;
    std::size_t sequences = 0;
    std::size_t clips = 0;
};

void expectSamePositions(const std::string& path, Counts& counts) {
    ErrorSlot error;
    const auto bytes = platform::readFile(path, error);
    ASSERT_TRUE(bytes) << path;
    const auto text = decodeXMLText(*bytes, error);
    const auto document = text ? XMLDocument::parse(text->text, XMLMode::strict, error) : nullptr;
    if (!document) {
        return;
    }
    ElementIndexBuilder builder(text->text);
    ASSERT_FALSE(readXML(text->text, XMLMode::strict, &builder).fault);
    const ElementIndex index = std::move(builder).finish();
    const XMLNode root = document->rootElement();
    const auto expected = index.kind() == FileKind::fcpxml ? WalkOfFCPXML(root).sequencesIn(root)
                          : index.kind() == FileKind::xmeml
                              ? WalkOfXMEML::sequencesIn(root)
                              : std::vector<std::vector<std::string>>();
    const Timeline timeline(index);
    ASSERT_EQ(timeline.sequences().size(), expected.size()) << path;
    for (std::size_t number = 0; number < expected.size(); ++number) {
        const TimelineSequence& sequence = timeline.sequences()[number];
        ASSERT_EQ(sequence.clips.size(), expected[number].size())
            << path << ", sequence " << number;
        for (std::size_t clip = 0; clip < expected[number].size(); ++clip) {
            const TimelineClip& made = sequence.clips[clip];
            const std::string length =
                made.kind == TimelineKind::storyline ? "" : textOf(made.duration);
            if (!expected[number][clip].empty()) {
                EXPECT_EQ(textOf(made.position) + " " + length, expected[number][clip])
                    << path << ", sequence " << number << ", " << made.name;
            }
            EXPECT_LT(made.track, sequence.tracks.size());
            EXPECT_EQ(timeline.itemAt(made.place.offset),
                      (Timeline::Item{static_cast<std::uint32_t>(number),
                                      static_cast<std::uint32_t>(clip)}))
                << path;
            ++counts.clips;
        }
        ++counts.sequences;
    }
    counts.files += index.kind() == FileKind::fcpxml || index.kind() == FileKind::xmeml ? 1 : 0;
}

}  // namespace

TEST(TimelineOnSamples, hasEveryClipWhereAWalkFromEachClipUpwardsPutsIt) {
    const auto folder = samplesFolder();
    if (!folder) {
        GTEST_SKIP() << "VORNIC_SAMPLES is not set";
    }
    Counts counts;
    for (const char* const kind : {"/fcpxml", "/xmeml"}) {
        for (const std::string& path : filesBelow(*folder + kind)) {
            expectSamePositions(path, counts);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
    RecordProperty("files", static_cast<int>(counts.files));
    RecordProperty("clips", static_cast<int>(counts.clips));
    std::cout << counts.files << " files, " << counts.sequences << " sequences, " << counts.clips
              << " clips\n";
    EXPECT_GT(counts.clips, 0U);
}

}  // namespace vornic::test
