#include "check/Check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "base/PathText.h"
#include "base/Text.h"
#include "check/Characters.h"
#include "check/DeclaredEncoding.h"
#include "check/EarlyEnd.h"
#include "check/RulesBeside.h"
#include "check/fcpxml/Rules.h"
#include "check/fcpxml/StructureFindings.h"
#include "check/xmeml/Check.h"
#include "check/xmeml/FindingsAfterEdits.h"
#include "formats/ElementIndexBuilder.h"
#include "formats/IndexUpdate.h"
#include "formats/PlaceFinder.h"
#include "formats/fcpxml/Timecodes.h"
#include "formats/xmeml/Timecodes.h"
#include "report/XMLFindings.h"
#include "report/XMLRuleOf.h"
#include "xml/reader/XMLEventTee.h"
#include "xml/text/FileOffsets.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

namespace {

using EditList = std::vector<Edit>;

constexpr std::string_view kNeitherKind = "the file is neither XMEML nor FCPXML";
constexpr std::string_view kNoRoot = "the file could not be read as far as its root element";

// Whether the XML declaration says that the document stands alone (XML 1.0, section 2.9).
bool saysStandalone(std::string_view text) {
    if (!text.starts_with("<?xml")) {
        return false;
    }
    const std::string_view declaration = text.substr(0, text.find("?>"));
    return declaration.find("standalone=\"yes\"") != std::string_view::npos ||
           declaration.find("standalone='yes'") != std::string_view::npos;
}

// Whether the document type declaration declares something of its own, which a comparison with the
// format's definition would have to take in.
bool hasInternalSubset(std::string_view text) {
    const std::size_t declaration = text.find("<!DOCTYPE");
    const std::size_t end = text.find_first_of("[>", declaration);
    return declaration != std::string_view::npos && end != std::string_view::npos &&
           text[end] == '[';
}

// Checks one text; the groups one after the other.
class Check {
  public:
    Check(std::string_view bytes, std::string_view text, const TextDecoding& decoding,
          const CheckOptions& options, Report& report)
        : bytes_(bytes), text_(text), decoding_(decoding), options_(options), report_(report) {}

    void find() {
        const ElementIndex head = indexOfHead(text_);
        lookForCharacters(head);
        makeValidator(head);
        readMarkup();
        applyRules();
    }

    /// The same for a text that the reader would tell nothing of.
    void find(FileCheck::Mended mended) {
        isComplete_ = true;
        if (mended.report) {
            hasOddCharacters_ = mended.hasOddCharacters;
            index_.emplace(std::move(mended.index));
            return takeKnown(std::move(*mended.report));
        }
        lookForCharacters(mended.index);
        index_.emplace(std::move(mended.index));
        addEncoding();
        describeMarkup();
        applyRules();
    }

    void place() {
        addTimecodes();
        PlaceFinder(*index_, decoding_).place(report_.findings);
    }

    /// The same, and looks at what the edits will change.
    void place(const EditList& edits) {
        const bool isXMEML = index_->kind() == FileKind::xmeml && !validator_;
        if (isXMEML && isComplete_ && areMended(edits)) {
            after_.emplace(report_.findings, *index_, edits);
        }
        place();
    }

    /// After that, what is known of the text that they make of this one.
    [[nodiscard]] std::optional<FileCheck::Mended> mendedBy(const EditList& edits,
                                                            std::string_view changed) {
        std::optional<ElementIndex> index =
            after_ ? indexAfterEdits(std::move(*index_), changed, edits) : std::nullopt;
        if (!index) {
            return std::nullopt;
        }
        FileCheck::Mended mended{std::move(*index), std::nullopt};
        if (std::optional<Findings> findings = std::move(*after_).in(mended.index)) {
            mended.report.emplace();
            mended.report->kind = report_.kind;
            mended.report->version = report_.version;
            mended.report->groups = report_.groups;
            mended.report->findings = std::move(*findings);
            mended.hasOddCharacters = hasOddCharacters_ || areOddAround(edits, changed);
        }
        return mended;
    }

