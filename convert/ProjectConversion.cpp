#include "convert/ProjectConversion.h"

#include <utility>

#include "base/FormatString.h"
#include "check/RulesBeside.h"
#include "check/fcpxml/StructureFindings.h"
#include "convert/fcpxml/Conversion.h"
#include "convert/xmeml/Conversion.h"
#include "formats/ElementIndexBuilder.h"
#include "formats/PlaceFinder.h"
#include "formats/fcpxml/Validator.h"
#include "formats/xmeml/Version.h"
#include "report/XMLFindings.h"
#include "xml/reader/XMLEventTee.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

namespace {

using std::string;
using std::string_view;

// A thread costs more than a small file.
constexpr std::size_t kLargeText = std::size_t{1} << 20U;

string_view markOf(const TextDecoding& decoding) {
    if (decoding.markLength == 0) {
        return "";
    }
    if (decoding.encoding == "UTF-16LE") {
        return "\xFF\xFE";
    }
    return decoding.encoding == "UTF-16BE" ? string_view("\xFE\xFF") : kByteOrderMark;
}

// Whether a text keeps to the definition of the version that it is read as.
class StructureCheck {
  public:
    StructureCheck(fcpxml::Version version, string_view text, const Findings& findings)
        : text_(text),
          found_(findings.emptyCopy()),
          validator_(fcpxml::Definition::of(version), false,
                     structureFindings(version, text, found_)) {}

    /// What is to be told what a reading of the text tells, unless `readBeside` reads it.
    [[nodiscard]] XMLReaderEvents* events() { return beside_ ? nullptr : &validator_; }

    /// Reads the text on a thread.
    void readBeside() {
        beside_.emplace(true, found_, [this](Findings& /*findings*/) {
            UnheardXMLMends mends;
            static_cast<void>(readXML(text_, XMLMode::tolerant, &validator_, &mends));
        });
    }
    /// Adds what is wrong behind what was found, once all has been read.
    /// @return whether nothing is.
    bool finish(Findings& findings) {
        if (beside_) {
            beside_->addTo(findings);
        }
        validator_.finish();
        findings.append(std::move(found_));
        return validator_.isValid();
    }

  private:
    string_view text_;
    Findings found_;
    fcpxml::Validator validator_;
    // The last one: it waits for its thread, which uses the others.
    std::optional<RulesBeside> beside_;
};

}  // namespace

struct ProjectConversion::Open {
    // Of the source's text, which is large and stays where it is when the conversion is moved.
    std::optional<ElementIndex> index;
    bool isWellFormed = false;
    // The last one: its thread reads the text.
    std::optional<StructureCheck> structure;
};

namespace {

// Converts one text.
class Converting {
  public:
    Converting(ProjectConversion& result, const ConversionRequest& request)
        : result_(result),
          request_(request),
          text_(result.source.text),
          index_(result.open->index),
          structure_(result.open->structure) {}

    void run() {
        read();
        addGroups();
        if (!isComplete_) {
            refuse("It cannot be read to its end; mend it first.", faultPlace_);
        } else if (index_->kind() == FileKind::fcpxml) {
            convertFCPXML();
        } else if (index_->kind() == FileKind::xmeml) {
            convertXMEML();
        } else {
            refuse("It is neither FCPXML nor XMEML.");
        }
        placeRefusal();
        if (!structure_ || structure_->events() != nullptr) {
            result_.finish();
        }
    }

