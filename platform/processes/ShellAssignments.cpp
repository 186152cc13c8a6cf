#include "platform/processes/ShellAssignments.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace vornic::platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\f\v";

bool isNameCharacter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '_';
}

std::string_view trimFront(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Takes the text right of the equals sign apart, one character after the other.
class ValueReader {
  public:
    ValueReader(std::string_view text, std::string_view home) : rest_(text), home_(home) {}

    /// Nothing when a quote is never closed or something follows the value.
    [[nodiscard]] std::optional<std::string> read() {
        while (!rest_.empty() && (quote_ != '\0' || kBlanks.find(rest_.front()) == kNowhere)) {
            takeOne();
        }
        rest_ = trimFront(rest_);
        const bool ended = rest_.empty() || rest_.front() == '#';
        return quote_ == '\0' && ended ? std::optional(value_) : std::nullopt;
    }

  private:
    static constexpr std::size_t kNowhere = std::string_view::npos;

    void takeOne() {
        const char character = rest_.front();
        if (character == quote_ || (quote_ == '\0' && (character == '"' || character == '\''))) {
            quote_ = quote_ == '\0' ? character : '\0';
            rest_.remove_prefix(1);
        } else if (quote_ == '\'' || !(takeEscape() || takeHome())) {
            value_ += character;
            rest_.remove_prefix(1);
        }
    }

    bool takeEscape() {
        if (rest_.front() != '\\' || rest_.size() < 2) {
            return false;
        }
        // Within double quotes a backslash is special only before these.
        if (quote_ == '"' && std::string_view("$`\"\\").find(rest_[1]) == kNowhere) {
            return false;
        }
        value_ += rest_[1];
        rest_.remove_prefix(2);
        return true;
    }

    bool takeHome() {
        constexpr std::string_view kPlain = "$HOME";
        constexpr std::string_view kBraced = "${HOME}";
        std::size_t length = rest_.starts_with(kBraced) ? kBraced.size() : 0;
        if (rest_.starts_with(kPlain) &&
            (rest_.size() == kPlain.size() || !isNameCharacter(rest_[kPlain.size()]))) {
            length = kPlain.size();
        }
        if (length == 0) {
            return false;
        }
        value_ += home_;
        rest_.remove_prefix(length);
        return true;
    }

    std::string_view rest_;
    std::string_view home_;
    std::string value_;
    char quote_ = '\0';
};

}  // namespace

std::map<std::string, std::string> parseShellAssignments(std::string_view text,
                                                         std::string_view home) {
    std::map<std::string, std::string> assignments;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimFront(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        const std::string_view name = line.substr(0, equals);
        if (equals == std::string_view::npos || name.empty() ||
            !std::all_of(name.begin(), name.end(), isNameCharacter)) {
            continue;
        }
        if (std::optional<std::string> value = ValueReader(line.substr(equals + 1), home).read()) {
            assignments.insert_or_assign(std::string(name), std::move(*value));
        }
    }
    return assignments;
}

}  // namespace vornic::platform
