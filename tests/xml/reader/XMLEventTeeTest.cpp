#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xml/reader/XMLEventTee.h"

namespace vornic::test {

namespace {

class Recorder : public XMLReaderEvents {
  public:
    void startElement(std::string_view name) override { add("start " + std::string(name)); }
    void attribute(std::string_view name, std::string_view rawValue) override {
        add("attribute " + std::string(name) + "=" + std::string(rawValue) + " " +
            std::to_string(valuePlace().offset));
    }
    void finishStartTag() override { add("finish"); }
    void endElement(std::string_view name, bool selfClosed) override {
        add((selfClosed ? "closed " : "end ") + std::string(name));
    }
    void text(std::string_view rawText) override { add("text " + std::string(rawText)); }
    void cdata(std::string_view content) override { add("cdata " + std::string(content)); }
    void comment(std::string_view content) override { add("comment " + std::string(content)); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add("instruction " + std::string(target) + " " + std::string(data));
    }
    void documentType(std::string_view name, std::string_view) override {
        add("type " + std::string(name));
    }
    std::vector<std::string> lines;

  private:
    void add(const std::string& line) {
        lines.push_back(line + " at " + std::to_string(place().offset) + "+" +
                        std::to_string(place().length));
    }
};

}  // namespace

TEST(XMLEventTee, passesEveryEventToAllReceivers) {
    const std::string text = "<!DOCTYPE a><a b='c'>d<![CDATA[e]]><!--f--><?g h?><i/></a>";
    Recorder alone;
    (void)readXML(text, XMLMode::strict, &alone);
    Recorder first;
    Recorder second;
    XMLEventTee tee({&first, nullptr, &second});
    (void)readXML(text, XMLMode::strict, &tee);
    EXPECT_EQ(alone.lines.size(), 11U);
    EXPECT_EQ(first.lines, alone.lines);
    EXPECT_EQ(second.lines, alone.lines);
}

}  // namespace vornic::test
