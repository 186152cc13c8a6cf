#ifndef VORNIC_JOB_MEDIA_REPORT_H
#define VORNIC_JOB_MEDIA_REPORT_H

#include <vector>

#include "job/MediaLook.h"
#include "job/ProjectText.h"
#include "media/MediaList.h"
#include "report/Report.h"

namespace vornic {

/// What reports say about media, except where they are looked for and relinked to.
/// @param hasPlaces whether each says where it is named first, which costs a pass over the text
[[nodiscard]] std::vector<MediaRecord> recordsOf(const std::vector<Medium>& media,
                                                 const ProjectText& project, bool hasPlaces);

/// Adds where the media are.
/// @param sights one for each record
void takeSights(const std::vector<MediaSight>& sights, std::vector<MediaRecord>& records);

/// The head of a report on the file; of the groups none has run.
[[nodiscard]] Report headOf(const ProjectText& project, std::size_t bytes);

}  // namespace vornic

#endif