  private:
    void read() {
        const ElementIndex head = indexOfHead(text_);
        const auto version = fcpxml::Version::parse(
            request_.assumed ? string_view(*request_.assumed) : head.version());
        if (head.kind() == FileKind::fcpxml && version) {
            structure_.emplace(*version, text_, result_.report.findings);
            if (request_.usesThreads && text_.size() >= kLargeText) {
                structure_->readBeside();
            }
        }
        ElementIndexBuilder builder(text_);
        XMLFindings sink(text_, result_.report.findings);
        XMLReaderEvents* const judge = structure_ ? structure_->events() : nullptr;
        XMLEventTee both{&builder, judge};
        XMLReaderEvents* const events =
            judge != nullptr ? static_cast<XMLReaderEvents*>(&both) : &builder;
        const XMLReading reading = readXML(text_, XMLMode::tolerant, events, &sink);
        sink.addFault(reading);
        isComplete_ = !reading.fault;
        result_.open->isWellFormed = isComplete_ && !sink.hasMends();
        faultPlace_ = {reading.faultParts ? reading.faultParts->offset : 0, 0};
        index_.emplace(std::move(builder).finish());
        result_.kind = index_->kind();
        result_.report.kind = nameOf(index_->kind());
        result_.report.version = index_->version();
        if (structure_ && index_->kind() == FileKind::fcpxml) {
            result_.report.definition = "fcpxml " + version->text();
        }
    }

    void addGroups() {
        for (const RuleGroup group : kCheckedGroups) {
            const bool ran = group == RuleGroup::xml ||
                             (group == RuleGroup::structure && !result_.report.definition.empty());
            result_.report.groups.push_back({group, ran, ran ? "" : string(kNotAskedFor)});
        }
    }

    [[nodiscard]] string versionText() const {
        return request_.assumed.value_or(string(index_->version()));
    }

    // False, with the reason, where it is not known which version to read the file as.
    [[nodiscard]] bool isKnown(bool isVersion, string_view newest) {
        if (request_.assumed && !isVersion) {
            refuse(formatString("It is %@, which has no version %@.",
                                index_->kind() == FileKind::fcpxml ? "FCPXML" : "XMEML",
                                *request_.assumed));
        } else if (versionText().empty()) {
            refuse("It does not say which version it is in; --assume VERSION says so.",
                   index_->startTagOf(0));
        } else if (!isVersion) {
            refuse(formatString("It says that it is in version %@, and the newest one known is %@; "
                                "--assume VERSION reads it as another one.",
                                versionText(), newest),
                   index_->startTagOf(0));
        }
        return result_.refusal.empty();
    }

    void convertFCPXML() {
        const auto from = fcpxml::Version::parse(versionText());
        if (!isKnown(from.has_value(), fcpxml::Version(fcpxml::Version::kNewestMinor).text())) {
            return;
        }
        if (request_.to.empty()) {
            const auto lowest = fcpxml::lowestVersion(*index_, *from);
            return tellLowest(from->text(), lowest ? lowest->text() : "");
        }
        if (!isFCPXMLTarget(request_.to)) {
            result_.isOtherFormat = true;
            return refuse(
                formatString("It is FCPXML, which is not converted to XMEML %@.", request_.to));
        }
        fcpxml::Conversion conversion = fcpxml::convert(
            *index_, *from, fcpxml::Version::parse(request_.to).value(), result_.report.findings);
        if (!conversion.refusal.empty()) {
            return refuse(formatString("%@, and nothing is invented.", conversion.refusal),
                          conversion.refusedAt);
        }
        result_.edits = std::move(conversion.edits);
        tell(from->text(), conversion.losses);
    }

    void convertXMEML() {
        const auto from = xmeml::parseVersion(versionText());
        if (!isKnown(from.has_value(), std::to_string(xmeml::kNewestVersion))) {
            return;
        }
        const std::optional<xmeml::VersionElements> elements = xmeml::VersionElements::load();
        if (!elements) {
            return refuse("The catalogue of XMEML's versions is missing.");
        }
        if (request_.to.empty()) {
            return tellLowest(versionText(), elements->lowestVersion(*index_));
        }
        if (!isXMEMLTarget(request_.to)) {
            result_.isOtherFormat = true;
            return refuse(
                formatString("It is XMEML, which is not converted to FCPXML %@.", request_.to));
        }
        xmeml::Conversion conversion =
            xmeml::convert(*index_, request_.to, *elements, result_.report.findings);
        if (conversion.losses != 0 && !request_.strips) {
            result_.losses = conversion.losses;
            return refuse(
                formatString("%llu elements are newer than version %@; --strip leaves "
                             "them out.",
                             conversion.losses, request_.to));
        }
        result_.edits = std::move(conversion.edits);
        tell(versionText(), conversion.losses);
    }

