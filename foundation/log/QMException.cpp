#include "foundation/log/QMException.h"

#include "base/FormatString.h"
#include "foundation/log/QMLog.h"

namespace vornic {

std::string QMException::logException(const platform::Exception& exception, const char* forMethod) {
    std::string message =
        formatString("Exception in %s. %@ - %@.", forMethod, exception.name(), exception.reason());
    QMLog::appendLogAndPrint("%@", message);
    return message;
}

bool QMException::didTimeout(const platform::Exception& exception) {
    return exception.name() == "NSPortTimeoutException";
}

}  // namespace vornic
