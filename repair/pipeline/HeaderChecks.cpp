#include "repair/pipeline/HeaderChecks.h"

#include <string>
#include <string_view>
#include <utility>

#include "base/Exception.h"
#include "foundation/log/QMException.h"
#include "report/RuleTable.h"

namespace vornic {

namespace {

using DocumentPointer = std::unique_ptr<XMLDocument>;

void mendDocumentType(XMLDocument* document, std::string_view name, const FoundInRepair& found) {
    if (document != nullptr && document->documentTypeName() == name) {
        return;
    }
    found({"repair-document-type"_rule, FindingEffect::mended});
    if (document != nullptr) {
        document->setDocumentType(name);
    }
}

void checkRootElement(const XMLDocument* document, std::string_view name,
                      const FoundInRepair& found) {
    if (document == nullptr || document->rootName() != name) {
        found({"repair-root-element"_rule, FindingEffect::unmended, {{"name", std::string(name)}}});
    }
}

/// What both kinds of file have in common.
void checkHead(XMLDocument* document, std::string_view name, const FoundInRepair& found) {
    mendDocumentType(document, name, found);
    checkRootElement(document, name, found);
}

/// Looks for an element anywhere inside the root element. @return true when there is one.
bool checkContent(const XMLDocument* document, std::string_view element, RuleId missing,
                  const FoundInRepair& found) {
    if (document != nullptr && document->hasElementInRoot(element)) {
        return true;
    }
    found({missing, FindingEffect::unmended});
    return false;
}

}  // namespace

DocumentPointer checkXMEMLHeaderTags(DocumentPointer document, const FoundInRepair& found) {
    try {
        checkHead(document.get(), "xmeml", found);
        checkContent(document.get(), "sequence", "repair-no-sequence"_rule, found);
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkXMEMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

DocumentPointer checkFCPXMLHeaderTags(DocumentPointer document, const FoundInRepair& found) {
    try {
        checkHead(document.get(), "fcpxml", found);
        if (checkContent(document.get(), "project", "repair-no-project"_rule, found)) {
            checkContent(document.get(), "resources", "repair-no-resources"_rule, found);
        }
    } catch (const platform::Exception& exception) {
        QMException::logException(exception, "-[Document checkFCPXMLHeaderTags:]");
        return nullptr;
    }
    return document;
}

}  // namespace vornic
