#include <algorithm>
#include <map>
#include <utility>

#include "app/window/FindingsTable.h"
#include "report/RuleTable.h"

// Chooses, sorts and groups what a table of findings shows.

namespace vornic {

namespace {

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool contains(std::string_view text, std::string_view wanted) {
    return std::search(text.begin(), text.end(), wanted.begin(), wanted.end(),
                       [](char left, char right) { return lowered(left) == lowered(right); }) !=
           text.end();
}

bool isWanted(const Finding& finding, const FindingsChoice& choice) {
    if (!choice.severities.at(static_cast<std::size_t>(finding.severity))) {
        return false;
    }
    return choice.text.empty() || contains(finding.message(), choice.text) ||
           contains(ruleOf(finding.rule).id, choice.text) ||
           contains(finding.where.name, choice.text) || contains(finding.where.path, choice.text) ||
           contains(finding.where.timecode, choice.text);
}

template <typename Value>
int compared(const Value& left, const Value& right) {
    return left < right ? -1 : right < left ? 1 : 0;
}

class Arranging {
  public:
    Arranging(const FindingsTable& table, const FindingsChoice& choice)
        : table_(table), findings_(table.findings()), choice_(choice) {}

    FindingsRows run() && {
        choose();
        sort();
        countGroups();
        rowOf_.assign(findings_.size(), FindingsRow::kNoParent);
        // Causes before what comes of them, which stands below them whatever its rule.
        for (const std::size_t index : wanted_) {
            if (!isConsequence(index)) {
                add(index, parentFor(index));
            }
        }
        for (const std::size_t index : wanted_) {
            if (isConsequence(index)) {
                add(index, rowOf_[table_.causeOf(index)]);
            }
        }
        return std::move(result_);
    }

  private:
    using GroupKey = std::pair<std::uint16_t, FindingState>;

    void choose() {
        isShown_.assign(findings_.size(), false);
        for (std::size_t index = 0; index < findings_.size(); ++index) {
            if (isWanted(*findings_[index].finding, choice_)) {
                wanted_.push_back(index);
                isShown_[index] = true;
            }
        }
    }

    void sort() {
        if (choice_.order == FindingsOrder::message) {
            messages_.resize(findings_.size());
            for (const std::size_t index : wanted_) {
                messages_[index] = findings_[index].finding->message();
            }
        }
        std::stable_sort(wanted_.begin(), wanted_.end(),
                         [this](std::size_t left, std::size_t right) {
                             const int order = compare(left, right);
                             return choice_.isDescending ? order > 0 : order < 0;
                         });
    }

    [[nodiscard]] int compare(std::size_t left, std::size_t right) const {
        const ListedFinding& one = findings_[left];
        const ListedFinding& other = findings_[right];
        switch (choice_.order) {
            case FindingsOrder::severity:
                return compared(one.finding->severity, other.finding->severity);
            case FindingsOrder::state:
                return compared(one.state, other.state);
            case FindingsOrder::message:
                return messages_[left].compare(messages_[right]);
            case FindingsOrder::place:
                break;
        }
        return compared(one.finding->where.offset, other.finding->where.offset);
    }

    [[nodiscard]] bool isConsequence(std::size_t index) const {
        const std::size_t cause = table_.causeOf(index);
        return cause != index && isShown_[cause];
    }

    [[nodiscard]] GroupKey keyOf(std::size_t index) const {
        return {findings_[index].finding->rule.index, findings_[index].state};
    }

    void countGroups() {
        for (const std::size_t index : wanted_) {
            if (!isConsequence(index)) {
                ++sizes_[keyOf(index)];
            }
        }
    }

    // The row of the finding's group, which begins with its first one; none where it is alone.
    std::size_t parentFor(std::size_t index) {
        const GroupKey key = keyOf(index);
        const std::uint64_t size = sizes_[key];
        if (size < 2) {
            return FindingsRow::kNoParent;
        }
        const auto [group, isNew] = groups_.try_emplace(key, result_.rows.size());
        if (isNew) {
            const std::uint64_t more =
                choice_.text.empty() ? table_.countedMore(findings_[index]) : 0;
            result_.top.push_back(result_.rows.size());
            result_.rows.push_back({.listed = index, .isGroup = true, .count = size + more});
        }
        return group->second;
    }

    void add(std::size_t index, std::size_t parent) {
        const std::size_t row = result_.rows.size();
        if (parent == FindingsRow::kNoParent) {
            result_.top.push_back(row);
        } else {
            result_.rows[parent].children.push_back(row);
        }
        rowOf_[index] = row;
        result_.rows.push_back({.listed = index, .parent = parent});
    }

    const FindingsTable& table_;
    const std::vector<ListedFinding>& findings_;
    const FindingsChoice& choice_;
    FindingsRows result_;
    // In the order of the table.
    std::vector<std::size_t> wanted_;
    std::vector<bool> isShown_;
    std::vector<std::string> messages_;
    std::map<GroupKey, std::uint64_t> sizes_;
    std::map<GroupKey, std::size_t> groups_;
    // Of each finding that has one.
    std::vector<std::size_t> rowOf_;
};

}  // namespace

FindingsRows FindingsTable::arranged(const FindingsChoice& choice) const {
    return Arranging(*this, choice).run();
}

}  // namespace vornic