  private:
    // What the rules of XMEML found, and what the others find now.
    void takeKnown(Report known) {
        report_.kind = std::move(known.kind);
        report_.version = std::move(known.version);
        report_.findings = std::move(known.findings);
        if (hasOddCharacters_) {
            judgeCharacters();
        }
        judgeMedia();
        report_.groups = std::move(known.groups);
        report_.findings.sort();
    }

    // Whether edits may have put an odd character into a text that had none: together with what
    // stands beside them.
    [[nodiscard]] static bool areOddAround(const EditList& edits, std::string_view changed) {
        std::size_t growth = 0;  // wraps around where the text got shorter
        return std::any_of(edits.begin(), edits.end(), [&](const Edit& edit) {
            const std::size_t start = edit.offset + growth;
            growth += edit.text.size() - edit.length;
            const std::size_t before = start == 0 ? 0 : start - 1;
            return hasOddCharacters(changed.substr(before, start - before + edit.text.size() + 1));
        });
    }

    void applyRules() {
        if (index_->kind() == FileKind::xmeml) {
            xmeml::check(*index_, isComplete_, options_, report_);
        } else {
            judgeFCPXML();
        }
        addExtension();
        addOtherRoot();
        judgeCharacters();
        judgeMedia();
        report_.findings.sort();
    }

    // Whether all that was told of the markup is mended by the edits.
    [[nodiscard]] bool areMended(const EditList& edits) const {
        if (isMended_ && !options_.ignored.empty()) {
            return false;
        }
        std::array<std::uint64_t, kRuleCount> mended{};
        for (const Finding& finding : report_.findings.kept()) {
            if (XMLFindings::tells(finding.rule) && finding.mend &&
                isAmong(finding.mend->edits, edits)) {
                ++mended[finding.rule.index];
            }
        }
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            const RuleId rule{static_cast<std::uint16_t>(index)};
            if (XMLFindings::tells(rule) && report_.findings.count(rule) != mended[index]) {
                return false;
            }
        }
        return true;
    }

    // @param list in the order of the text
    [[nodiscard]] static bool isAmong(const EditList& edits, const EditList& list) {
        return !edits.empty() && std::all_of(edits.begin(), edits.end(), [&list](const Edit& edit) {
            const auto made = std::lower_bound(
                list.begin(), list.end(), edit.offset,
                [](const Edit& it, std::size_t offset) { return it.offset < offset; });
            return made != list.end() && *made == edit;
        });
    }

    // Of the markup nothing but the place of the root has to be known.
    void lookForCharacters(const ElementIndex& head) {
        if (head.size() != 0 && options_.runsBeside(text_.size())) {
            root_ = head.spanOf(0).offset;
            characters_.emplace(true, report_.findings, [this](Findings& found) {
                isOddBeside_ = checkCharacters(text_, root_, found);
            });
        }
    }

    void judgeFCPXML() {
        judgeStructure();
        if (index_->kind() == FileKind::fcpxml) {
            return checkFCPXML(*index_, {isComplete_, !report_.definition.empty()}, options_,
                               report_);
        }
        for (const RuleGroup group :
             {RuleGroup::references, RuleGroup::timing, RuleGroup::values, RuleGroup::versions}) {
            skip(group, whyNotJudged());
        }
    }

    [[nodiscard]] std::string_view whyNotJudged() const {
        return index_->size() == 0 ? kNoRoot : kNeitherKind;
    }

    void addTimecodes() {
        if (index_->kind() == FileKind::fcpxml) {
            addTimecodes(fcpxml::Timecodes(*index_));
        } else if (index_->kind() == FileKind::xmeml) {
            addTimecodes(xmeml::Timecodes(*index_));
        }
    }

    template <typename Timecodes>
    void addTimecodes(Timecodes timecodes) {
        for (Finding& finding : report_.findings.kept()) {
            finding.where.timecode = timecodes.at(finding.where.offset);
        }
    }

