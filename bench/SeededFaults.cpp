#include "bench/SeededFaults.h"

#include <algorithm>
#include <vector>

namespace vornic::bench {

namespace {

// A change of both texts: bytes that are taken out and what comes in their place. What the perfect
// answer has there is the original, unless it is said.
struct Fault {
    std::size_t offset = 0;
    std::size_t length = 0;
    std::string text;
    std::optional<std::string> expected;
    // The tags of the original that are gone or moved, counted from the offset.
    std::vector<std::size_t> restored;
};

struct Tag {
    enum class Kind { start, empty, end };
    std::size_t offset = 0;
    std::size_t end = 0;
    std::string_view name;
    Kind kind = Kind::start;
    bool hasAttributes = false;
};

// The tags of a sound document.
std::vector<Tag> tagsOf(std::string_view text) {
    std::vector<Tag> tags;
    std::size_t at = 0;
    while ((at = text.find('<', at)) != std::string_view::npos) {
        const auto skipTo = [&](std::string_view end) { at = text.find(end, at) + end.size(); };
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            skipTo("-->");
        } else if (rest.starts_with("<![CDATA[")) {
            skipTo("]]>");
        } else if (rest.starts_with("<?")) {
            skipTo("?>");
        } else if (rest.starts_with("<!")) {
            skipTo(">");
        } else {
            Tag tag;
            tag.offset = at;
            const bool isEnd = text[at + 1] == '/';
            const std::size_t name = at + (isEnd ? 2 : 1);
            const std::size_t nameEnd = text.find_first_of(" \t\r\n/>", name);
            tag.name = text.substr(name, nameEnd - name);
            char quote = 0;
            std::size_t end = nameEnd;
            for (; quote != 0 || text[end] != '>'; ++end) {
                if (quote == 0 && (text[end] == '"' || text[end] == '\'')) {
                    quote = text[end];
                    tag.hasAttributes = true;
                } else if (text[end] == quote) {
                    quote = 0;
                }
            }
            tag.end = end + 1;
            tag.kind = isEnd                  ? Tag::Kind::end
                       : text[end - 1] == '/' ? Tag::Kind::empty
                                              : Tag::Kind::start;
            tags.push_back(tag);
            at = tag.end;
        }
    }
    return tags;
}

class FaultMaker {
  public:
    FaultMaker(std::string_view text, std::mt19937_64& random)
        : text_(text), random_(random), tags_(tagsOf(text)) {}

    std::optional<Fault> make(FaultKind kind) {
        switch (kind) {
            case FaultKind::endTagLost:
                return remove(anyTag(Tag::Kind::end));
            case FaultKind::startTagLost:
                return remove(anyStart(false));
            case FaultKind::startTagWithAttributesLost:
                return removeWithAttributes(anyStart(true));
            case FaultKind::tagsCrossed:
                return cross();
            case FaultKind::endTagMisspelt:
                return misspell(anyTag(Tag::Kind::end));
            case FaultKind::endTagTwice:
                return repeat(anyTag(Tag::Kind::end));
            case FaultKind::greaterThanLost:
                return loseGreaterThan();
            case FaultKind::attributeTwice:
                return repeatAttribute(true);
            case FaultKind::attributeTwiceWithOtherValue:
                return repeatAttribute(false);
            case FaultKind::strayEndTag:
                return append("</" + std::string(tags_[below(tags_.size())].name) + ">\n");
            case FaultKind::lineTwice:
                return repeatLine();
            case FaultKind::valueNotClosed:
                return loseQuote();
            case FaultKind::textAfterRoot: {
                std::optional<Fault> fault = append("Saved by hand\n");
                fault->expected = "<!-- Saved by hand -->\n";
                return fault;
            }
            default:
                return std::nullopt;
        }
    }

    std::size_t below(std::size_t limit) { return random_() % std::max<std::size_t>(limit, 1); }

    [[nodiscard]] std::size_t rootStartEnd() const { return tags_.front().end; }
    [[nodiscard]] std::size_t rootEnd() const { return tags_.back().end; }

