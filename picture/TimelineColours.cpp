#include "picture/TimelineColours.h"

#include <cstdint>

namespace vornic {

namespace {

constexpr Colour rgb(std::uint32_t value) {
    constexpr unsigned kByte = 8;
    return {static_cast<std::uint8_t>(value >> 2 * kByte),
            static_cast<std::uint8_t>(value >> kByte), static_cast<std::uint8_t>(value)};
}

// The kinds in their order: video, audio, title, generator, compound, multicam, synchronized,
// audition, caption, gap, transition, storyline.
constexpr TimelineColours kLight = {.paper = rgb(0xffffff),
                                    .pictureTrack = rgb(0xf2f4f8),
                                    .soundTrack = rgb(0xf1f7f1),
                                    .text = rgb(0x1a1a1a),
                                    .faintText = rgb(0x4a4a4a),
                                    .line = rgb(0x8a8f96),
                                    .clipText = rgb(0x1a1a1a),
                                    .marker = rgb(0x3b5bdb),
                                    .cursor = rgb(0x10131a),
                                    .sign = rgb(0xffffff),
                                    .kinds = {{{rgb(0xb9d2f5), rgb(0x5580b8)},
                                               {rgb(0xbfe6c4), rgb(0x4f9560)},
                                               {rgb(0xddc9f2), rgb(0x8560ad)},
                                               {rgb(0xead9c0), rgb(0xa07f4d)},
                                               {rgb(0xa9dce0), rgb(0x3f8d94)},
                                               {rgb(0xf2cde0), rgb(0xa95c85)},
                                               {rgb(0xc9cdf4), rgb(0x666cb5)},
                                               {rgb(0xf6dfa9), rgb(0xab8532)},
                                               {rgb(0xf4f0a6), rgb(0x9b953a)},
                                               {rgb(0xf6f6f6), rgb(0xa0a0a0)},
                                               {rgb(0xffffff), rgb(0x555555)},
                                               {rgb(0xdfe3e8), rgb(0x9aa3ad)}}},
                                    .severities = {rgb(0x1f5fc2), rgb(0xa85b00), rgb(0xc21f1f)}};

constexpr TimelineColours kDark = {.paper = rgb(0x1d1f23),
                                   .pictureTrack = rgb(0x272a30),
                                   .soundTrack = rgb(0x262e29),
                                   .text = rgb(0xeceff4),
                                   .faintText = rgb(0xb6bcc6),
                                   .line = rgb(0x767d88),
                                   .clipText = rgb(0xf4f6fa),
                                   .marker = rgb(0x8ea6ff),
                                   .cursor = rgb(0xffffff),
                                   .sign = rgb(0x14161a),
                                   .kinds = {{{rgb(0x2c4a73), rgb(0x6f9bd6)},
                                              {rgb(0x28543a), rgb(0x69b583)},
                                              {rgb(0x523a6e), rgb(0xa583cf)},
                                              {rgb(0x5a4524), rgb(0xbd9a62)},
                                              {rgb(0x1f5358), rgb(0x5fb4bc)},
                                              {rgb(0x65364f), rgb(0xcd7fa7)},
                                              {rgb(0x3d4180), rgb(0x8d93dc)},
                                              {rgb(0x5f4a14), rgb(0xc9a24b)},
                                              {rgb(0x54501a), rgb(0xb8b157)},
                                              {rgb(0x2b2d31), rgb(0x858a92)},
                                              {rgb(0x3a3d43), rgb(0xc4c9d1)},
                                              {rgb(0x33373e), rgb(0x7b848f)}}},
                                   .severities = {rgb(0x7ab7ff), rgb(0xf0a84e), rgb(0xff8080)}};

}  // namespace

const TimelineColours& TimelineColours::light() {
    return kLight;
}

const TimelineColours& TimelineColours::dark() {
    return kDark;
}

}  // namespace vornic
