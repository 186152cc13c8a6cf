#include "check/FreshIds.h"

namespace vornic {

std::string FreshIds::like(std::string_view id) {
    int& last = lastNumbers_.try_emplace(std::string(id), 1).first->second;
    std::string fresh;
    do {
        fresh = std::string(id) + "-" + std::to_string(++last);
    } while (index_.elementWithId(fresh) != kNoElement);
    return fresh;
}

}  // namespace vornic
