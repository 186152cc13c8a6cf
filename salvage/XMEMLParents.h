#ifndef VORNIC_SALVAGE_XMEML_PARENTS_H
#define VORNIC_SALVAGE_XMEML_PARENTS_H

#include <string_view>

namespace vornic::salvage {

/// Which elements of XMEML stand in which (`resources/xmeml_parents.txt`), which is part of the
/// program: a line for each parent, `parent: child child #text`, and comments behind `#`.
[[nodiscard]] std::string_view xmemlParentsText();

}  // namespace vornic::salvage

#endif
