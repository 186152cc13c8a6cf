// Changes projects as projects: elements come, go, move and change their names, attributes and
// values, so that what comes out mostly is still XML, of names that one of the two formats has.
// Linked into the targets that read projects; libFuzzer finds it by its name.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "formats/fcpxml/Catalogue.h"
#include "formats/xmeml/Name.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace vornic::fuzz {

namespace {

constexpr std::array<std::string_view, 32> kValues = {"",
                                                      "0",
                                                      "1",
                                                      "-1",
                                                      "25",
                                                      "30000",
                                                      "0s",
                                                      "1s",
                                                      "-1s",
                                                      "2s",
                                                      "10s",
                                                      "1/0s",
                                                      "0/1",
                                                      "1001/30000s",
                                                      "100/2500s",
                                                      "3600s",
                                                      "r1",
                                                      "r2",
                                                      "A1",
                                                      "TRUE",
                                                      "FALSE",
                                                      "1.6",
                                                      "1.10",
                                                      "file:///a%20b.mov",
                                                      "file:///Volumes/A/b.mov",
                                                      "99999999999999999999",
                                                      "9223372036854775807/2s",
                                                      "DF",
                                                      "2026-11-22 10:00:00 CET",
                                                      "2026-11-22 10:00:00 +0100",
                                                      "00:00:00;02",
                                                      "&amp;"};

struct Part {
    std::size_t offset = 0;
    std::size_t length = 0;
    [[nodiscard]] std::size_t end() const { return offset + length; }
};

class ProjectMutator {
  public:
    ProjectMutator(std::string text, unsigned seed) : text_(std::move(text)), random_(seed) {}

    std::string mutate() {
        findTags();
        constexpr std::size_t kWays = 10;
        switch (below(tags_.empty() ? 1 : kWays)) {
            case 0:
                insertElement();
                break;
            case 1:
                removeElement();
                break;
            case 2:
                copyElement();
                break;
            case 3:
                moveElement();
                break;
            case 4:
                renameElement();
                break;
            case 5:
                addAttribute();
                break;
            case 6:
                removeAttribute();
                break;
            case 7:
                changeValue();
                break;
            case 8:
                changeText();
                break;
            default:
                removeTag();
                break;
        }
        return std::move(text_);
    }

  private:
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

    void findTags() {
        for (std::size_t at = text_.find('<'); at != std::string::npos; at = text_.find('<', at)) {
            const std::size_t end = text_.find('>', at);
            if (end == std::string::npos) {
                return;
            }
            if (at + 1 < end && text_[at + 1] != '!' && text_[at + 1] != '?') {
                tags_.push_back({at, end + 1 - at});
            }
            at = end + 1;
        }
    }

    [[nodiscard]] Part anyTag() { return tags_.empty() ? Part() : tags_[below(tags_.size())]; }
    [[nodiscard]] bool isEnd(Part tag) const { return text_[tag.offset + 1] == '/'; }
    [[nodiscard]] bool isEmpty(Part tag) const { return text_[tag.end() - 2] == '/'; }

