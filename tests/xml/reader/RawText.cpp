#include "tests/xml/reader/RawText.h"

#include <algorithm>
#include <map>

namespace vornic::test {

namespace {

std::string utf8(unsigned long value) {
    const auto byte = [](unsigned long bits) { return static_cast<char>(bits); };
    if (value < 0x80) {
        return {byte(value)};
    }
    if (value < 0x800) {
        return {byte(0xC0 | value >> 6), byte(0x80 | (value & 0x3F))};
    }
    if (value < 0x10000) {
        return {byte(0xE0 | value >> 12), byte(0x80 | (value >> 6 & 0x3F)),
                byte(0x80 | (value & 0x3F))};
    }
    return {byte(0xF0 | value >> 18), byte(0x80 | (value >> 12 & 0x3F)),
            byte(0x80 | (value >> 6 & 0x3F)), byte(0x80 | (value & 0x3F))};
}

std::string replacementOf(const std::string& reference) {
    static const std::map<std::string, std::string> kNamed = {
        {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};
    if (reference[0] != '#') {
        return kNamed.at(reference);
    }
    return reference[1] == 'x' ? utf8(std::stoul(reference.substr(2), nullptr, 16))
                               : utf8(std::stoul(reference.substr(1)));
}

}  // namespace

std::string withoutReferences(const std::string& raw) {
    std::string result;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '&') {
            result += raw[at];
            continue;
        }
        const std::size_t end = raw.find(';', at);
        result += replacementOf(raw.substr(at + 1, end - at - 1));
        at = end;
    }
    return result;
}

std::string withLineFeeds(std::string_view raw) {
    std::string result;
    for (std::size_t at = 0; at < raw.size(); ++at) {
        if (raw[at] != '\r') {
            result += raw[at];
        } else if (at + 1 == raw.size() || raw[at + 1] != '\n') {
            result += '\n';
        }
    }
    return result;
}

std::string attributeValue(std::string_view raw) {
    std::string value = withLineFeeds(raw);
    std::replace_if(
        value.begin(), value.end(), [](char c) { return c == '\t' || c == '\n'; }, ' ');
    return withoutReferences(value);
}

}  // namespace vornic::test
