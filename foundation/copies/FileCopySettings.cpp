#include "foundation/copies/FileCopySettings.h"

#include <utility>

namespace vornic {

std::any FileCopySettings::objectForKey(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto found = objects_.find(key);
    return found != objects_.end() ? found->second : std::any();
}

void FileCopySettings::setObject(std::any object, std::string_view forKey) {
    const std::lock_guard lock(mutex_);
    objects_.insert_or_assign(std::string(forKey), std::move(object));
}

}  // namespace vornic