  private:
    template <typename Condition>
    std::optional<Tag> any(Condition condition) {
        const auto count =
            static_cast<std::size_t>(std::count_if(tags_.begin(), tags_.end(), condition));
        if (count == 0) {
            return std::nullopt;
        }
        std::size_t number = below(count);
        for (const Tag& tag : tags_) {
            if (condition(tag) && number-- == 0) {
                return tag;
            }
        }
        return std::nullopt;
    }
    std::optional<Tag> anyTag(Tag::Kind kind) {
        return any([kind](const Tag& tag) { return tag.kind == kind; });
    }
    std::optional<Tag> anyStart(bool hasAttributes) {
        return any([hasAttributes](const Tag& tag) {
            return tag.kind == Tag::Kind::start && tag.hasAttributes == hasAttributes;
        });
    }

    std::optional<Fault> remove(const std::optional<Tag>& tag) {
        return tag ? std::optional<Fault>({tag->offset, tag->end - tag->offset, "", {}, {0}})
                   : std::nullopt;
    }

    std::optional<Fault> removeWithAttributes(const std::optional<Tag>& tag) {
        std::optional<Fault> fault = remove(tag);
        if (fault) {
            fault->expected = "<" + std::string(tag->name) + ">";
        }
        return fault;
    }

    std::optional<Fault> cross() {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i + 1 < tags_.size(); ++i) {
            const std::string_view between =
                text_.substr(tags_[i].end, tags_[i + 1].offset - tags_[i].end);
            if (tags_[i].kind == Tag::Kind::end && tags_[i + 1].kind == Tag::Kind::end &&
                tags_[i].name != tags_[i + 1].name &&
                between.find_first_not_of(" \t\r\n") == std::string_view::npos) {
                places.push_back(i);
            }
        }
        if (places.empty()) {
            return std::nullopt;
        }
        const Tag& first = tags_[places[below(places.size())]];
        const Tag& second = *(&first + 1);
        const std::string_view between = text_.substr(first.end, second.offset - first.end);
        return Fault{first.offset,
                     second.end - first.offset,
                     rawText(second) + std::string(between) + rawText(first),
                     {},
                     {0, second.offset - first.offset}};
    }

    std::optional<Fault> misspell(const std::optional<Tag>& tag) {
        if (!tag) {
            return std::nullopt;
        }
        std::string name(tag->name);
        const std::size_t at = below(name.size());
        switch (below(4)) {
            case 0:
                name.insert(at, 1, letter());
                break;
            case 1:
                if (name.size() > 2) {
                    name.erase(at, 1);
                    break;
                }
                [[fallthrough]];
            case 2:
                name[at] = letter();
                break;
            default:
                std::swap(name[at], name[at == 0 ? name.size() - 1 : at - 1]);
        }
        const bool isName = name != tag->name && name[0] >= 'A';
        return isName ? std::optional<Fault>({tag->offset + 2, tag->name.size(), name, {}, {}})
                      : std::nullopt;
    }

    std::optional<Fault> repeat(const std::optional<Tag>& tag) {
        return tag ? std::optional<Fault>({tag->end, 0, rawText(*tag), {}, {}}) : std::nullopt;
    }

    std::optional<Fault> loseGreaterThan() {
        const Tag& tag = tags_[below(tags_.size())];
        return Fault{tag.end - 1, 1, "", {}, {}};
    }

    std::optional<Fault> loseQuote() {
        const auto tag = any([](const Tag& it) { return it.hasAttributes; });
        if (!tag) {
            return std::nullopt;
        }
        const std::string raw = rawText(*tag);
        std::vector<std::size_t> quotes;
        for (std::size_t at = raw.find('"'); at != std::string::npos; at = raw.find('"', at + 1)) {
            at = raw.find('"', at + 1);
            if (at == std::string::npos) {
                break;
            }
            quotes.push_back(at);
        }
        if (quotes.empty()) {
            return std::nullopt;
        }
        return Fault{tag->offset + quotes[below(quotes.size())], 1, "", {}, {}};
    }

