#include "job/ChangeHistory.h"

#include <algorithm>

namespace vornic {
namespace {

/// Whether the entry takes back the last of a list, which it then takes out.
template <typename List>
bool takesBackLast(const JournalEntry& entry, List& list) {
    if (list.empty() || list.back().entry.id != entry.undoes) {
        return false;
    }
    list.pop_back();
    return true;
}

}  // namespace

void ChangeHistory::add(const JournalEntry& entry) {
    if (entry.state != JournalEntry::State::done || !known_.insert(entry.id).second) {
        return;
    }
    FileHistory& history = files_[entry.file];
    const Numbered numbered{.number = ++count_, .entry = entry};
    if (entry.action != JournalEntry::Action::undo) {
        history.done.push_back(numbered);
        history.takenBack.clear();
    } else if (takesBackLast(entry, history.done)) {
        history.takenBack.push_back(numbered);
    } else if (takesBackLast(entry, history.takenBack)) {
        history.done.push_back(numbered);
    }
}

const ChangeHistory::Numbered* ChangeHistory::nextOf(const FileHistory& history) {
    if (!history.done.empty()) {
        return &history.done.back();
    }
    return history.takenBack.empty() ? nullptr : &history.takenBack.back();
}

std::optional<JournalEntry> ChangeHistory::next(const std::string& file) const {
    const auto found = files_.find(file);
    const Numbered* next = found == files_.end() ? nullptr : nextOf(found->second);
    return next == nullptr ? std::nullopt : std::optional(next->entry);
}

std::optional<JournalEntry> ChangeHistory::newest() const {
    const Numbered* newest = nullptr;
    for (const auto& [file, history] : files_) {
        if (!history.done.empty() &&
            (newest == nullptr || newest->number < history.done.back().number)) {
            newest = &history.done.back();
        }
    }
    return newest == nullptr ? std::nullopt : std::optional(newest->entry);
}

std::vector<JournalEntry> ChangeHistory::all() const {
    std::vector<const Numbered*> next;
    for (const auto& [file, history] : files_) {
        if (const Numbered* change = nextOf(history)) {
            next.push_back(change);
        }
    }
    std::sort(next.begin(), next.end(), [](const Numbered* one, const Numbered* other) {
        return one->number > other->number;
    });
    std::vector<JournalEntry> changes;
    changes.reserve(next.size());
    for (const Numbered* change : next) {
        changes.push_back(change->entry);
    }
    return changes;
}

}  // namespace vornic
