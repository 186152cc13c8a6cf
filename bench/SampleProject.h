#ifndef VORNIC_BENCH_SAMPLE_PROJECT_H
#define VORNIC_BENCH_SAMPLE_PROJECT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vornic::bench {

/// What an XMEML file made for a measurement is to be like.
struct SampleProject {
    /// About how long the file is to be; it ends after the clip item that reaches this length.
    std::size_t bytes = 0;
    /// The XMEML version that it declares and keeps to. Files of version 5 are indented by four
    /// blanks, others by tabs.
    int version = 5;
    /// Puts the fault into the text of an element once in this many bytes; 0 for a sound file.
    std::size_t faultEvery = 0;
    /// A vertical tab, which XML forbids; or an ampersand that begins nothing.
    char fault = '\v';
};

/// Writes the file in pieces: sequences with video and audio tracks, clip items with names, rates,
/// files, filters, links, logging notes and empty pairs as editing programs export them, with some
/// non-ASCII text and entities. The same project always gives the same bytes.
void writeSampleProject(const SampleProject& project,
                        const std::function<void(std::string_view piece)>& sink);

/// The file as one string.
[[nodiscard]] std::string sampleProjectText(const SampleProject& project);

/// The file on the disk, replacing what is there. @return false when it cannot be written.
[[nodiscard]] bool saveSampleProject(const SampleProject& project, const std::string& path);

}  // namespace vornic::bench

#endif
