#include "platform/PropertyListGuard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vornic::platform {
namespace {

constexpr std::size_t kDeepest = 512;

// XML ---------------------------------------------------------------------------------------------

/// The position after markup that no element can begin in, or `at` when none begins there.
std::size_t skipOpaque(std::string_view bytes, std::size_t at) {
    struct Section {
        std::string_view begin;
        std::string_view end;
    };
    constexpr std::array kSections{Section{"<!--", "-->"}, Section{"<![CDATA[", "]]>"},
                                   Section{"<?", "?>"}};
    for (const Section& section : kSections) {
        if (bytes.substr(at).starts_with(section.begin)) {
            const std::size_t end = bytes.find(section.end, at + section.begin.size());
            return end == std::string_view::npos ? bytes.size() : end + section.end.size();
        }
    }
    return at;
}

bool isContainerName(std::string_view tag) {
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/>"));
    return name == "dict" || name == "array" || name == "plist";
}

// Binary ------------------------------------------------------------------------------------------

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Walks the object table of a binary property list without recursion.
class BinaryWalk {
  public:
    explicit BinaryWalk(std::string_view bytes) : bytes_(bytes) {}
    [[nodiscard]] bool isHarmless();

  private:
    struct Container {
        std::size_t firstReference = 0;
        std::uint64_t references = 0;
    };
    /// What is known of an object: how many levels it has and how many values it unfolds to.
    struct Extent {
        std::uint32_t levels = 0;
        std::uint64_t values = 0;
        bool open = false;
    };
    struct Frame {
        std::uint64_t object = 0;
        Container container;
        std::uint64_t next = 0;
    };

    [[nodiscard]] bool readTrailer();
    [[nodiscard]] std::optional<std::uint64_t> offsetOf(std::uint64_t object) const;
    /// The references of an object; none for a scalar. Nothing when it is broken.
    [[nodiscard]] std::optional<Container> containerOf(std::uint64_t object) const;
    [[nodiscard]] bool enter(std::uint64_t object);
    [[nodiscard]] bool step();

    std::string_view bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t root_ = 0;
    std::uint64_t table_ = 0;
    std::vector<Extent> extents_;
    std::vector<Frame> path_;
};

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

bool BinaryWalk::readTrailer() {
    if (bytes_.size() < kHeaderSize + kTrailerSize) {
        return false;
    }
    const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailerSize);
    offsetSize_ = static_cast<unsigned char>(trailer[6]);
    referenceSize_ = static_cast<unsigned char>(trailer[7]);
    objects_ = bigEndian(trailer.substr(8, 8));
    root_ = bigEndian(trailer.substr(16, 8));
    table_ = bigEndian(trailer.substr(24, 8));
    const std::uint64_t end = bytes_.size() - kTrailerSize;
    return offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8 &&
           table_ >= kHeaderSize && table_ <= end && objects_ <= (end - table_) / offsetSize_ &&
           root_ < objects_;
}

std::optional<std::uint64_t> BinaryWalk::offsetOf(std::uint64_t object) const {
    if (object >= objects_) {
        return std::nullopt;
    }
    const std::uint64_t offset =
        bigEndian(bytes_.substr(table_ + object * offsetSize_, offsetSize_));
    return offset >= kHeaderSize && offset < table_ ? std::optional(offset) : std::nullopt;
}

std::optional<BinaryWalk::Container> BinaryWalk::containerOf(std::uint64_t object) const {
    const std::optional<std::uint64_t> offset = offsetOf(object);
    if (!offset) {
        return std::nullopt;
    }
    const auto marker = static_cast<unsigned char>(bytes_[*offset]);
    const unsigned kind = marker >> 4U;
    constexpr unsigned kArray = 0xA;
    constexpr unsigned kSet = 0xC;
    constexpr unsigned kDictionary = 0xD;
    if (kind != kArray && kind != kSet && kind != kDictionary) {
        return Container{};
    }
    std::uint64_t count = marker & 0xFU;
    std::size_t first = *offset + 1;
    if (count == 0xFU) {
        // The count follows as an integer object of its own.
        if (first >= table_) {
            return std::nullopt;
        }
        const std::size_t width = std::size_t{1}
                                  << (static_cast<unsigned char>(bytes_[first]) & 0xFU);
        if (width > 8 || first + 1 + width > table_) {
            return std::nullopt;
        }
        count = bigEndian(bytes_.substr(first + 1, width));
        first += 1 + width;
    }
    const std::uint64_t room = (table_ - first) / referenceSize_;
    if (count > room) {
        return std::nullopt;
    }
    count *= kind == kDictionary ? 2U : 1U;
    return count <= room ? std::optional(Container{first, count}) : std::nullopt;
}

bool BinaryWalk::enter(std::uint64_t object) {
    const std::optional<Container> container = containerOf(object);
    if (!container || extents_[object].open || path_.size() >= kDeepest) {
        return false;
    }
    extents_[object] = {.levels = 1, .values = 1, .open = true};
    path_.push_back({.object = object, .container = *container});
    return true;
}

/// Looks at the next reference of the innermost open object, or closes it.
bool BinaryWalk::step() {
    Frame& frame = path_.back();
    Extent& extent = extents_[frame.object];
    if (frame.next == frame.container.references) {
        extent.open = false;
        path_.pop_back();
        return true;
    }
    const std::uint64_t child = bigEndian(bytes_.substr(
        frame.container.firstReference + frame.next * referenceSize_, referenceSize_));
    if (child >= objects_) {
        return false;
    }
    if (extents_[child].values == 0 || extents_[child].open) {
        return enter(child);
    }
    // Each value of a sound list has a byte of its own at least; some sharing is usual.
    constexpr std::uint64_t kMostValuesAByte = 16;
    extent.levels = std::max(extent.levels, extents_[child].levels + 1);
    extent.values += extents_[child].values;
    ++frame.next;
    return extent.levels + path_.size() <= kDeepest + 1 &&
           extent.values <= bytes_.size() * kMostValuesAByte;
}

bool BinaryWalk::isHarmless() {
    if (!readTrailer()) {
        return false;
    }
    extents_.resize(objects_);
    bool harmless = enter(root_);
    while (harmless && !path_.empty()) {
        harmless = step();
    }
    return harmless;
}

}  // namespace

bool isHarmlessXML(std::string_view bytes) {
    std::size_t depth = 0;
    for (std::size_t at = bytes.find('<'); at != std::string_view::npos; at = bytes.find('<', at)) {
        const std::size_t after = skipOpaque(bytes, at);
        if (after != at) {
            at = after;
            continue;
        }
        const bool closes = bytes.substr(at + 1).starts_with('/');
        const std::size_t end = std::min(bytes.find('>', at), bytes.size());
        const bool empty = !closes && bytes[end - 1] == '/';
        if (isContainerName(bytes.substr(at + (closes ? 2 : 1), end - at)) && !empty) {
            depth = closes ? depth - std::min<std::size_t>(depth, 1) : depth + 1;
        }
        if (depth > kDeepest) {
            return false;
        }
        at = end;
    }
    return true;
}

bool isHarmlessBinary(std::string_view bytes) {
    return BinaryWalk(bytes).isHarmless();
}

}  // namespace vornic::platform