    std::optional<Fault> repeatAttribute(bool isSame) {
        const auto tag = any([](const Tag& it) { return it.hasAttributes; });
        if (!tag) {
            return std::nullopt;
        }
        const std::string raw = rawText(*tag);
        std::vector<std::pair<std::size_t, std::size_t>> attributes;
        std::size_t at = tag->name.size() + 1;
        while ((at = raw.find_first_not_of(" \t\r\n", at)) != std::string::npos && raw[at] != '>' &&
               raw[at] != '/' && raw[at] != '?') {
            const std::size_t quote = raw.find_first_of("\"'", at);
            const std::size_t end = raw.find(raw[quote], quote + 1) + 1;
            attributes.emplace_back(at, end);
            at = end;
        }
        const auto [from, end] = attributes[below(attributes.size())];
        const std::size_t behind = attributes[below(attributes.size())].second;
        std::string copy = raw.substr(from, end - from);
        if (!isSame) {
            const std::size_t quote = copy.find_first_of("\"'");
            copy = copy.substr(0, quote + 1) + "other value" + copy[quote];
        }
        // The first one stays the first.
        return Fault{tag->offset + std::max(behind, end), 0, " " + copy, {}, {}};
    }

    std::optional<Fault> append(std::string text) {
        const bool hasBreak = text_.ends_with('\n');
        return Fault{text_.size(), 0, (hasBreak ? "" : "\n") + std::move(text), {}, {}};
    }

    std::optional<Fault> repeatLine() {
        std::vector<std::pair<std::size_t, std::size_t>> lines;
        for (const Tag& tag : tags_) {
            std::size_t from = tag.offset;
            while (from > 0 && (text_[from - 1] == ' ' || text_[from - 1] == '\t')) {
                --from;
            }
            const bool isAlone = from > 0 && text_[from - 1] == '\n' && tag.end < text_.size() &&
                                 text_[tag.end] == '\n' && tag.kind != Tag::Kind::empty;
            if (isAlone) {
                lines.emplace_back(from, tag.end + 1);
            }
        }
        if (lines.empty()) {
            return std::nullopt;
        }
        const auto [from, end] = lines[below(lines.size())];
        return Fault{end, 0, std::string(text_.substr(from, end - from)), {}, {}};
    }

    [[nodiscard]] std::string rawText(const Tag& tag) const {
        return std::string(text_.substr(tag.offset, tag.end - tag.offset));
    }
    char letter() { return static_cast<char>('a' + below(26)); }

    std::string_view text_;
    std::mt19937_64& random_;
    std::vector<Tag> tags_;
};

FaultyText applied(std::string_view document, std::vector<Fault> faults) {
    std::stable_sort(faults.begin(), faults.end(), [](const Fault& left, const Fault& right) {
        return left.offset < right.offset;
    });
    FaultyText faulty;
    std::size_t at = 0;
    for (const Fault& fault : faults) {
        if (fault.offset < at) {
            continue;
        }
        const std::string_view kept = document.substr(at, fault.offset - at);
        faulty.text.append(kept).append(fault.text);
        const bool isInsertion = fault.length == 0;
        faulty.expected.append(kept);
        for (const std::size_t tag : fault.restored) {
            faulty.restored.push_back(faulty.expected.size() + tag);
        }
        if (fault.expected) {
            faulty.expected.append(*fault.expected);
        } else if (!isInsertion) {
            faulty.expected.append(document.substr(fault.offset, fault.length));
        }
        at = fault.offset + fault.length;
    }
    faulty.text.append(document.substr(at));
    faulty.expected.append(document.substr(at));
    return faulty;
}

}  // namespace

std::optional<FaultyText> seedFault(std::string_view document, FaultKind kind,
                                    std::mt19937_64& random) {
    FaultMaker maker(document, random);
    if (kind == FaultKind::cutOff) {
        const std::size_t from = maker.rootStartEnd();
        const std::size_t cut = from + maker.below(maker.rootEnd() - 1 - from);
        return FaultyText{std::string(document.substr(0, cut)), std::string(document), {}, cut};
    }
    if (kind == FaultKind::secondRoot) {
        return FaultyText{
            std::string(document) + "\n" + std::string(document), std::string(document), {}, 0};
    }
    std::vector<Fault> faults;
    if (kind == FaultKind::several) {
        const std::size_t count = 2 + maker.below(4);
        for (std::size_t i = 0; i < count; ++i) {
            if (auto fault = maker.make(static_cast<FaultKind>(maker.below(10)))) {
                faults.push_back(std::move(*fault));
            }
        }
    } else if (auto fault = maker.make(kind)) {
        faults.push_back(std::move(*fault));
    }
    if (faults.empty()) {
        return std::nullopt;
    }
    return applied(document, std::move(faults));
}

}  // namespace vornic::bench
