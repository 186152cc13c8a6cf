#include "foundation/log/ConsoleFailure.h"

#include "base/FormatString.h"
#include "platform/processes/Console.h"

namespace vornic {

bool failOnConsole(std::string_view message, const ErrorSlot& error) {
    platform::consoleLog(formatString(message, error ? error->localizedDescription() : ""));
    return false;
}

}  // namespace vornic
