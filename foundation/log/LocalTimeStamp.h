#ifndef VORNIC_FOUNDATION_LOG_LOCAL_TIME_STAMP_H
#define VORNIC_FOUNDATION_LOG_LOCAL_TIME_STAMP_H

#include <functional>
#include <string>

namespace vornic {

/// The current local date and time as it stands in names of files: fourteen digits, from the year
/// to the second. Any thread.
[[nodiscard]] std::string localTimeStamp();

/// A path with such a stamp at which nothing stands: where one is taken, that of the next second is
/// waited for, up to two seconds.
/// @param stampedPath gives the path with the stamp of the moment
[[nodiscard]] std::string freeStampedPath(const std::function<std::string()>& stampedPath);

}  // namespace vornic

#endif
