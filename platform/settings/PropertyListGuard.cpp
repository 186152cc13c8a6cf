#include "platform/settings/PropertyListGuard.h"

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

/// The library moves the rest of a text forward at each character reference, so that the time for a
/// text is this product.
constexpr std::uint64_t kMostReferenceMoves = std::uint64_t{1} << 32U;

/// Follows the tags of an XML property list as the library takes them, which is looser than XML is.
/// What could be taken in two ways is refused wherever it could hide a container.
class XMLWalk {
  public:
    explicit XMLWalk(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool isHarmless() {
        // The library compares names up to a NUL byte only.
        bool harmless = rest_.find('\0') == std::string_view::npos;
        while (harmless && passText()) {
            harmless = passSection("<!--", "-->") || passSection("<![CDATA[", "]]>") || passTag();
        }
        return harmless && !slow_;
    }

  private:
    /// Goes on to the next markup. @return false at the end.
    bool passText() {
        const std::size_t end = rest_.find('<');
        if (end == std::string_view::npos) {
            return false;
        }
        const auto text = rest_.substr(0, end);
        const auto references =
            static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '&'));
        slow_ = slow_ || references * text.size() > kMostReferenceMoves;
        rest_.remove_prefix(end);
        return true;
    }

    bool passSection(std::string_view beginning, std::string_view ending) {
        if (!rest_.starts_with(beginning)) {
            return false;
        }
        const std::size_t end = rest_.find(ending, beginning.size());
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + ending.size());
        return true;
    }

    bool passTag() {
        const std::size_t length = std::min(rest_.find('>'), rest_.size() - 1) + 1;
        const std::string_view tag = rest_.substr(0, length);
        rest_.remove_prefix(length);
        const bool closes = tag.starts_with("</");
        const std::string_view name = tag.substr(closes ? 2 : 1);
        if (isContainer(name)) {
            const bool empty = !closes && tag.ends_with("/>");
            depth_ += closes || empty ? 0 : 1;
            depth_ -= closes && depth_ > 0 ? 1 : 0;
        }
        // Quotes, declarations and instructions may go on past the first ">".
        const bool unclear = tag.find_first_of("\"'") != std::string_view::npos ||
                             tag.starts_with("<!") || tag.starts_with("<?");
        return depth_ <= kDeepest && (depth_ == 0 || !unclear);
    }

    static bool isContainer(std::string_view tag) {
        const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/>"));
        return name == "dict" || name == "array";
    }

    std::string_view rest_;
    std::size_t depth_ = 0;
    bool slow_ = false;
};

// Binary ------------------------------------------------------------------------------------------

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

/// True when a text has a NUL character, which the library takes for a reason to end the program
/// when the text is a key.
bool containsNul(std::string_view text, std::size_t width) {
    if (width == 1) {
        return text.find('\0') != std::string_view::npos;
    }
    for (std::size_t at = 0; at < text.size(); at += width) {
        if (bigEndian(text.substr(at, width)) == 0) {
            return true;
        }
    }
    return false;
}

/// Walks the object table of a binary property list without recursion.
class BinaryWalk {
  public:
    explicit BinaryWalk(std::string_view bytes) : bytes_(bytes) {}
    [[nodiscard]] bool isHarmless();

  private:
    /// An object as its marker describes it. A scalar has no references.
    struct Description {
        std::size_t firstReference = 0;
        std::uint64_t references = 0;
        /// About the memory that the object takes by itself when it is read.
        std::uint64_t size = 0;
    };
    /// What is known of an object with all that it refers to: how many levels it has and how much
    /// memory it takes, counted again for each reference, as the library makes them; 0: not seen.
    struct Extent {
        std::uint64_t levels = 0;
        std::uint64_t size = 0;
        bool open = false;
    };
    struct Frame {
        std::uint64_t object = 0;
        Description description;
        std::uint64_t next = 0;
    };

