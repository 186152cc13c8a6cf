#ifndef VORNIC_TESTS_SUPPORT_FAKES_CATALOGUE_BUNDLE_H
#define VORNIC_TESTS_SUPPORT_FAKES_CATALOGUE_BUNDLE_H

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/Bundle.h"
#include "platform/settings/PropertyList.h"
#include "tests/support/machine/Sandbox.h"

namespace vornic::test {

/// An application bundle of the test's own, in the place of the main bundle while it lives. It has
/// no version catalogue until one is written.
class CatalogueBundle {
  public:
    /// What the catalogue says of a version.
    struct Version {
        std::optional<std::string> label;
        std::optional<std::vector<std::string>> elements;
    };

    explicit CatalogueBundle(const Sandbox& sandbox)
        : path_(sandbox.path("Vornic.app")),
          catalogue_(path_ + "/Contents/Resources/xml_versions.plist") {
        std::filesystem::create_directories(path_ + "/Contents/Resources");
        platform::Bundle::setMainBundle(platform::Bundle(path_));
    }
    ~CatalogueBundle() { platform::Bundle::setMainBundle(std::nullopt); }
    CatalogueBundle(const CatalogueBundle&) = delete;
    CatalogueBundle& operator=(const CatalogueBundle&) = delete;

    /// Writes a catalogue of these versions.
    void write(const std::map<std::string, Version>& versions) const {
        platform::PropertyList::Dictionary root;
        for (const auto& [key, version] : versions) {
            root[key] = entry(version);
        }
        write(platform::PropertyList(root));
    }
    void write(const platform::PropertyList& root) const {
        ErrorSlot error;
        EXPECT_TRUE(root.writeFile(catalogue_, error));
    }
    /// Writes any bytes in the catalogue's place.
    void writeBytes(const Sandbox& sandbox, std::string_view bytes) const {
        sandbox.write("Vornic.app/Contents/Resources/xml_versions.plist", bytes);
    }
    void remove() const { std::filesystem::remove(catalogue_); }

  private:
    static platform::PropertyList entry(const Version& version) {
        platform::PropertyList::Dictionary dictionary;
        if (version.label) {
            dictionary["FCP Version"] = platform::PropertyList(*version.label);
        }
        if (version.elements) {
            platform::PropertyList::Array array(version.elements->begin(), version.elements->end());
            dictionary["elements"] = platform::PropertyList(array);
        }
        return platform::PropertyList(dictionary);
    }

    std::string path_;
    std::string catalogue_;
};

}  // namespace vornic::test

#endif
