#include "repair/pipeline/MarkupMends.h"

#include <algorithm>
#include <iterator>

#include "repair/pipeline/CharacterFilter.h"

namespace vornic {

std::vector<XMLEdit> editsBeforeFilter(std::string_view text, const std::vector<XMLEdit>& edits) {
    std::vector<XMLEdit> made;
    std::copy_if(edits.begin(), edits.end(), std::back_inserter(made), [text](const XMLEdit& edit) {
        const bool isRemoval = edit.replacement.empty();
        return !isRemoval || !isRemovedByFilter(text.substr(edit.offset, edit.length));
    });
    return made;
}

}  // namespace vornic
