#include "media/MediaEdits.h"

#include <algorithm>
#include <string_view>

#include "base/Text.h"
#include "formats/xmeml/View.h"
#include "xml/text/AttributeValue.h"

namespace vornic {

namespace {

// How many names at the end are the same.
std::size_t commonTail(const MediaPath& left, const MediaPath& right) {
    const auto [mine, theirs] = std::mismatch(left.components.rbegin(), left.components.rend(),
                                              right.components.rbegin(), right.components.rend());
    return static_cast<std::size_t>(mine - left.components.rbegin());
}

class EditWriter {
  public:
    explicit EditWriter(const ElementIndex& index)
        : index_(index), isFCPXML_(index.kind() == FileKind::fcpxml), view_(index, true) {}

    // @return what the first place will say, "" where it stays.
    std::string relink(const Medium& medium, const MediumTarget& target, std::uint64_t& bookmarks) {
        std::string first;
        const bool isMoved = *target.path != medium.path;
        for (const MediaPlace& place : medium.places) {
            const std::string url = urlAt(place);
            std::string newURL = written(url, target);
            if (newURL == url) {
                continue;
            }
            first = first.empty() ? newURL : first;
            edits_.push_back({place.value.offset, place.value.length, escapedAt(place, newURL)});
            if (isMoved && isFCPXML_) {
                bookmarks += dropBookmarks(place.element);
            }
        }
        return first;
    }

    std::vector<Edit> take() && {
        std::sort(edits_.begin(), edits_.end(),
                  [](const Edit& left, const Edit& right) { return left.offset < right.offset; });
        return std::move(edits_);
    }

  private:
    [[nodiscard]] std::string urlAt(const MediaPlace& place) const {
        return isFCPXML_ ? normalisedAttributeValue(place.value.of(index_.text()), false)
                         : view_.textOf(place.element);
    }

    [[nodiscard]] std::string written(const std::string& url, const MediumTarget& target) const {
        const PathForm fallback = isFCPXML_ ? PathForm::tripleSlash : PathForm::localhost;
        return target.form
                   ? writtenAs(*target.form, *target.path, fallback)
                   : writtenLike(url, *target.path,
                                 commonTail(readMediaPath(url).path, *target.path), fallback);
    }

    // Only the quotes that stand around a value have to be escaped in it.
    [[nodiscard]] std::string escapedAt(const MediaPlace& place, const std::string& url) const {
        std::string escaped = escapedAttributeValue(url);
        const char around =
            isFCPXML_ && place.value.offset != 0 ? index_.text()[place.value.offset - 1] : '>';
        // A value without quotes keeps all of them escaped.
        if (around != '\'' && around != '=') {
            escaped = replacingOccurrences(escaped, "&apos;", "'");
        }
        if (around != '"' && around != '=') {
            escaped = replacingOccurrences(escaped, "&quot;", "\"");
        }
        return escaped;
    }

    std::uint64_t dropBookmarks(ElementNumber element) {
        std::uint64_t count = 0;
        for (ElementNumber child = index_.firstChildOf(element); child != kNoElement;
             child = index_.nextSiblingOf(child)) {
            if (index_.isNamed(child, "bookmark")) {
                TextSpan span = index_.spanOf(child);
                while (span.offset > 0 &&
                       std::string_view(" \t\r\n").find(index_.text()[span.offset - 1]) !=
                           std::string_view::npos) {
                    --span.offset;
                    ++span.length;
                }
                edits_.push_back({span.offset, span.length, ""});
                ++count;
            }
        }
        return count;
    }

    const ElementIndex& index_;
    const bool isFCPXML_;
    xmeml::View view_;
    std::vector<Edit> edits_;
};

}  // namespace

MediaEdits editsFor(const ElementIndex& index, const std::vector<Medium>& media,
                    const std::vector<MediumTarget>& targets) {
    MediaEdits result;
    result.urls.resize(media.size());
    result.droppedBookmarks.resize(media.size());
    EditWriter writer(index);
    for (std::size_t number = 0; number < media.size(); ++number) {
        if (targets[number].path) {
            result.urls[number] =
                writer.relink(media[number], targets[number], result.droppedBookmarks[number]);
        }
    }
    result.edits = std::move(writer).take();
    return result;
}

}  // namespace vornic
