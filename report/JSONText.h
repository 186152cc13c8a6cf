#ifndef VORNIC_REPORT_JSON_TEXT_H
#define VORNIC_REPORT_JSON_TEXT_H

#include <concepts>
#include <string>
#include <string_view>

namespace vornic {

/// JSON (RFC 8259) in the order in which it is written: a text that grows, with no tree in memory.
/// Commas and colons come by themselves; what is begun has to be ended. One thread.
///
///     JSONText json;
///     json.beginObject().member("line", 3U).key("edits").beginArray().endArray().endObject();
class JSONText {
  public:
    JSONText& beginObject() { return begin('{'); }
    JSONText& endObject() { return end('}'); }
    JSONText& beginArray() { return begin('['); }
    JSONText& endArray() { return end(']'); }
    /// The name of the member whose value comes next; fixed text that needs no escape.
    JSONText& key(std::string_view name);

    /// UTF-8; invalid bytes become U+FFFD. Escapes what JSON asks for and nothing else.
    JSONText& value(std::string_view text);
    JSONText& value(const char* text) { return value(std::string_view(text)); }
    JSONText& value(bool truth) { return bare(truth ? "true" : "false"); }
    JSONText& value(std::unsigned_integral auto number) { return bare(std::to_string(number)); }
    JSONText& null() { return bare("null"); }

    template <typename Value>
    JSONText& member(std::string_view name, const Value& content) {
        return key(name).value(content);
    }

    /// A line break in front of the next value or member.
    JSONText& newLine();

    /// What was written since the last call.
    [[nodiscard]] std::string take();

  private:
    JSONText& begin(char bracket);
    JSONText& end(char bracket);
    JSONText& bare(std::string_view token);
    void part();

    std::string text_;
    bool needsComma_ = false;
};

}  // namespace vornic

#endif
