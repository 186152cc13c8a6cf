#include "check/xmeml/MediaTable.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/PathText.h"
#include "base/Text.h"
#include "formats/xmeml/Number.h"

namespace vornic::xmeml {

namespace {

bool isPicture(std::string_view path) {
    constexpr std::array<std::string_view, 20> kExtensions = {
        "png", "jpg", "jpeg", "tif", "tiff", "tga", "bmp", "gif",  "psd",  "exr",
        "dpx", "cin", "pict", "pct", "ai",   "eps", "svg", "webp", "heic", "pdf"};
    const std::string extension = lowercased(pathExtension(path));
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

Media mediaOfDefinition(const View& view, ElementNumber file) {
    const Parts parts(view, file);
    std::string storage;
    Media media;
    media.file = file;
    media.rate = rateOf(view, parts[Name::rate]);
    const std::optional<std::int64_t> duration =
        readNumber(view.textOf(parts[Name::duration], storage)).whole();
    if (!duration) {
        return media;
    }
    media.durationElement = parts[Name::duration];
    media.duration = *duration;
    const std::string_view path = view.textOf(parts[Name::pathurl], storage);
    media.hasEnd = *duration > 1 && !path.empty() && !isPicture(path);
    return media;
}

}  // namespace

MediaTable::MediaTable(const View& view) : view_(&view) {
    std::string storage;
    for (const ElementNumber file : view.index().elementsNamed("file")) {
        if (view.index().firstChildOf(file) == kNoElement) {
            continue;
        }
        const Media media = mediaOfDefinition(view, file);
        if (!media.hasEnd && !media.rate) {
            continue;
        }
        media_.push_back(media);
        if (const std::string_view id = view.idOf(file, storage); !id.empty()) {
            ids_.add(file, id);
        }
    }
    ids_.sort();
}

const Media* MediaTable::definition(ElementNumber file) const {
    const auto found = std::lower_bound(
        media_.begin(), media_.end(), file,
        [](const Media& media, ElementNumber wanted) { return media.file < wanted; });
    return found == media_.end() || found->file != file ? nullptr : &*found;
}

const Media* MediaTable::mediaOf(ElementNumber file) const {
    if (file == kNoElement) {
        return nullptr;
    }
    if (view_->index().firstChildOf(file) != kNoElement) {
        return definition(file);
    }
    std::string storage;
    const std::string_view id = view_->idOf(file, storage);
    const ElementNumber named = ids_.find(id, [this](ElementNumber element, std::string& keep) {
        return view_->idOf(element, keep);
    });
    return named == kNoElement ? nullptr : definition(named);
}

}  // namespace vornic::xmeml