    void makeValidator(const ElementIndex& index) {
        const auto version = fcpxml::Version::parse(index.version());
        if (index.kind() == FileKind::fcpxml && version) {
            version_ = *version;
            validator_.emplace(fcpxml::Definition::of(*version), saysStandalone(text_),
                               structureFindings(*version, text_, report_.findings));
        }
    }

    void readMarkup() {
        ElementIndexBuilder builder(text_);
        XMLFindings sink(text_, report_.findings);
        XMLEventTee both{&builder, validator_ ? &*validator_ : nullptr};
        XMLReaderEvents* const events =
            validator_ ? static_cast<XMLReaderEvents*>(&both) : &builder;
        const std::string_view whole = textBeforeTornTag(text_);
        const XMLReading reading = readXML(whole, XMLMode::tolerant, events, &sink,
                                           XMLKeeping::nothing, decoding_.forbidden);
        Finding* const fault = sink.addFault(reading);
        addEncoding();
        index_.emplace(std::move(builder).finish());
        if (fault != nullptr && fault->rule == "xml-unclosed-element"_rule) {
            nameOpenElements(*index_, whole.size() != text_.size(), *fault);
        }
        isComplete_ = !reading.fault;
        isMended_ = sink.hasMends();
        declaresEntities_ =
            reading.faultParts && reading.faultParts->code == XMLErrorCode::entityDeclaration;
        describeMarkup();
    }

    void describeMarkup() {
        report_.kind = nameOf(index_->kind());
        report_.version = index_->version();
        report_.groups.push_back({RuleGroup::xml, true, ""});
    }

    void judgeCharacters() {
        if (index_->kind() != FileKind::fcpxml && index_->kind() != FileKind::xmeml) {
            return skip(RuleGroup::characters, whyNotJudged());
        }
        const std::size_t root = index_->spanOf(0).offset;
        if (characters_ && root == root_) {
            characters_->addTo(report_.findings);
            hasOddCharacters_ = isOddBeside_;
        } else {
            hasOddCharacters_ = checkCharacters(text_, root, report_.findings);
        }
        report_.groups.push_back({RuleGroup::characters, true, ""});
    }

    void judgeMedia() {
        if (!options_.media) {
            return skip(RuleGroup::media, kNotAskedFor);
        }
        if (index_->kind() != FileKind::fcpxml && index_->kind() != FileKind::xmeml) {
            return skip(RuleGroup::media, kNeitherKind);
        }
        options_.media(*index_, isComplete_, report_.findings);
        report_.groups.push_back({RuleGroup::media, true, ""});
    }

    void judgeStructure() {
        if (index_->kind() != FileKind::fcpxml) {
            return skip(RuleGroup::structure, whyNotJudged());
        }
        if (!validator_ && fcpxml::Version::parse(index_->version())) {
            readOnceMore();
        }
        if (!validator_) {
            return skip(RuleGroup::structure, report_.version.empty()
                                                  ? "the file declares no version"
                                                  : "no definition of this version is known");
        }
        validator_->finish(options_.tellsConsequences);
        report_.groups.push_back({RuleGroup::structure, true, ""});
        report_.definition = "fcpxml " + version_.text();
        if (!declaresEntities_ && !hasInternalSubset(text_)) {
            report_.valid = validator_->isValid() && isComplete_ && !isMended_ && !isRefused_;
        }
    }

    // For a root element that stands so far down that its version was not known before.
    void readOnceMore() {
        makeValidator(*index_);
        UnheardXMLMends mends;
        static_cast<void>(readXML(text_, XMLMode::tolerant, &*validator_, &mends));
    }