    [[nodiscard]] bool readTrailer();
    [[nodiscard]] std::optional<std::uint64_t> offsetOf(std::uint64_t object) const;
    /// Nothing when the object is broken.
    [[nodiscard]] std::optional<Description> describe(std::uint64_t object) const;
    /// @param position of what follows the marker, moved behind a count that stands there
    [[nodiscard]] std::optional<std::uint64_t> readCount(unsigned inMarker,
                                                         std::size_t& position) const;
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

std::optional<BinaryWalk::Description> BinaryWalk::describe(std::uint64_t object) const {
    constexpr unsigned kData = 0x4;
    constexpr unsigned kText = 0x5;
    constexpr unsigned kWideText = 0x6;
    constexpr unsigned kArray = 0xA;
    constexpr unsigned kSet = 0xC;
    constexpr unsigned kDictionary = 0xD;
    /// What the library needs for a value of any kind.
    constexpr std::uint64_t kNodeSize = 128;
    const std::optional<std::uint64_t> offset = offsetOf(object);
    if (!offset) {
        return std::nullopt;
    }
    const auto marker = static_cast<unsigned char>(bytes_[*offset]);
    const unsigned kind = marker >> 4U;
    if (kind < kData) {
        return Description{.size = kNodeSize};
    }
    std::size_t first = *offset + 1;
    const std::optional<std::uint64_t> count = readCount(marker & 0xFU, first);
    const std::uint64_t room = table_ - first;
    if (!count || *count > room) {
        return std::nullopt;
    }
    if (kind == kData || kind == kText || kind == kWideText) {
        const std::uint64_t width = kind == kWideText ? 2 : 1;
        if (*count > room / width ||
            (kind != kData && containsNul(bytes_.substr(first, *count * width), width))) {
            return std::nullopt;
        }
        return Description{.size = kNodeSize + *count * (2 * width - 1)};
    }
    if (kind != kArray && kind != kSet && kind != kDictionary) {
        return Description{.size = kNodeSize};
    }
    const std::uint64_t references = *count * (kind == kDictionary ? 2 : 1);
    if (references > room / referenceSize_) {
        return std::nullopt;
    }
    return Description{.firstReference = first, .references = references, .size = kNodeSize};
}

std::optional<std::uint64_t> BinaryWalk::readCount(unsigned inMarker, std::size_t& position) const {
    constexpr unsigned kFollows = 0xF;
    if (inMarker != kFollows) {
        return inMarker;
    }
    // The count is an integer object of its own, whose marker gives its width.
    if (position >= table_) {
        return std::nullopt;
    }
    const unsigned exponent = static_cast<unsigned char>(bytes_[position]) & 0xFU;
    const std::size_t width = exponent <= 3 ? std::size_t{1} << exponent : bytes_.size();
    if (width > table_ - position - 1) {
        return std::nullopt;
    }
    const std::uint64_t count = bigEndian(bytes_.substr(position + 1, width));
    position += 1 + width;
    return count;
}

bool BinaryWalk::enter(std::uint64_t object) {
    const std::optional<Description> description = describe(object);
    if (!description || extents_[object].open || path_.size() >= kDeepest) {
        return false;
    }
    extents_[object] = {.levels = 1, .size = description->size, .open = true};
    path_.push_back({.object = object, .description = *description});
    return true;
}

/// Looks at the next reference of the innermost open object, or closes it.
bool BinaryWalk::step() {
    constexpr std::uint64_t kMostMemory = std::uint64_t{512} << 20U;
    Frame& frame = path_.back();
    Extent& extent = extents_[frame.object];
    if (frame.next == frame.description.references) {
        extent.open = false;
        path_.pop_back();
        return true;
    }
    const std::uint64_t child = bigEndian(bytes_.substr(
        frame.description.firstReference + frame.next * referenceSize_, referenceSize_));
    if (child >= objects_) {
        return false;
    }
    if (extents_[child].size == 0 || extents_[child].open) {
        return enter(child);
    }
    extent.levels = std::max(extent.levels, extents_[child].levels + 1);
    extent.size += extents_[child].size;
    ++frame.next;
    return extent.levels <= kDeepest && extent.size <= kMostMemory;
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
    return XMLWalk(bytes).isHarmless();
}

bool isHarmlessBinary(std::string_view bytes) {
    return BinaryWalk(bytes).isHarmless();
}

}  // namespace vornic::platform
