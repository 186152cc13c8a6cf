#ifndef VORNIC_TESTS_FORMATS_FCPXML_DOCUMENT_MUTATOR_H
#define VORNIC_TESTS_FORMATS_FCPXML_DOCUMENT_MUTATOR_H

#include <random>
#include <string>

namespace vornic::test {

/// A well-formed document with one change that may make it invalid: an element or attribute left
/// out, doubled, moved or renamed, another value, something where nothing may stand. The change
/// follows from the state of the random numbers alone.
[[nodiscard]] std::string mutatedDocument(const std::string& text, std::minstd_rand& random);

}  // namespace vornic::test

#endif
