#include "formats/fcpxml/NameSet.h"

#include <functional>
#include <utility>

namespace vornic::fcpxml {

namespace {

constexpr std::size_t kSmallest = 64;

}  // namespace

std::uint32_t NameSet::hashOf(std::string_view name) {
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
    return hash == 0 ? 1 : hash;
}

bool NameSet::isAt(std::size_t place, std::string_view name, std::uint32_t hash) const {
    const Entry& entry = entries_[place];
    return entry.hash == hash &&
           std::string_view(characters_).substr(entry.offset, entry.length) == name;
}

// Where the name is, or the place that is free for it. There must be places.
std::size_t NameSet::placeOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t last = entries_.size() - 1;
    std::size_t place = hash & last;
    while (entries_[place].hash != 0 && !isAt(place, name, hash)) {
        place = (place + 1) & last;
    }
    return place;
}

bool NameSet::insert(std::string_view name) {
    if (size_ * 3 >= entries_.size() * 2) {
        grow();
    }
    const std::uint32_t hash = hashOf(name);
    Entry& entry = entries_[placeOf(name, hash)];
    if (entry.hash != 0) {
        return false;
    }
    entry = {characters_.size(), static_cast<std::uint32_t>(name.size()), hash};
    characters_ += name;
    ++size_;
    return true;
}

void NameSet::grow() {
    std::vector<Entry> old(entries_.empty() ? kSmallest : entries_.size() * 2);
    std::swap(old, entries_);
    const std::size_t last = entries_.size() - 1;
    for (const Entry& entry : old) {
        if (entry.hash == 0) {
            continue;
        }
        std::size_t place = entry.hash & last;
        while (entries_[place].hash != 0) {
            place = (place + 1) & last;
        }
        entries_[place] = entry;
    }
}

}  // namespace vornic::fcpxml
