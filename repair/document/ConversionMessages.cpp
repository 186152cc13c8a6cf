#include "repair/document/ConversionMessages.h"

#include <exception>
#include <new>

#include "base/Exception.h"
#include "base/FormatString.h"
#include "convert/catalogue/VersionCatalogue.h"
#include "foundation/log/QMException.h"
#include "foundation/log/QMLog.h"

namespace vornic {

namespace {

constexpr std::string_view kNotRecognized =
    "The file has not been recognized as a Final Cut Pro XML file. Please try repairing it before "
    "attempting conversion.";

void showAlert(std::string_view message, std::string_view info,
               const QMAlert::Window& window = nullptr) {
    QMAlert::alertSheetWithMessageText(std::string(message), std::string(info), window);
}

void tellNoCatalogue() {
    QMLog::appendLog(kUnableToLoadVersions);
    showAlert("Unable to load XML version information", "Please reinstall Brindle Tools.");
}

void tellNoVersion(const char* logged) {
    QMLog::appendLog(logged, kNotRecognized);
    showAlert("Unable to locate XML Interchange version information", kNotRecognized);
}

}  // namespace

void tellNotLoaded(std::string_view reason) {
    QMLog::appendLog(
        "Error loading XML file - %@. Please try repairing it first before attempting a "
        "conversion.",
        reason);
    showAlert("Error loading XML file",
              formatString("%@\n\nPlease try repairing it first before attempting a conversion.",
                           reason));
}

void tellAnalysisFailure(const AnalysisFailure& failure) {
    switch (failure.kind) {
        case AnalysisFailure::Kind::notLoaded:
            tellNotLoaded(failure.description);
            break;
        case AnalysisFailure::Kind::noCatalogue:
            tellNoCatalogue();
            break;
        case AnalysisFailure::Kind::noVersion:
            tellNoVersion("Unable to locate XML Interchange version information. %@");
            break;
    }
}

void tellVersionTest(const VersionTest& test) {
    const char* const method = "-[Document xmlString:requiresVersion:]";
    if (test.exception) {
        QMException::logException(*test.exception, method);
    }
    if (test.foundElement) {
        QMLog::appendLog("Found tag: %@", *test.foundElement);
    }
    try {
        if (test.lacksCatalogue) {
            tellNoCatalogue();
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, method);
    }
}

void tellNoTarget(const std::string& path) {
    QMLog::appendLog(
        "Version not set. Unable to convert XML file %@. Please report this bug to Quillmark.",
        path);
    showAlert("Version not set",
              "Unable to convert XML file. Please report this issue to Quillmark.");
}

void tellRefusal(ConversionRefusal refusal, const QMAlert::Window& window, bool showsAlert) {
    const char* const message = refusal == ConversionRefusal::noVersion
                                    ? "Unable to locate XML Interchange version information"
                                    : "Unable to locate version attribute node";
    QMLog::appendLogAndPrint("%@. %@", message, kNotRecognized);
    if (showsAlert) {
        showAlert(message, kNotRecognized, window);
    }
}

void tellStripResult(const StripResult& result) {
    for (const Error& error : result.queryErrors) {
        QMLog::appendLog("Error getting XML elements: %@", error.localizedDescription());
    }
    if (result.outcome == StripResult::Outcome::noCatalogue) {
        tellNoCatalogue();
    } else if (result.outcome == StripResult::Outcome::noVersion) {
        tellNoVersion("Unable to load XML Interchange version information. %@");
    }
}

void tellConversionResult(const ConversionResult& result, const std::string& path,
                          bool showsAlert) {
    if (result.saveError) {
        const std::string& reason = result.saveError->localizedDescription();
        QMLog::appendLogAndPrint("Unable to save file %@ - %@", path, reason);
        if (showsAlert) {
            showAlert("Unable to save file", reason);
        }
    }
    if (result.loadCodesError) {
        QMLog::appendLogAndPrint("Unable to load attributes for file %@ - %@", path,
                                 result.loadCodesError->localizedDescription());
    }
    if (result.writeCodesError) {
        QMLog::appendLogAndPrint("Unable to write file attributes to file %@ - %@", path,
                                 result.writeCodesError->localizedDescription());
    }
}

std::string logHandledException(const char* forMethod) {
    try {
        throw;
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, forMethod);
        return exception.reason();
    } catch (const std::bad_alloc&) {
        QMException::logException(platform::Exception("std::bad_alloc", "not enough memory"),
                                  forMethod);
        return std::string(kNoMemory);
    } catch (const std::exception& exception) {
        QMException::logException(platform::Exception("std::exception", exception.what()),
                                  forMethod);
        return exception.what();
    }
}

}  // namespace vornic
