#ifndef VORNIC_JOB_NAMED_SOURCES_H
#define VORNIC_JOB_NAMED_SOURCES_H

#include <string>

namespace vornic {

/// A file that the user has opened in a window or named on the command line: while the object lives
/// the whole process knows that no job may take the file for something that a job has left. The
/// file need not exist. Any thread.
class NamedSource {
  public:
    explicit NamedSource(std::string path);
    ~NamedSource();
    NamedSource(const NamedSource&) = delete;
    NamedSource& operator=(const NamedSource&) = delete;

    /// True when what stands at the path is a file that the user has named, under whatever
    /// spelling of the path, or the target of a link that the user has named.
    [[nodiscard]] static bool isAt(const std::string& path);

  private:
    std::string path_;
};

}  // namespace vornic

#endif
