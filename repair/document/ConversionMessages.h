#ifndef VORNIC_REPAIR_DOCUMENT_CONVERSION_MESSAGES_H
#define VORNIC_REPAIR_DOCUMENT_CONVERSION_MESSAGES_H

#include <string>
#include <string_view>

#include "convert/ConversionAnalysis.h"
#include "convert/VersionConversion.h"
#include "convert/VersionTest.h"
#include "job/ConversionCommit.h"
#include "ui/alerts/QMAlert.h"

/// What is said about a conversion: log lines, and alerts that wait for their answer and have no
/// parent window unless it is said. Any thread. What an alert raises passes on, unless it is said.
namespace vornic {

inline constexpr std::string_view kNoMemory = "There is not enough memory.";

/// Why a file cannot be loaded.
void tellNotLoaded(std::string_view reason);
/// Why a file cannot be analysed.
void tellAnalysisFailure(const AnalysisFailure& failure);
/// What the test for a version found. What is raised is logged under the name of the test.
void tellVersionTest(const VersionTest& test);
/// That no version was chosen for a file.
void tellNoTarget(const std::string& path);
/// Why a document cannot be converted: logged and printed, with an alert on the window when there
/// is a user to read it.
void tellRefusal(ConversionRefusal refusal, const QMAlert::Window& window, bool showsAlert);
void tellStripResult(const StripResult& result);
/// What could not be written: logged and printed; a failed save with an alert when there is a user
/// to read it.
void tellConversionResult(const ConversionResult& result, const std::string& path, bool showsAlert);

/// Logs the exception that is being handled, of whatever kind. @return its reason, for a user.
std::string logHandledException(const char* forMethod);

}  // namespace vornic

#endif
