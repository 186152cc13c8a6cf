#include "salvage/Salvage.h"

#include <utility>

#include "salvage/CopyRun.h"
#include "salvage/SourceText.h"
#include "xml/reader/XMLReader.h"

namespace vornic::salvage {

namespace {

constexpr std::string_view kUnrecognisable =
    "Nothing in the file looks like a Final Cut Pro project (XMEML or FCPXML).";
// A file with more root elements is no heap of projects.
constexpr std::size_t kMostCopies = 1000;

// The root element of a sound file.
class RootReader final : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override {
        isInRoot_ = root_.empty();
        root_ = isInRoot_ ? std::string(name) : root_;
    }
    void attribute(std::string_view name, std::string_view rawValue) override {
        if (isInRoot_ && name == "version") {
            version_ = rawValue;
        }
    }
    void endElement(std::string_view /*name*/, bool /*selfClosed*/) override {}
    void text(std::string_view /*rawText*/) override {}
    void cdata(std::string_view /*content*/) override {}
    void comment(std::string_view /*content*/) override {}
    void processingInstruction(std::string_view /*target*/, std::string_view /*data*/) override {}
    void documentType(std::string_view /*name*/, std::string_view /*raw*/) override {}

    [[nodiscard]] const std::string& root() const { return root_; }
    [[nodiscard]] const std::string& version() const { return version_; }

  private:
    bool isInRoot_ = false;
    std::string root_;
    std::string version_;
};

// Salvages one file.
class Run {
  public:
    Run(const SourceText& source, const SalvageOptions& options, Salvage& result)
        : source_(source), options_(options), result_(result) {}

    void run() {
        const std::string& text = source_.text();
        const FileKind kind = guessKind(text);
        if (kind == FileKind::none) {
            return refuse(kUnrecognisable);
        }
        if (text.size() > kLongestText) {
            return refuse("Files of 4 GB and more are not salvaged.");
        }
        result_.report.kind = nameOf(kind);
        structure_ = findStructure(text, kind, options_.weights);
        if (structure_.names.isFull()) {
            return refuse(kTooManyFaults);
        }
        if (structure_.copies.empty()) {
            return refuse(kUnrecognisable);
        }
        if (structure_.copies.size() > kMostCopies) {
            return refuse(kTooManyFaults);
        }
        for (std::size_t number = 0; number < structure_.copies.size(); ++number) {
            CopyRun copy(text, structure_, number, result_.report.findings);
            if (!copy.run()) {
                result_.copies.clear();
                return refuse(copy.refusal());
            }
            if (number == 0) {
                result_.report.version = copy.version();
            }
            result_.copies.push_back(copy.takeCopy());
        }
    }

  private:
    // Guesses that nothing came of tell nothing.
    void refuse(std::string_view why) {
        result_.refusal = why;
        result_.report.findings = Findings(options_.mostOfARule);
    }

    const SourceText& source_;
    const SalvageOptions& options_;
    Salvage& result_;
    Structure structure_;
};

}  // namespace

Salvage salvage(std::string bytes, const SalvageOptions& options) {
    Salvage result;
    result.report.bytes = bytes.size();
    result.report.findings = Findings(options.mostOfARule);
    for (const RuleGroup group : kCheckedGroups) {
        result.report.groups.push_back({group, false, std::string(kNotAskedFor)});
    }
    ErrorSlot error;
    const std::optional<SourceText> source =
        SourceText::of(std::move(bytes), result.report.findings, error);
    if (!source) {
        result.refusal = error->localizedDescription();
        return result;
    }
    result.report.encoding = source->encoding();
    const bool isWhole = result.report.findings.kept().empty();
    RootReader root;
    if (isWhole && !readXML(source->text(), XMLMode::strict, &root).fault) {
        result.report.kind = nameOf(fileKindOfRoot(root.root()));
        result.report.version = root.version();
        result.isSound = true;
        return result;
    }
    Run(*source, options, result).run();
    result.report.findings.sort();
    source->place(result.report.findings);
    return result;
}

}  // namespace vornic::salvage
