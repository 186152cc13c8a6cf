#ifndef VORNIC_BENCH_FCPXML_SAMPLE_H
#define VORNIC_BENCH_FCPXML_SAMPLE_H

#include <cstddef>
#include <string>

namespace vornic::bench {

/// What an FCPXML file made for a measurement is to be like.
struct FCPXMLSample {
    /// About how long the file is to be.
    std::size_t bytes = 0;
    /// What the document type declaration names as the place of the definition; "" for none.
    std::string definition = "";
    /// How many ampersands stand in the clips' notes that begin no reference; 0 for a sound file.
    std::size_t strayAmpersands = 0;
};

/// Writes a file of version 1.10: media with their copies, events with projects, spines of clips
/// with sound, filters, markers, keywords, notes and connected titles, some non-ASCII text and
/// references. The same sample always gives the same bytes. @return false when it cannot be
/// written.
[[nodiscard]] bool saveFCPXMLSample(const FCPXMLSample& sample, const std::string& path);

}  // namespace vornic::bench

#endif
