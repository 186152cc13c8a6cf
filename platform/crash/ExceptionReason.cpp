#include "platform/crash/ExceptionReason.h"

#include "base/Exception.h"

namespace vornic::platform {

std::string reasonOf(const std::exception_ptr& exception) {
    if (!exception) {
        return "terminated without an exception";
    }
    try {
        std::rethrow_exception(exception);
    } catch (const Exception& thrown) {
        return thrown.reason();
    } catch (const std::exception& thrown) {
        return thrown.what();
    } catch (...) {
        return "exception of an unknown type";
    }
}

}  // namespace vornic::platform
