#ifndef VORNIC_TESTS_FUZZ_RULES_H
#define VORNIC_TESTS_FUZZ_RULES_H

#include <string>
#include <string_view>

/// What holds for whatever bytes come in. The fuzz targets look for bytes that break it, and a test
/// goes through the seeds. Each tells how it is broken, "" when it holds. Any thread.
namespace vornic::test {

/// A check tells of places that are in the file, with all that its messages need, in reports that
/// can be read back.
[[nodiscard]] std::string brokenRuleOfCheck(std::string_view bytes);

/// Mends do what their edits say and no more, take away what they are for, and leave nothing to the
/// next round; first the safe ones, then all.
[[nodiscard]] std::string brokenRuleOfMends(std::string_view bytes);

/// A conversion makes a file of the version that was asked for, well-formed and valid where its
/// source was, in which a second conversion finds nothing to do. The length of the file chooses the
/// version.
[[nodiscard]] std::string brokenRuleOfConversion(std::string_view bytes);

/// What is read out of a journal can be written, and is the same when it is read again.
[[nodiscard]] std::string brokenRuleOfJournal(std::string_view text);

/// A property list can be read again in either form when it says that it can be written.
[[nodiscard]] std::string brokenRuleOfPropertyLists(std::string_view bytes);

/// An archive is extracted into its folder, or is refused and leaves nothing; no link leads out.
[[nodiscard]] std::string brokenRuleOfArchives(std::string_view bytes);

/// The runs of a rich text are text, each in another style than the one before it.
[[nodiscard]] std::string brokenRuleOfRichText(std::string_view bytes);

}  // namespace vornic::test

#endif
