#include "tests/xml/reader/CanonicalXML.h"

#include <map>

#include "tests/xml/reader/RawText.h"
#include "xml/reader/XMLReader.h"

namespace vornic::test {

namespace {

std::string escaped(const std::string& text) {
    static const std::map<char, std::string> kEscapes = {
        {'&', "&amp;"}, {'<', "&lt;"},   {'>', "&gt;"},  {'"', "&quot;"},
        {'\t', "&#9;"}, {'\n', "&#10;"}, {'\r', "&#13;"}};
    std::string result;
    for (const char c : text) {
        const auto escape = kEscapes.find(c);
        result += escape == kEscapes.end() ? std::string(1, c) : escape->second;
    }
    return result;
}

class CanonicalForm : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override {
        finishStartTag();
        form_ += "<" + std::string(name);
        inStartTag_ = true;
    }
    void attribute(std::string_view name, std::string_view rawValue) override {
        attributes_[std::string(name)] = attributeValue(rawValue);
    }
    void endElement(std::string_view name, bool) override {
        finishStartTag();
        form_ += "</" + std::string(name) + ">";
    }
    void text(std::string_view rawText) override {
        finishStartTag();
        form_ += escaped(withoutReferences(withLineFeeds(rawText)));
    }
    void cdata(std::string_view content) override {
        finishStartTag();
        form_ += escaped(withLineFeeds(content));
    }
    void comment(std::string_view) override {}
    void processingInstruction(std::string_view target, std::string_view data) override {
        finishStartTag();
        form_ += "<?" + std::string(target) + " " + withLineFeeds(data) + "?>";
    }
    void documentType(std::string_view, std::string_view) override {}

    [[nodiscard]] const std::string& form() const { return form_; }

  private:
    void finishStartTag() {
        if (!inStartTag_) {
            return;
        }
        for (const auto& [name, value] : attributes_) {
            form_ += " " + name + "=\"" + escaped(value) + "\"";
        }
        form_ += ">";
        attributes_.clear();
        inStartTag_ = false;
    }

    std::string form_;
    std::map<std::string, std::string> attributes_;
    bool inStartTag_ = false;
};

}  // namespace

std::string canonicalXML(std::string_view text) {
    CanonicalForm form;
    (void)readXML(text, XMLMode::strict, &form);
    return form.form();
}

}  // namespace vornic::test
