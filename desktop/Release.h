#ifndef VORNIC_DESKTOP_RELEASE_H
#define VORNIC_DESKTOP_RELEASE_H

#include <memory>
#include <vector>

namespace vornic {

/// Lets go of what takes long to be freed: on a thread, and after the main one has dispatched what
/// it is at, so that nobody else holds it any more. Main thread.
void releaseOnThread(std::vector<std::shared_ptr<const void>> kept);

}  // namespace vornic

#endif
