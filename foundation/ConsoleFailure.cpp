#include "foundation/ConsoleFailure.h"

#include "foundation/FormatString.h"
#include "platform/Console.h"

namespace vornic {

bool failOnConsole(std::string_view message, const ErrorSlot& error) {
    platform::consoleLog(formatString(message, error ? error->localizedDescription() : ""));
    return false;
}

}  // namespace vornic
