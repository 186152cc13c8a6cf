#ifndef VORNIC_TESTS_CONVERT_FCPXML_VERSION_DIFFERENCES_H
#define VORNIC_TESTS_CONVERT_FCPXML_VERSION_DIFFERENCES_H

#include <string>
#include <vector>

#include "formats/fcpxml/Version.h"

namespace vornic::test {

/// One thing that is not the same in two versions, as the catalogue has it.
struct VersionDifference {
    enum class Kind {
        elementGoes,
        /// An element that both versions have goes out of another one.
        placeGoes,
        attributeGoes,
        /// A value of a list; "" where any text was allowed and now only a list is.
        valueGoes,
        /// What holds where nothing is written is not the same, and is written out.
        defaultGoes,
        /// Where nothing is written a value holds, as none did before.
        defaultComes,
        becomesRequired,
        /// The parts of the element stand in another order.
        orderChanges,
        becomesEmpty,
        /// An element that could be repeated stands once.
        becomesSingle,
        /// Nothing is to be done about these.
        elementComes,
        attributeComes,
    };

    Kind kind;
    /// The element concerned; of an attribute, the one that it is at.
    std::string element;
    /// What it stands in, for `placeGoes` and `becomesSingle`.
    std::string parent = {};
    std::string attribute = {};
    std::string value = {};
};

/// All of them, kind by kind and in the order of the catalogue.
[[nodiscard]] std::vector<VersionDifference> versionDifferences(fcpxml::Version from,
                                                                fcpxml::Version to);

}  // namespace vornic::test

#endif
