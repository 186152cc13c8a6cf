#include "repair/HeaderChecks.h"

#include <string>
#include <string_view>
#include <utility>

#include "foundation/FormatString.h"
#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "platform/Exception.h"

namespace vornic {

namespace {

using DocumentPointer = std::unique_ptr<XMLDocument>;

/// Reports a fault that is not mended.
void reportFault(RepairHost& host, std::string_view message) {
    host.setFileHasErrs(true);
    host.setFileWasRepaired(false);
    host.appendErrorInfoText(message);
}

void mendDocumentType(RepairHost& host, XMLDocument* document, std::string_view name) {
    if (document != nullptr && document->documentTypeName() == name) {
        return;
    }
    host.setFileHasErrs(true);
    host.appendErrorInfoText("Invalid DTD... repairing");
    if (document != nullptr) {
        document->setDocumentType(name);
    }
}

void checkRootElement(RepairHost& host, const XMLDocument* document, std::string_view name) {
    if (document == nullptr || document->rootName() != name) {
        reportFault(host, formatString("Root element should be <%@> node", name));
    }
}

/// What both kinds of file have in common.
void checkHead(RepairHost& host, XMLDocument* document, std::string_view name) {
    QMLog::appendLog("Checking header tags...");
    mendDocumentType(host, document, name);
    checkRootElement(host, document, name);
}

/// Reports it when there is no such element anywhere inside the root element. @return true when
/// there is one.
bool checkContent(RepairHost& host, const XMLDocument* document, std::string_view element,
                  std::string_view message) {
    if (document != nullptr && document->hasElementInRoot(element)) {
        return true;
    }
    reportFault(host, message);
    return false;
}

}  // namespace

DocumentPointer checkXMEMLHeaderTags(RepairHost& host, DocumentPointer document) {
    try {
        checkHead(host, document.get(), "xmeml");
        checkContent(host, document.get(), "sequence", "No sequences found in file");
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkXMEMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

DocumentPointer checkFCPXMLHeaderTags(RepairHost& host, DocumentPointer document) {
    try {
        checkHead(host, document.get(), "fcpxml");
        if (checkContent(host, document.get(), "project", "No project node found in file")) {
            checkContent(host, document.get(), "resources", "No resource node found in file");
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkFCPXMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

}  // namespace vornic
