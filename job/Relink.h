#ifndef VORNIC_JOB_RELINK_H
#define VORNIC_JOB_RELINK_H

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/StopToken.h"
#include "job/MediaLook.h"
#include "job/ProjectText.h"
#include "media/MediaEdits.h"
#include "media/MediaMatch.h"
#include "media/PathMap.h"
#include "report/Report.h"

namespace vornic {

/// How media are to be relinked.
struct RelinkRequest {
    PathMap map;
    /// Folders that are searched for what is not there; absolute.
    std::vector<std::string> folders;
    std::optional<Pick> pick;
    /// How changed paths are written; nothing for the form that each has. Without map and folders
    /// all paths are written so.
    std::optional<PathForm> form;
};

/// What relinking makes of a project, in memory.
struct RelinkedBytes {
    /// Without anything to relink, or with a refusal, what they were.
    std::string bytes;
    /// Of what was relinked, and of what was left.
    Report report;
    std::uint64_t relinked = 0;
    /// Media that are not there, or were not found, and stay as they are.
    std::uint64_t left = 0;
    /// Why nothing may be written; "" otherwise.
    std::string refusal;
};

/// Relinks the media of one or more projects. Tell it of all projects first, so that folders are
/// searched once, whatever the number of projects and names. One thread.
class Relinker {
  public:
    explicit Relinker(const RelinkRequest& request) : request_(request) {}

    /// Notes what of a project's media has to be searched for.
    void prepare(const ProjectText& project, const std::string& path);
    /// Searches the folders.
    /// @param stop ends the search; what was found so far is used
    /// @return those that could not be looked through.
    [[nodiscard]] std::vector<std::string> search(const StopToken& stop = {});
    /// Relinks a project; writes nothing. What comes of it is read again, and is refused unless its
    /// media lead where they should.
    /// @param bytes that the project was read from
    [[nodiscard]] RelinkedBytes relink(const ProjectText& project, const std::string& bytes,
                                       const std::string& path);

  private:
    // What becomes of one medium.
    struct Decision {
        MediumTarget target;
        MediaSight sight;
        std::string why;
        std::vector<std::string> candidates;
        // The file that the search has found.
        std::string found;
    };

    [[nodiscard]] std::vector<Decision> mapped(const std::vector<Medium>& media) const;
    void look(const std::vector<Medium>& media, const std::string& path,
              std::vector<Decision>& decisions);
    void takeFound(const std::vector<Medium>& media, std::vector<Decision>& decisions) const;
    [[nodiscard]] static bool isToBeSearched(const Medium& medium, const Decision& decision);

    const RelinkRequest& request_;
    MediaLook look_;
    std::unordered_set<std::string> wanted_;
    std::unordered_map<std::string, std::vector<FoundFile>> found_;
};

}  // namespace vornic

#endif
