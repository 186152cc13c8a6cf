#ifndef VORNIC_FOUNDATION_LOG_QM_EXCEPTION_H
#define VORNIC_FOUNDATION_LOG_QM_EXCEPTION_H

#include <string>

#include "base/Exception.h"

namespace vornic {

/// Turns a caught exception into one line of the log.
class QMException {
  public:
    /// Logs and prints "Exception in %s. %@ - %@." with the method, the exception's name and its
    /// reason. @param method the catching operation's signature, such as "-[Document
    /// startRepair:]".
    /// @return the message.
    static std::string logException(const platform::Exception& exception, const char* forMethod);
    /// True when the exception's name is "NSPortTimeoutException".
    [[nodiscard]] static bool didTimeout(const platform::Exception& exception);
};

}  // namespace vornic

#endif
