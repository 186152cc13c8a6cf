#ifndef VORNIC_TESTS_DESKTOP_PROJECT_TEXTS_H
#define VORNIC_TESTS_DESKTOP_PROJECT_TEXTS_H

#include <string>

namespace vornic::test {

/// A file that needs no repair.
inline constexpr const char* kSound =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
    "    <sequence>\n        <name>Cut</name>\n    </sequence>\n</xmeml>\n";

/// A clip with something that came with version 1.11.
inline const std::string kFCPXML =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.13\">\n"
    "    <resources>\n        <format id=\"r1\" frameDuration=\"1/25s\"/>\n"
    "        <asset id=\"r2\" start=\"0s\" duration=\"10s\" hasVideo=\"1\" format=\"r1\">\n"
    "            <media-rep kind=\"original-media\" src=\"file:///a.mov\"/>\n        </asset>\n"
    "    </resources>\n    <project name=\"P\">\n"
    "        <sequence format=\"r1\" duration=\"1s\">\n            <spine>\n"
    "                <asset-clip ref=\"r2\" name=\"One\" offset=\"0s\" duration=\"1s\">\n"
    "                    <adjust-colorConform conformType=\"conformNone\" "
    "peakNitsOfPQSource=\"100\" peakNitsOfSDRToPQSource=\"100\"/>\n"
    "                </asset-clip>\n"
    "            </spine>\n        </sequence>\n    </project>\n</fcpxml>\n";

}  // namespace vornic::test

#endif