    // Programs go by the ending; XMEML is known under many.
    void addExtension() {
        const FileKind kind = index_->kind();
        const std::string extension =
            lowercasedLetters(splitExtension(options_.fileName).extension);
        const bool saysFCPXML = extension == ".fcpxml";
        if (extension.empty() || (kind != FileKind::fcpxml && kind != FileKind::xmeml) ||
            saysFCPXML == (kind == FileKind::fcpxml)) {
            return;
        }
        const bool isFCPXML = kind == FileKind::fcpxml;
        report_.findings.add("values-extension"_rule, {},
                             {{"kind", isFCPXML ? "FCPXML" : "XMEML"},
                              {"extension", extension},
                              {"right", isFCPXML ? ".fcpxml" : ".xml"}});
    }

    // ASCII is UTF-8 as well.
    void addEncoding() {
        const EncodingClaim claim =
            checkDeclaredEncoding(bytes_, text_, decoding_, report_.findings);
        isRefused_ = claim == EncodingClaim::refused;
        const std::string& encoding = decoding_.encoding;
        if (encoding != "UTF-8" && encoding != "ASCII" && claim != EncodingClaim::misleading) {
            report_.findings.add("values-encoding"_rule, {}, {{"name", encoding}});
        }
    }

    // A root that differs from a project's in its letters or by a prefix was meant as one. Any
    // other may be a sound file of another kind.
    void addOtherRoot() {
        if (index_->size() == 0 || index_->kind() == FileKind::fcpxml ||
            index_->kind() == FileKind::xmeml) {
            return;
        }
        const std::string_view name = index_->nameOf(0);
        const std::string meant = lowercased(name.substr(name.rfind(':') + 1));
        const bool isMeant = meant == "fcpxml" || meant == "xmeml";
        report_.findings.add(
            "xml-other-root"_rule, isMeant ? Severity::error : Severity::warning,
            {index_->spanOf(0).offset + 1, name.size()},
            {{"name", excerpt(name)},
             {"right", isMeant ? "<" + meant + ">" : std::string("<fcpxml> or <xmeml>")}});
    }

    void skip(RuleGroup group, std::string_view why) {
        report_.groups.push_back({group, false, std::string(why)});
    }

    std::string_view bytes_;
    std::string_view text_;
    const TextDecoding& decoding_;
    const CheckOptions& options_;
    Report& report_;
    std::optional<ElementIndex> index_;
    std::optional<fcpxml::Validator> validator_;
    // Beside the reading of the markup, for a root element at this place.
    std::optional<RulesBeside> characters_;
    std::size_t root_ = 0;
    // What it finds out besides.
    bool isOddBeside_ = true;
    bool hasOddCharacters_ = true;
    std::optional<xmeml::FindingsAfterEdits> after_;
    fcpxml::Version version_;
    bool isComplete_ = false;
    bool isMended_ = false;
    bool declaresEntities_ = false;
    bool isRefused_ = false;
};

// A file whose bytes are no text has no places but the one that the decoder tells.
void addDecodingFault(const Error& error, const TextDecoding& how, Findings& findings) {
    const std::optional<RuleId> rule = xmlRuleOf(static_cast<XMLErrorCode>(error.code));
    if (!rule) {
        return;
    }
    if (Finding* const finding = findings.add(*rule, {}, {{"name", how.encoding}})) {
        finding->where.line = error.line;
        finding->where.column = error.column;
        finding->where.offset = how.faultOffset;
        finding->where.length = error.line == 0 ? 0 : 1;
    }
}

// A group of which every rule is left out was not asked for, whatever the others had to look at.
void markIgnoredGroups(const std::vector<RuleId>& ignored, Report& report) {
    std::array<bool, kRuleCount> isIgnored{};
    for (const RuleId rule : ignored) {
        isIgnored.at(rule.index) = true;
    }
    for (GroupRun& run : report.groups) {
        bool isAsked = false;
        for (std::size_t index = 0; index < kRuleCount; ++index) {
            isAsked = isAsked || (kRuleTable[index].group == run.group && !isIgnored[index]);
        }
        if (!isAsked) {
            run = {run.group, false, std::string(kNotAskedFor)};
        }
    }
}

