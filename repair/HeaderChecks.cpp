#include "repair/HeaderChecks.h"

#include <string>
#include <string_view>
#include <utility>

#include "foundation/QMException.h"
#include "foundation/QMLog.h"
#include "platform/Exception.h"
#include "report/Message.h"
#include "report/RuleTable.h"

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
    host.appendErrorInfoText(messageOf("repair-document-type"_rule));
    if (document != nullptr) {
        document->setDocumentType(name);
    }
}

void checkRootElement(RepairHost& host, const XMLDocument* document, std::string_view name) {
    if (document == nullptr || document->rootName() != name) {
        reportFault(host, messageOf("repair-root-element"_rule, {{"name", name}}));
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
                  RuleId missing) {
    if (document != nullptr && document->hasElementInRoot(element)) {
        return true;
    }
    reportFault(host, messageOf(missing));
    return false;
}

}  // namespace

DocumentPointer checkXMEMLHeaderTags(RepairHost& host, DocumentPointer document) {
    try {
        checkHead(host, document.get(), "xmeml");
        checkContent(host, document.get(), "sequence", "repair-no-sequence"_rule);
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkXMEMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

DocumentPointer checkFCPXMLHeaderTags(RepairHost& host, DocumentPointer document) {
    try {
        checkHead(host, document.get(), "fcpxml");
        if (checkContent(host, document.get(), "project", "repair-no-project"_rule)) {
            checkContent(host, document.get(), "resources", "repair-no-resources"_rule);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkFCPXMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

}  // namespace vornic
