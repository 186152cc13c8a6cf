#ifndef VORNIC_REPORT_RULES_MEDIA_RULES_H
#define VORNIC_REPORT_RULES_MEDIA_RULES_H

#include "report/Rule.h"

namespace vornic::rules {

namespace detail {

inline constexpr std::string_view kMediaEffect =
    "The project opens, and every clip of this file is offline until it is linked again.";
inline constexpr std::string_view kRelinkRemedy =
    "Put the file where the project looks for it, or let vornic-media relink find it: --search for "
    "a folder to look through, --map for a folder that has moved.";
inline constexpr std::string_view kLookSource =
    "The file system of this computer, asked for the status of the path alone";

}  // namespace detail

/// What of the media files that a project names is not where it says, on this computer.
inline constexpr Rule kMediaRules[] = {
    {"media-missing", RuleGroup::media, Severity::error,
     "the media file {path}, which {uses}, is not there; it should be, or the "
     "project should say where it is",
     "The project names a file by its path, and nothing of that name is there on this computer.",
     detail::kMediaEffect, detail::kRelinkRemedy, detail::kLookSource},
    {"media-other-name", RuleGroup::media, Severity::warning,
     "the media file {path}, which {uses}, is there as {found}; both names should "
     "be the same",
     "The name on the disk differs from the one in the project by the case of its letters, or by "
     "the form of its accents, only. Some volumes take both for the same name and others do not.",
     "Where the volume keeps names apart, every clip of this file is offline.",
     "Give the file or folder the name that the project has, or let vornic-media relink write the "
     "one on the disk.",
     "The file system of this computer; Unicode Standard Annex 15 (normalization forms)"},
    {"media-folder", RuleGroup::media, Severity::error,
     "the media file {path}, which {uses}, is a folder; it should be a file",
     "The path leads to a folder, where a media file should be.", detail::kMediaEffect,
     detail::kRelinkRemedy, detail::kLookSource},
    {"media-unreadable", RuleGroup::media, Severity::error,
     "the media file {path}, which {uses}, may not be read; this user should "
     "have the right to",
     "The file, or a folder on the way to it, may not be read by this user, or it is no file that "
     "could be read.",
     "The clips of this file are offline for this user.",
     "Give the user the right to read the file and to enter the folders above it.",
     detail::kLookSource},
    {"media-not-mounted", RuleGroup::media, Severity::error,
     "the media file {path}, which {uses}, is on a volume that is not mounted; "
     "that should be",
     "The path begins with the folder of a volume, and the volume is not there. Nothing was "
     "mounted in order to look.",
     detail::kMediaEffect,
     "Connect the volume and look again, or let vornic-media relink find the file elsewhere.",
     "The mount table of this computer"},
    {"media-no-answer", RuleGroup::media, Severity::warning,
     "the media file {path}, which {uses}, is on a volume that does not "
     "answer; it should be looked for again once that does",
     "The volume that the path leads to did not answer in time, as with a server that is gone, or "
     "answered with an error. Whether the file is there is not known.",
     "Editing programs hang, or show the clips as offline, until the volume answers.",
     "Bring the server back, or unmount the volume, and look again.", detail::kLookSource},
    {"media-elsewhere", RuleGroup::media, Severity::info,
     "the media file {path}, which {uses}, is on another computer; it should be "
     "looked for there",
     "The path begins with a drive of Windows, with the name of a server, or is no path of files "
     "at all. Only what this computer has is looked at.",
     "On a computer that knows no such path every clip of this file is offline.",
     "Check on the computer that the path is for, or let vornic-media relink --map turn the path "
     "into one of this computer.",
     "RFC 8089 (file URLs)"},
};

}  // namespace vornic::rules

#endif
