#include "platform/rights/PrivilegedTools.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace vornic::platform {
namespace {

struct ToolForm {
    PrivilegedAction action;
    std::string_view tool;
    std::vector<std::string_view> options;
    std::size_t paths;
    bool takesFirstPathAway;
    bool replacesLastPath;
};

const std::vector<ToolForm>& toolForms() {
    using enum PrivilegedAction;
    static const std::vector<ToolForm> forms{
        {remove, "/bin/rm", {"-Rdf"}, 1, true, false},
        {remove, "/bin/rm", {"-R", "-f"}, 1, true, false},
        {move, "/bin/mv", {"-f"}, 2, true, true},
        {copy, "/bin/cp", {"-f", "-p", "-R"}, 2, false, true},
        {makeFolder, "/bin/mkdir", {"-p"}, 1, false, false},
        {touch, "/usr/bin/touch", {"-c"}, 1, false, false},
    };
    return forms;
}

bool isAbsolutePath(const std::string& argument) {
    return argument.starts_with('/') && argument.find('\0') == std::string::npos;
}

bool fits(const ToolForm& form, const std::string& tool,
          const std::vector<std::string>& arguments) {
    const auto firstPath = static_cast<std::ptrdiff_t>(form.options.size());
    return tool == form.tool && arguments.size() == form.options.size() + form.paths &&
           std::equal(form.options.begin(), form.options.end(), arguments.begin()) &&
           std::all_of(arguments.begin() + firstPath, arguments.end(), isAbsolutePath);
}

}  // namespace

std::optional<PrivilegedRun> allowedPrivilegedRun(const std::string& tool,
                                                  const std::vector<std::string>& arguments) {
    const std::vector<ToolForm>& forms = toolForms();
    const auto found = std::find_if(forms.begin(), forms.end(), [&](const ToolForm& form) {
        return fits(form, tool, arguments);
    });
    if (found == forms.end()) {
        return std::nullopt;
    }
    PrivilegedRun run;
    run.action = found->action;
    run.firstPath = found->options.size();
    if (found->takesFirstPathAway) {
        run.takenAway = found->options.size();
    }
    if (found->replacesLastPath) {
        run.replaced = arguments.size() - 1;
    }
    return run;
}

}  // namespace vornic::platform
