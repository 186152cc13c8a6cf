#ifndef VORNIC_DESKTOP_FIND_STEP_H
#define VORNIC_DESKTOP_FIND_STEP_H

namespace vornic {

/// Where a search goes on: behind or before what was found last, or at its beginning, when the text
/// that is looked for has grown.
enum class FindStep { next, previous, here };

}  // namespace vornic

#endif
