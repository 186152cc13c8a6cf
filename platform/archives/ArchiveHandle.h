#ifndef VORNIC_PLATFORM_ARCHIVES_ARCHIVE_HANDLE_H
#define VORNIC_PLATFORM_ARCHIVES_ARCHIVE_HANDLE_H

#include <clocale>
#include <memory>

#include <archive.h>
#include <archive_entry.h>

/// What reading and writing archives share.
namespace vornic::platform {

struct ArchiveCloser {
    void operator()(struct archive* archive) const { archive_free(archive); }
    void operator()(struct archive_entry* entry) const { archive_entry_free(entry); }
};
using ArchiveHandle = std::unique_ptr<struct archive, ArchiveCloser>;
using ArchiveEntry = std::unique_ptr<struct archive_entry, ArchiveCloser>;

/// Sets the encoding that the archive library takes names to be in, for the calling thread while
/// the object lives. `plain` marks names as having none.
class ArchiveNames {
  public:
    enum class Encoding { utf8, plain };

    explicit ArchiveNames(Encoding encoding)
        : locale_(newlocale(LC_CTYPE_MASK, encoding == Encoding::utf8 ? "C.UTF-8" : "C", nullptr)),
          previous_(locale_ == nullptr ? nullptr : uselocale(locale_)) {}
    ~ArchiveNames() {
        if (locale_ != nullptr) {
            uselocale(previous_);
            freelocale(locale_);
        }
    }
    ArchiveNames(const ArchiveNames&) = delete;
    ArchiveNames& operator=(const ArchiveNames&) = delete;

  private:
    locale_t locale_;
    locale_t previous_;
};

}  // namespace vornic::platform

#endif