void reportUndecodable(const Error& error, const TextDecoding& how, Report& report) {
    addDecodingFault(error, how, report.findings);
    report.groups.push_back({RuleGroup::xml, true, ""});
    for (const RuleGroup group : kCheckedGroups) {
        if (group != RuleGroup::xml) {
            report.groups.push_back({group, false, "the file could not be read as text"});
        }
    }
}

}  // namespace

struct FileCheck::State {
    State(std::string_view bytes, const CheckOptions& checkOptions) : options(checkOptions) {
        begin(bytes);
        ErrorSlot error;
        text = textWithin(bytes, how);
        if (!text) {
            decoded = decodeXMLText(std::string(bytes), how, error);
            text = decoded;
        }
        if (text) {
            report.encoding = how.encoding;
            check.emplace(bytes, *text, how, options, report).find();
        } else {
            reportUndecodable(*error, how, report);
        }
        markIgnoredGroups(options.ignored, report);
    }

    State(std::string_view bytes, const CheckOptions& checkOptions, Mended mended)
        : options(checkOptions), text(mended.index.text()) {
        begin(bytes);
        how.encoding = "UTF-8";
        how.markLength = bytes.size() - text->size();
        report.encoding = how.encoding;
        check.emplace(bytes, *text, how, options, report).find(std::move(mended));
        markIgnoredGroups(options.ignored, report);
    }

    void begin(std::string_view bytes) {
        report.bytes = bytes.size();
        report.findings = Findings(options.mostOfARule);
        for (const RuleId rule : options.ignored) {
            report.findings.ignore(rule);
        }
    }

    void place(const EditList& ofBytes) {
        if (!check) {
            return;
        }
        if (decoded || how.encoding != "UTF-8" ||
            (!ofBytes.empty() && ofBytes.front().offset < how.markLength)) {
            return check->place();
        }
        edits = ofBytes;
        for (Edit& edit : *edits) {
            edit.offset -= how.markLength;
        }
        check->place(*edits);
    }

    const CheckOptions options;
    // Of the text.
    std::optional<EditList> edits;
    Report report;
    TextDecoding how;
    // What is no UTF-8 is made a text of its own.
    std::optional<std::string> decoded;
    std::optional<std::string_view> text;
    std::optional<Check> check;
};

FileCheck::FileCheck(std::string_view bytes, const CheckOptions& options)
    : state_(std::make_unique<State>(bytes, options)) {}

FileCheck::FileCheck(std::string_view bytes, const CheckOptions& options, Mended mended)
    : state_(std::make_unique<State>(bytes, options, std::move(mended))) {}

FileCheck::~FileCheck() = default;
FileCheck::FileCheck(FileCheck&& other) noexcept = default;
FileCheck& FileCheck::operator=(FileCheck&& other) noexcept = default;

const Findings& FileCheck::findings() const {
    return state_->report.findings;
}

const std::string& FileCheck::encoding() const {
    return state_->report.encoding;
}

std::vector<Edit> FileCheck::toFileOffsets(std::vector<Edit> edits) const {
    if (state_->text) {
        FileOffsets offsets(*state_->text, state_->how);
        for (Edit& edit : edits) {
            const std::size_t end = offsets.of(edit.offset + edit.length);
            edit.offset = offsets.of(edit.offset);
            edit.length = end - edit.offset;
        }
    }
    return edits;
}

Report FileCheck::report() && {
    if (state_->check) {
        state_->check->place();
    }
    return std::move(state_->report);
}

void FileCheck::place(const std::vector<Edit>& edits) {
    state_->place(edits);
}

Report FileCheck::report(std::string_view changed, std::optional<Mended>& mended) && {
    mended.reset();
    if (state_->edits) {
        mended = state_->check->mendedBy(*state_->edits, changed.substr(state_->how.markLength));
    }
    return std::move(state_->report);
}

Report checkFile(std::string_view bytes, const CheckOptions& options) {
    return FileCheck(bytes, options).report();
}

}  // namespace vornic
