#ifndef VORNIC_SALVAGE_TOKENIZER_H
#define VORNIC_SALVAGE_TOKENIZER_H

#include <functional>
#include <string_view>
#include <vector>

#include "salvage/Change.h"
#include "salvage/NameTable.h"
#include "salvage/Token.h"

namespace vornic::salvage {

/// Which of two values of an attribute is the likelier one: a positive number when the second fits
/// its type better, else the first stays.
using ValueJudge = std::function<int(std::string_view element, std::string_view attribute,
                                     std::string_view first, std::string_view second)>;

/// A broken text in pieces.
struct Tokens {
    std::vector<Token> list;
    /// What makes each piece whole by itself, in the order of the text.
    Changes changes;
    /// True when the text ends inside a tag, comment or the like.
    bool isCut = false;
};

/// Takes any UTF-8 text apart into tags, text and other markup, whatever is wrong with them: a tag
/// without `>` ends before the next `<`, a value without its quote before the next attribute, a
/// comment that is never closed with its line. Linear.
/// @param names gains the names that the text has.
/// @param rootName of the format's root element, whose tag has its slash taken out where the rest
/// of the text says that it opens the document.
[[nodiscard]] Tokens tokenize(std::string_view text, std::string_view rootName, NameTable& names,
                              const ValueJudge& judge);

}  // namespace vornic::salvage

#endif
