#include "report/JSONReportWriter.h"

#include <utility>

#include "report/RuleTable.h"

namespace vornic {

namespace {

void writeGroups(JSONText& json, const Report& report) {
    json.key("groups").beginArray();
    for (const GroupRun& run : report.groups) {
        json.beginObject().member("id", nameOf(run.group));
        json.member("ran", run.ran).member("why", run.why).endObject();
    }
    json.endArray();
}

void writeCounts(JSONText& json, const Findings& findings) {
    json.key("counts").beginObject();
    for (const Severity severity : {Severity::error, Severity::warning, Severity::info}) {
        json.member(nameOf(severity), findings.count(severity));
    }
    json.endObject();
    // Rules of which nothing was found are left out.
    json.key("rules").beginObject();
    for (std::size_t index = 0; index < kRuleCount; ++index) {
        const RuleId rule{static_cast<std::uint16_t>(index)};
        if (const std::uint64_t count = findings.count(rule); count != 0) {
            json.member(ruleOf(rule).id, count);
        }
    }
    json.endObject();
}

}  // namespace

JSONReportWriter::JSONReportWriter(ReportSink sink, std::string_view tool, std::string_view version,
                                   Severity least)
    : sink_(std::move(sink)), least_(least) {
    json_.beginObject().member("report", 1U).key("tool").beginObject();
    json_.member("name", tool).member("version", version).endObject().key("files").beginArray();
}

void JSONReportWriter::file(const Report& report) {
    head(report);
    json_.key("findings").beginArray();
    for (const Finding& finding : report.findings.kept()) {
        if (finding.severity >= least_) {
            this->finding(finding);
            pass();
        }
    }
    json_.endArray();
    if (report.copies) {
        json_.key("copies").beginArray();
        for (const std::string& path : *report.copies) {
            json_.value(path);
        }
        json_.endArray();
    }
    if (report.mends) {
        json_.key("mends").beginArray();
        for (const MendRecord& record : *report.mends) {
            this->record(record);
            pass();
        }
        json_.endArray();
    }
    if (report.media) {
        json_.key("media").beginArray();
        for (const MediaRecord& record : *report.media) {
            this->medium(record);
            pass();
        }
        json_.endArray();
    }
    if (report.conversion) {
        conversion(*report.conversion);
    }
    json_.endObject();
    pass();
}

void JSONReportWriter::end() {
    json_.endArray().endObject();
    sink_(json_.take() + "\n");
}

void JSONReportWriter::head(const Report& report) {
    json_.newLine().beginObject().member("path", report.path).member("kind", report.kind);
    json_.member("version", report.version).member("encoding", report.encoding);
    json_.member("bytes", report.bytes);
    json_.key("definition").beginObject().member("name", report.definition).key("valid");
    if (report.valid) {
        json_.value(*report.valid);
    } else {
        json_.null();
    }
    json_.endObject();
    writeGroups(json_, report);
    writeCounts(json_, report.findings);
}

void JSONReportWriter::finding(const Finding& finding) {
    const Rule& rule = ruleOf(finding.rule);
    const Place& where = finding.where;
    json_.newLine().beginObject().member("rule", rule.id);
    json_.member("severity", nameOf(finding.severity));
    json_.member("line", where.line).member("column", where.column);
    json_.member("offset", where.offset);
    json_.member("length", where.length);
    json_.member("path", where.path).member("name", where.name);
    json_.member("timecode", where.timecode).member("message", finding.message());
    json_.member("help", rule.remedy);
    if (finding.mend) {
        mend(*finding.mend);
    }
    if (finding.inCopy) {
        json_.key("copy").beginObject().member("index", finding.copyIndex);
        json_.member("line", finding.inCopy->line);
        json_.member("column", finding.inCopy->column);
        json_.member("offset", finding.inCopy->offset).endObject();
    }
    if (!finding.lost.empty()) {
        json_.member("lost", finding.lost);
    }
    json_.endObject();
}

void JSONReportWriter::record(const MendRecord& record) {
    const Finding& finding = record.finding;
    json_.newLine().beginObject().member("rule", ruleOf(finding.rule).id);
    json_.member("line", finding.where.line).member("column", finding.where.column);
    json_.member("offset", finding.where.offset).member("length", finding.where.length);
    json_.member("path", finding.where.path).member("message", finding.message());
    json_.member("description", finding.mend ? finding.mend->description : std::string());
    json_.member("made", record.isMade).member("why", record.why).endObject();
}

void JSONReportWriter::medium(const MediaRecord& record) {
    json_.newLine().beginObject().member("path", record.path).member("url", record.url);
    json_.member("form", record.form).member("name", record.name).member("kind", record.kind);
    json_.member("line", record.where.line).member("column", record.where.column);
    json_.member("offset", record.where.offset).member("length", record.where.length);
    json_.member("element", record.where.path).member("places", record.places);
    json_.key("clips").beginArray();
    for (const MediaRecord::Clip& clip : record.clips) {
        json_.beginObject().member("name", clip.name).member("count", clip.count).endObject();
    }
    json_.endArray().member("uses", record.uses).member("browserClips", record.browserClips);
    json_.member("usedStart", record.usedStart.exact).member("usedEnd", record.usedEnd.exact);
    json_.member("start", record.start.exact).member("duration", record.duration.exact);
    json_.member("rate", record.rate);
    count("videoTracks", record.videoTracks);
    count("audioTracks", record.audioTracks);
    json_.member("state", nameOf(record.state)).member("found", record.found);
    json_.member("newPath", record.newPath).member("newURL", record.newURL);
    json_.member("why", record.why).key("candidates").beginArray();
    for (const std::string& candidate : record.candidates) {
        json_.value(candidate);
    }
    json_.endArray().member("droppedBookmarks", record.droppedBookmarks).endObject();
}

void JSONReportWriter::count(std::string_view name, std::optional<std::uint64_t> number) {
    json_.key(name);
    if (number) {
        json_.value(*number);
    } else {
        json_.null();
    }
}

void JSONReportWriter::conversion(const ConversionRecord& conversion) {
    json_.key("conversion").beginObject().member("from", conversion.from);
    json_.member("to", conversion.to).member("result", conversion.result);
    if (conversion.lowest) {
        json_.member("lowest", *conversion.lowest);
    }
    json_.endObject();
}

void JSONReportWriter::mend(const Mend& mend) {
    json_.key("mend").beginObject().member("confidence", nameOf(mend.confidence));
    json_.member("description", mend.description).key("edits").beginArray();
    for (const Edit& edit : mend.edits) {
        json_.beginObject().member("offset", edit.offset);
        json_.member("length", edit.length).member("text", edit.text).endObject();
    }
    json_.endArray().endObject();
}

}  // namespace vornic
