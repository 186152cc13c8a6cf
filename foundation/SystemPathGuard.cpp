#include "foundation/SystemPathGuard.h"

#include <algorithm>
#include <vector>

#include "foundation/QMLocalPaths.h"
#include "platform/ProtectedPaths.h"

namespace vornic {

bool isGuardedSystemPath(const std::string& path) {
    const std::vector<std::string> forms = platform::formsOfPath(path);
    return platform::isProtectedItem(path) ||
           std::any_of(forms.begin(), forms.end(), [](const std::string& form) {
               return QMLocalPaths::isPathSystemDirectory(form, true);
           });
}

}  // namespace vornic
