#ifndef VORNIC_JOB_MEDIA_LOOK_H
#define VORNIC_JOB_MEDIA_LOOK_H

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "formats/ElementIndex.h"
#include "foundation/places/PathLook.h"
#include "media/MediaList.h"
#include "report/Findings.h"
#include "report/MediaRecord.h"

namespace vornic {

/// Where a media file was found, or why not.
struct MediaSight {
    MediaState state = MediaState::unknown;
    /// Its path on this computer, without links; "" when it is not there.
    std::string path;
};

/// Looks where media are. What was looked at once is not asked for again. Any thread.
class MediaLook {
  public:
    /// @param project the path of the project file, from whose folder relative paths lead on.
    /// @return one for each medium.
    [[nodiscard]] std::vector<MediaSight> lookFor(const std::vector<Medium>& media,
                                                  const std::string& project);

    /// What `CheckOptions::media` asks for; this must outlive it.
    [[nodiscard]] std::function<void(const ElementIndex&, bool, Findings&)> checkOf(
        std::string project);

  private:
    PathLook look_;
    std::mutex mutex_;
    std::map<std::string, MediaSight> known_;
};

/// The path on this computer that a medium has; "" for one of another computer.
[[nodiscard]] std::string pathHere(const MediaPath& path, const std::string& project);

/// Tells, in the order of the media, those that are not there.
void addMediaFindings(const std::vector<Medium>& media, const std::vector<MediaSight>& sights,
                      Findings& findings);

}  // namespace vornic

#endif