    void tell(string from, std::uint64_t losses) {
        result_.losses = losses;
        result_.report.conversion = ConversionRecord{std::move(from), request_.to, "", {}};
    }

    void tellLowest(string from, string lowest) {
        result_.report.conversion = ConversionRecord{std::move(from), "", "", std::move(lowest)};
    }

    void refuse(string sentence, TextSpan where = {}) {
        result_.refusal = std::move(sentence);
        refusedAt_ = where;
    }

    void placeRefusal() {
        if (!result_.refusal.empty() && refusedAt_ != TextSpan()) {
            const Place place = PlaceFinder(*index_, result_.source.decoding).placeOf(refusedAt_);
            result_.line = place.line;
            result_.column = place.column;
        }
    }

    ProjectConversion& result_;
    const ConversionRequest& request_;
    string_view text_;
    std::optional<ElementIndex>& index_;
    std::optional<StructureCheck>& structure_;
    bool isComplete_ = false;
    TextSpan faultPlace_;
    TextSpan refusedAt_;
};

}  // namespace

bool isFCPXMLTarget(string_view version) {
    const auto parsed = fcpxml::Version::parse(version);
    return parsed && *parsed >= fcpxml::kOldestTarget;
}

bool isXMEMLTarget(string_view version) {
    return xmeml::parseVersion(version).has_value();
}

bool isProjectVersion(string_view version) {
    return fcpxml::Version::parse(version).has_value() || isXMEMLTarget(version);
}

ProjectConversion ProjectConversion::of(string bytes, const ConversionRequest& request) {
    ProjectConversion result = begin(std::move(bytes), request);
    result.finish();
    return result;
}

ProjectConversion ProjectConversion::begin(string bytes, const ConversionRequest& request) {
    ProjectConversion result;
    result.report.findings = Findings(request.mostOfARule);
    result.report.bytes = bytes.size();
    ErrorSlot error;
    std::optional<DecodedText> source = decodeXMLText(std::move(bytes), error);
    if (!source) {
        result.refusal = error->localizedDescription();
        result.line = error->line;
        result.column = error->column;
        return result;
    }
    result.source = std::move(*source);
    result.report.encoding = result.source.decoding.encoding;
    result.open = std::make_shared<Open>();
    Converting(result, request).run();
    return result;
}

void ProjectConversion::finish() {
    if (!open) {
        return;
    }
    if (!report.definition.empty()) {
        const bool isValid = open->structure->finish(report.findings);
        report.valid = isValid && open->isWellFormed;
    }
    nameStructureFindings(*open->index, report.findings);
    PlaceFinder(*open->index, source.decoding).place(report.findings);
    open.reset();
}

bool ProjectConversion::write(const Sink& sink) const {
    if (!sink(markOf(source.decoding))) {
        return false;
    }
    const string_view text = source.text;
    if (source.decoding.encoding != "UTF-8") {
        const auto encoded = encodeText(applyEdits(text, edits), source.decoding.encoding);
        return encoded && sink(*encoded);
    }
    constexpr std::size_t kPiece = 1U << 20U;
    string piece;
    std::size_t done = 0;
    const auto add = [&](string_view more) {
        piece += more;
        return piece.size() < kPiece || (sink(std::exchange(piece, "")));
    };
    for (const Edit& edit : edits) {
        if (!add(text.substr(done, edit.offset - done)) || !add(edit.text)) {
            return false;
        }
        done = edit.offset + edit.length;
    }
    return sink(piece) && sink(text.substr(done));
}

}  // namespace vornic
