#ifndef VORNIC_TESTS_FORMATS_FCPXML_DOCUMENT_GENERATOR_H
#define VORNIC_TESTS_FORMATS_FCPXML_DOCUMENT_GENERATOR_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "formats/fcpxml/Definition.h"

namespace vornic::test {

/// Writes documents that are valid by the definition of one version, each another one, and prefers
/// what none of them has held so far, so that in the end every element, attribute and enumerated
/// value that can be reached from the root has occurred.
class DocumentGenerator {
  public:
    DocumentGenerator(fcpxml::Version version, std::uint32_t seed);

    /// A whole document with the document type declaration `<!DOCTYPE fcpxml>`.
    [[nodiscard]] std::string next();

    /// What has not occurred in any document yet: "element", "element@attribute" and
    /// "element@attribute=value".
    [[nodiscard]] std::vector<std::string> missing() const;

  private:
    void measure();
    void measureReach();
    void append(const fcpxml::ElementDefinition& element, int depth);
    void appendAttributes(const fcpxml::ElementDefinition& element);
    void appendChildren(const fcpxml::ElementDefinition& element, int depth);
    void appendShortest(const fcpxml::ElementDefinition& element, fcpxml::ContentModel::State state,
                        int depth);
    [[nodiscard]] std::string valueOf(const fcpxml::ElementDefinition& element,
                                      const fcpxml::AttributeDefinition& attribute);
    [[nodiscard]] std::size_t costFrom(const fcpxml::ContentModel& model,
                                       fcpxml::ContentModel::State state) const;
    [[nodiscard]] std::size_t restOf(const fcpxml::ElementDefinition& element,
                                     fcpxml::ContentModel::State state);
    [[nodiscard]] bool isCovered(const fcpxml::ElementDefinition& element);
    [[nodiscard]] bool isCovered(const fcpxml::ElementDefinition& element,
                                 const fcpxml::AttributeDefinition& attribute);
    [[nodiscard]] bool haveAllOccurred(const fcpxml::ElementDefinition& element,
                                       const fcpxml::AttributeDefinition& attribute) const;
    [[nodiscard]] bool chance(int percent);

    const fcpxml::Definition& definition_;
    std::minstd_rand random_;
    // By element: the number of elements in its smallest form.
    std::vector<std::size_t> costs_;
    // By element and state: the number of elements that are still needed.
    std::map<std::pair<fcpxml::ElementId, fcpxml::ContentModel::State>, std::size_t> rests_;
    std::set<fcpxml::ElementId> reachable_;
    std::set<std::string> occurred_;
    // Of which everything has occurred: never to be asked for again.
    std::unordered_set<const void*> covered_;
    std::string text_;
    int idCount_ = 0;
    std::size_t elementCount_ = 0;
};

/// The definition of a version as a file that other programs read.
[[nodiscard]] std::string documentTypeDefinition(fcpxml::Version version);

}  // namespace vornic::test

#endif
