#ifndef VORNIC_REPAIR_DOCUMENT_CONVERSION_RUN_H
#define VORNIC_REPAIR_DOCUMENT_CONVERSION_RUN_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace vornic {

/// A turn of the conversion dialog: an analysis, or a conversion with the analysis after it. What
/// it is about is settled when it is made, so that nothing that changes in the window later changes
/// what is converted. It can be stopped up to the moment in which it begins to write. Any thread.
class ConversionRun {
  public:
    /// An analysis of a file.
    ConversionRun(std::uint64_t number, std::optional<std::string> path)
        : number_(number), path_(std::move(path)) {}
    /// A conversion of a file to a version; both may be missing.
    ConversionRun(std::uint64_t number, std::optional<std::string> path,
                  std::optional<std::string> version, bool keepsOriginal = false)
        : number_(number),
          path_(std::move(path)),
          version_(std::move(version)),
          keepsOriginal_(keepsOriginal) {}

    /// Tells the turns of a document apart; later ones have higher numbers.
    [[nodiscard]] std::uint64_t number() const { return number_; }
    [[nodiscard]] const std::optional<std::string>& path() const { return path_; }
    /// The key of the version that was chosen.
    [[nodiscard]] const std::optional<std::string>& version() const { return version_; }
    /// Whether the file as it was goes to the Trash.
    [[nodiscard]] bool keepsOriginal() const { return keepsOriginal_; }

    /// Asks the run to end at its next check point. What is being written is finished.
    void stop();
    [[nodiscard]] bool isStopped() const;
    /// Settles that the run writes. @return false when it has been stopped and must not.
    [[nodiscard]] bool beginWriting();
    void endWriting();
    /// Returns once nothing is being written.
    void waitUntilWritten() const;
    /// Marks the run as over.
    void end();
    [[nodiscard]] bool hasEnded() const;
    /// True while the run may still write.
    [[nodiscard]] bool mayWrite() const;

  private:
    const std::uint64_t number_;
    const std::optional<std::string> path_;
    const std::optional<std::string> version_;
    const bool keepsOriginal_ = false;

    mutable std::mutex mutex_;
    mutable std::condition_variable written_;
    bool isStopped_ = false;
    bool isWriting_ = false;
    bool hasEnded_ = false;
};

}  // namespace vornic

#endif
