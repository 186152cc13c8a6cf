#ifndef VORNIC_FORMATS_XMEML_NAME_H
#define VORNIC_FORMATS_XMEML_NAME_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vornic::xmeml {

/// The elements of XMEML that rules look at; `other` is every other name.
enum class Name : std::uint8_t {
    alignment,
    alphareverse,
    alphatype,
    anamorphic,
    angle,
    audio,
    bin,
    channelcount,
    children,
    clip,
    clipindex,
    clipitem,
    depth,
    displayformat,
    duration,
    effect,
    effectid,
    enabled,
    end,
    fielddominance,
    file,
    filter,
    frame,
    generatoritem,
    groupindex,
    height,
    importoptions,
    in,
    ismasterclip,
    key,
    keyframe,
    link,
    linkclipref,
    locked,
    marker,
    masterclipid,
    media,
    mediatype,
    metadata,
    multiclip,
    name,
    ntsc,
    out,
    parameter,
    parameterid,
    pathurl,
    project,
    rate,
    reverse,
    reversed,
    samplecharacteristics,
    samplerate,
    sequence,
    start,
    stillframe,
    storage,
    string,
    timebase,
    timecode,
    track,
    trackindex,
    transitionitem,
    value,
    valuelist,
    video,
    when,
    width,
    xmeml,
    other,
};

inline constexpr std::size_t kNameCount = static_cast<std::size_t>(Name::other);

/// The names as they are written, in the order of the enumeration.
inline constexpr std::array<std::string_view, kNameCount> kNames = {
    "alignment",  "alphareverse",   "alphatype",
    "anamorphic", "angle",          "audio",
    "bin",        "channelcount",   "children",
    "clip",       "clipindex",      "clipitem",
    "depth",      "displayformat",  "duration",
    "effect",     "effectid",       "enabled",
    "end",        "fielddominance", "file",
    "filter",     "frame",          "generatoritem",
    "groupindex", "height",         "importoptions",
    "in",         "ismasterclip",   "key",
    "keyframe",   "link",           "linkclipref",
    "locked",     "marker",         "masterclipid",
    "media",      "mediatype",      "metadata",
    "multiclip",  "name",           "ntsc",
    "out",        "parameter",      "parameterid",
    "pathurl",    "project",        "rate",
    "reverse",    "reversed",       "samplecharacteristics",
    "samplerate", "sequence",       "start",
    "stillframe", "storage",        "string",
    "timebase",   "timecode",       "track",
    "trackindex", "transitionitem", "value",
    "valuelist",  "video",          "when",
    "width",      "xmeml"};

[[nodiscard]] constexpr std::string_view textOf(Name name) {
    return name == Name::other ? std::string_view() : kNames[static_cast<std::size_t>(name)];
}

[[nodiscard]] constexpr Name nameOf(std::string_view text) {
    const auto* const found = std::find(kNames.begin(), kNames.end(), text);
    return static_cast<Name>(found - kNames.begin());
}

// Both are sorted, so that one name of each place holds for all.
static_assert(std::is_sorted(kNames.begin(), kNames.end()));
static_assert(nameOf("alignment") == Name::alignment && nameOf("link") == Name::link &&
              nameOf("xmeml") == Name::xmeml && nameOf("") == Name::other);

}  // namespace vornic::xmeml

#endif
