#include "formats/xmeml/Version.h"

#include <algorithm>
#include <array>
#include <span>

namespace vornic::xmeml {

namespace {

using std::string_view;

constexpr auto kVersion2 = std::to_array<string_view>({"filmdata",
                                                       "filmslate",
                                                       "keycode",
                                                       "inknumber",
                                                       "multiclip",
                                                       "angle",
                                                       "audiochannel",
                                                       "collapsed",
                                                       "synctype",
                                                       "activevideoangle",
                                                       "activeaudioangle",
                                                       "mediadelay",
                                                       "defaultangle",
                                                       "channelcount",
                                                       "layout",
                                                       "takenote",
                                                       "shotnote",
                                                       "scenenote",
                                                       "take",
                                                       "slate",
                                                       "cameraroll",
                                                       "labroll",
                                                       "prefix",
                                                       "feetframes",
                                                       "perfoffset",
                                                       "reversed",
                                                       "dailyroll",
                                                       "filmstandard",
                                                       "telecinespeed",
                                                       "channellabel",
                                                       "sourcechannel",
                                                       "UUID"});
constexpr auto kVersion3 =
    std::to_array<string_view>({"metadata", "effectclass", "uuid", "updatebehavior", "storage",
                                "key", "size", "type", "gamma"});
constexpr auto kVersion4 =
    std::to_array<string_view>({"itemhistory", "createfcpprojectatxmlfilepath",
                                "deletethisxmlfileatimport", "mixedratesoffset"});
constexpr auto kVersion5 =
    std::to_array<string_view>({"subclipmasterid", "parameterspecifier", "anchoroffset", "color"});

bool has(std::span<const string_view> names, string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::optional<int> parseVersion(std::string_view text) {
    const bool isKnown = text.size() == 1 && text[0] >= '1' && text[0] <= '0' + kNewestVersion;
    return isKnown ? std::optional(text[0] - '0') : std::nullopt;
}

int versionOfElement(std::string_view name) {
    if (has(kVersion2, name)) {
        return 2;
    }
    if (has(kVersion3, name)) {
        return 3;
    }
    if (has(kVersion4, name)) {
        return 4;
    }
    return has(kVersion5, name) ? 5 : 1;
}

}  // namespace vornic::xmeml