    // The whole element of a start tag, by counting the tags behind it.
    [[nodiscard]] std::optional<Part> elementOf(std::size_t tag) const {
        int depth = 0;
        for (std::size_t at = tag; at < tags_.size(); ++at) {
            if (isEnd(tags_[at])) {
                --depth;
            } else if (!isEmpty(tags_[at])) {
                ++depth;
            }
            if (depth <= 0) {
                return Part{tags_[tag].offset, tags_[at].end() - tags_[tag].offset};
            }
        }
        return std::nullopt;
    }
    [[nodiscard]] std::optional<Part> anyElement() {
        constexpr int kTries = 8;
        for (int attempt = 0; attempt < kTries && !tags_.empty(); ++attempt) {
            const std::size_t tag = below(tags_.size());
            if (!isEnd(tags_[tag])) {
                return elementOf(tag);
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] Part nameOf(Part tag) const {
        const std::size_t start = tag.offset + (isEnd(tag) ? 2 : 1);
        const std::size_t end = text_.find_first_of(" \t\r\n/>", start);
        return {start, std::min(end, tag.end()) - start};
    }

    [[nodiscard]] bool isFCPXML() const { return text_.find("fcpxml") != std::string::npos; }
    std::string anyName() {
        // Now and then one of the other format.
        constexpr std::size_t kSeldom = 16;
        if (isFCPXML() != (below(kSeldom) == 0)) {
            const fcpxml::Catalogue& catalogue = fcpxml::Catalogue::shared();
            return std::string(
                catalogue.element(static_cast<fcpxml::ElementId>(below(catalogue.size()))).name);
        }
        return std::string(xmeml::kNames[below(xmeml::kNameCount)]);
    }
    std::string anyAttributeOf(std::string_view element) {
        const fcpxml::Catalogue& catalogue = fcpxml::Catalogue::shared();
        const fcpxml::ElementId id = catalogue.idOf(element);
        if (id == fcpxml::kNoElement || catalogue.element(id).attributes.empty()) {
            return below(2) == 0 ? "id" : "version";
        }
        const auto& attributes = catalogue.element(id).attributes;
        return std::string(attributes[below(attributes.size())].name);
    }
    std::string anyValue() {
        const std::vector<Part> values = valuesIn({0, text_.size()});
        if (!values.empty() && below(2) == 0) {
            const Part value = values[below(values.size())];
            return text_.substr(value.offset, value.length);
        }
        return std::string(kValues[below(kValues.size())]);
    }

    [[nodiscard]] std::vector<Part> valuesIn(Part part) const {
        std::vector<Part> values;
        for (std::size_t at = text_.find("=\"", part.offset);
             at != std::string::npos && at < part.end(); at = text_.find("=\"", at)) {
            const std::size_t end = text_.find('"', at + 2);
            if (end == std::string::npos || end > part.end()) {
                break;
            }
            values.push_back({at + 2, end - at - 2});
            at = end + 1;
        }
        return values;
    }

    void insertElement() {
        const std::string name = anyName();
        const std::string attribute = anyAttributeOf(name) + "=\"" + anyValue() + "\"";
        const std::string element = below(2) == 0
                                        ? "<" + name + " " + attribute + "/>"
                                        : "<" + name + ">" + anyValue() + "</" + name + ">";
        text_.insert(tags_.empty() ? text_.size() : anyTag().offset, element);
    }
    void removeElement() {
        if (const std::optional<Part> element = anyElement()) {
            text_.erase(element->offset, element->length);
        }
    }
    void copyElement() {
        if (const std::optional<Part> element = anyElement()) {
            text_.insert(anyTag().offset, text_.substr(element->offset, element->length));
        }
    }
    void moveElement() {
        const std::optional<Part> element = anyElement();
        const std::size_t target = anyTag().offset;
        if (!element || (target > element->offset && target < element->end())) {
            return;
        }
        const std::string moved = text_.substr(element->offset, element->length);
        text_.erase(element->offset, element->length);
        text_.insert(target > element->offset ? target - element->length : target, moved);
    }
    void renameElement() {
        const std::optional<Part> element = anyElement();
        if (!element) {
            return;
        }
        const Part start = nameOf({element->offset, element->length});
        const std::string old = text_.substr(start.offset, start.length);
        const std::string name = anyName();
        const std::size_t end = text_.rfind("</", element->end() - 1);
        if (end != std::string::npos && end > start.offset &&
            text_.compare(end + 2, old.size(), old) == 0) {
            text_.replace(end + 2, old.size(), name);
        }
        text_.replace(start.offset, start.length, name);
    }
    void addAttribute() {
        const Part tag = anyTag();
        if (!isEnd(tag)) {
            const Part name = nameOf(tag);
            const std::string element = text_.substr(name.offset, name.length);
            text_.insert(name.end(), " " + anyAttributeOf(element) + "=\"" + anyValue() + "\"");
        }
    }
    void removeAttribute() {
        const std::vector<Part> values = valuesIn(anyTag());
        if (values.empty()) {
            return;
        }
        const Part value = values[below(values.size())];
        const std::size_t start = text_.find_last_of(" \t\r\n", value.offset);
        if (start != std::string::npos) {
            text_.erase(start, value.end() + 1 - start);
        }
    }
    void changeValue() {
        const std::vector<Part> values = valuesIn({0, text_.size()});
        if (!values.empty()) {
            const Part value = values[below(values.size())];
            text_.replace(value.offset, value.length, anyValue());
        }
    }
    void changeText() {
        const Part tag = anyTag();
        const std::size_t end = text_.find('<', tag.end());
        if (!isEnd(tag) && end != std::string::npos) {
            text_.replace(tag.end(), end - tag.end(), anyValue());
        }
    }
    void removeTag() {
        const Part tag = anyTag();
        text_.erase(tag.offset, tag.length);
    }

    std::string text_;
    std::minstd_rand random_;
    std::vector<Part> tags_;
};

}  // namespace

}  // namespace vornic::fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
    // Bytes are changed, too: one time in four.
    constexpr unsigned kOneIn = 4;
    if (seed % kOneIn == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    vornic::fuzz::ProjectMutator mutator(std::string(reinterpret_cast<const char*>(data), size),
                                         seed / kOneIn);
    const std::string text = mutator.mutate();
    if (text.empty() || text.size() > maxSize) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    std::memcpy(data, text.data(), text.size());
    return text.size();
}
