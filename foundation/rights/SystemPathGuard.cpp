#include "foundation/rights/SystemPathGuard.h"

#include <algorithm>
#include <vector>

#include "foundation/places/QMLocalPaths.h"
#include "platform/rights/ProtectedPaths.h"

namespace vornic {

bool isGuardedSystemPath(const std::string& path) {
    const std::vector<std::string> forms = platform::formsOfPath(path);
    return platform::isProtectedItem(path) ||
           std::any_of(forms.begin(), forms.end(), [](const std::string& form) {
               return QMLocalPaths::isPathSystemDirectory(form, true);
           });
}

}  // namespace vornic
