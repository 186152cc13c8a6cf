#include "job/batch/BatchList.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>

#include "base/PathText.h"
#include "formats/fcpxml/Bundle.h"

namespace vornic {

namespace {

bool isLink(const std::string& path) {
    const ErrnoOr<std::string> target = platform::resolveFinalLink(path);
    return target && *target != path;
}

void setPath(BatchRow& row, const std::string& path) {
    const std::string seen = fcpxml::bundleAround(path);
    row.path = path;
    row.name = lastComponent(seen);
    row.folder = parentFolder(seen);
    row.kind = fileKindOfPath(path);
}

}  // namespace

BatchList::Identity BatchList::identityAt(const std::string& path) {
    const ErrnoOr<std::string> target = platform::resolveFinalLink(path);
    const auto identity = target ? platform::fileIdentity(*target) : std::nullopt;
    return identity ? Identity(identity->device, identity->inode) : Identity();
}

std::size_t BatchList::add(const std::string& path, const Identity& identity) {
    if (const auto known = byPath_.find(path); known != byPath_.end()) {
        return known->second;
    }
    const auto same = byIdentity_.find(identity);
    const bool isKnown = identity != Identity() && same != byIdentity_.end();
    const std::size_t row = isKnown ? same->second : rows_.size();
    byPath_.emplace(path, row);
    try {
        if (isKnown) {
            addName(rows_[row], path);
        } else {
            addRow(path, identity);
        }
    } catch (const std::bad_alloc&) {
        byPath_.erase(path);
        throw;
    }
    return row;
}

void BatchList::addRow(const std::string& path, const Identity& identity) {
    Listed listed{BatchRow{}, identity};
    setPath(listed.row, path);
    rows_.push_back(std::move(listed));
    try {
        if (identity != Identity()) {
            byIdentity_.emplace(identity, rows_.size() - 1);
        }
    } catch (const std::bad_alloc&) {
        rows_.pop_back();
        throw;
    }
}

// An action on a link would replace the link and leave the file as it is.
void BatchList::addName(Listed& listed, const std::string& path) {
    BatchRow row = listed.row;
    if (row.state == BatchState::idle && isLink(row.path) && !isLink(path)) {
        row.otherPaths.push_back(row.path);
        setPath(row, path);
    } else {
        row.otherPaths.push_back(path);
    }
    listed.row = std::move(row);
}

BatchList::Look BatchList::look(const std::string& path,
                                const std::vector<std::string>& otherPaths) {
    Look look{identityAt(path), {}};
    std::copy_if(otherPaths.begin(), otherPaths.end(), std::back_inserter(look.gone),
                 [&](const std::string& other) { return identityAt(other) != look.identity; });
    return look;
}

void BatchList::take(std::size_t row, const Look& look) {
    Listed& listed = rows_[row];
    if (look.identity == listed.identity) {
        return;
    }
    if (const auto old = byIdentity_.find(listed.identity);
        old != byIdentity_.end() && old->second == row) {
        byIdentity_.erase(old);
    }
    listed.identity = look.identity;
    if (look.identity != Identity()) {
        byIdentity_.emplace(look.identity, row);
    }
    for (const std::string& path : look.gone) {
        byPath_.erase(path);
        std::erase(listed.row.otherPaths, path);
    }
}

void BatchList::clear() {
    rows_.clear();
    byPath_.clear();
    byIdentity_.clear();
}

}  // namespace vornic
