#ifndef VORNIC_APP_CLI_COMMAND_LINE_H
#define VORNIC_APP_CLI_COMMAND_LINE_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vornic {

/// An option of a command-line program.
struct OptionForm {
    /// "--format", or "-j".
    std::string_view name;
    bool takesValue = false;
    /// Whether the value may be left out; it is then only taken as `--name=VALUE`.
    bool isValueOptional = false;
};

/// The options and files of a command line, taken the same way by every program: `--name VALUE` and
/// `--name=VALUE`, `-n VALUE` and `-nVALUE`, `--` in front of files whose names begin with a
/// hyphen,
/// "-" as a file. Options may stand behind files.
class CommandLine {
  public:
    /// @param arguments the program's path first.
    [[nodiscard]] static CommandLine parse(const std::vector<std::string>& arguments,
                                           std::span<const OptionForm> options);

    /// What is wrong with the options, as a sentence without a full stop; "" when nothing is.
    [[nodiscard]] const std::string& fault() const { return fault_; }
    [[nodiscard]] bool has(std::string_view option) const { return value(option).has_value(); }
    /// The value of an option, "" for one that takes none; the last one where it stands more than
    /// once; nothing when it does not.
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
    /// All values of an option, in their order.
    [[nodiscard]] std::vector<std::string> values(std::string_view option) const;
    [[nodiscard]] const std::vector<std::string>& files() const { return files_; }

  private:
    std::vector<std::pair<std::string_view, std::string>> options_;
    std::vector<std::string> files_;
    std::string fault_;
};

}  // namespace vornic

#endif
