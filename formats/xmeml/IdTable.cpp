#include "formats/xmeml/IdTable.h"

#include <algorithm>
#include <string>
#include <utility>

namespace vornic::xmeml {

void IdTable::sort() {
    std::sort(entries_.begin(), entries_.end(), [](const Entry& left, const Entry& right) {
        return left.hash != right.hash ? left.hash < right.hash : left.element < right.element;
    });
}

ElementNumber IdTable::find(std::string_view text, const Reader& read) const {
    const std::uint64_t hash = hashOf(text);
    auto entry = std::lower_bound(
        entries_.begin(), entries_.end(), hash,
        [](const Entry& candidate, std::uint64_t wanted) { return candidate.hash < wanted; });
    std::string storage;
    for (; entry != entries_.end() && entry->hash == hash; ++entry) {
        if (read(entry->element, storage) == text) {
            return entry->element;
        }
    }
    return kNoElement;
}

void IdTable::forEach(const Reader& read,
                      const std::function<void(ElementNumber, ElementNumber)>& tell) const {
    std::string firstStorage;
    std::string storage;
    for (auto first = entries_.begin(); first != entries_.end();) {
        const auto end = std::find_if(first, entries_.end(), [first](const Entry& entry) {
            return entry.hash != first->hash;
        });
        // Texts that differ and have one hash are as good as never met; those behind the first one
        // are compared with it alone, and so at worst not told.
        tell(first->element, first->element);
        // Most are alone, and reading them would go all over the file.
        const std::string_view text =
            end - first == 1 ? std::string_view() : read(first->element, firstStorage);
        for (auto entry = first + 1; entry != end; ++entry) {
            if (read(entry->element, storage) == text) {
                tell(first->element, entry->element);
            }
        }
        first = end;
    }
}

void IdTable::forEachRepeated(const Reader& read,
                              const std::function<void(ElementNumber, ElementNumber)>& tell) const {
    std::vector<std::pair<ElementNumber, ElementNumber>> repeated;
    forEach(read, [&repeated](ElementNumber first, ElementNumber element) {
        if (element != first) {
            repeated.emplace_back(element, first);
        }
    });
    std::sort(repeated.begin(), repeated.end());
    for (const auto& [element, first] : repeated) {
        tell(first, element);
    }
}

std::vector<ElementNumber> IdTable::firstOfEach(const Reader& read) const {
    std::vector<ElementNumber> elements;
    forEach(read, [&elements](ElementNumber first, ElementNumber element) {
        if (first == element) {
            elements.push_back(element);
        }
    });
    std::sort(elements.begin(), elements.end());
    return elements;
}

}  // namespace vornic::xmeml
