#include "job/ConvertFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "formats/fcpxml/Bundle.h"
#include "formats/fcpxml/Version.h"
#include "job/InPlaceChange.h"
#include "job/ResultFile.h"
#include "platform/files/BorrowedMode.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Rename.h"
#include "platform/files/TemporaryFolder.h"

namespace vornic {

namespace {

namespace fs = std::filesystem;

using std::string;

constexpr fcpxml::Version kFirstWithBundles{10};
constexpr long kMostNumbers = 10000;

// The bundle whose project a file is, or "".
string bundleOf(const string& path) {
    const string folder = parentFolder(path);
    std::error_code unknown;
    const bool isContent = lastComponent(path) == fcpxml::kBundleContent;
    if (!isContent ||
        !fcpxml::isBundleName(folder == "." ? platform::currentDirectory() : folder)) {
        return "";
    }
    const auto real = fs::canonical(folder, unknown);
    return unknown ? "" : real.string();
}

class Converting {
  public:
    Converting(const string& path, const ConvertFileRequest& request)
        : path_(path), request_(request), bundle_(bundleOf(path)) {}

    ConvertedFile run(const Waiting& waiting, SwapObserver& observer) && {
        if (request_.isInPlace && !request_.isDryRun) {
            place_.emplace(path_, InPlaceChange::Words{"convert", "converted"}, waiting, placed_);
        }
        ErrorSlot error;
        std::optional<string> bytes =
            place_ ? place_->read(request_.expected) : platform::readFile(path_, error);
        if (bytes && !isExpected(*bytes)) {
            refuse(formatString(
                "The file %@ was not converted: another program has changed it since it was read.",
                path_));
        } else if (bytes) {
            // What is wrong with the file is looked for while the result is written.
            conversion_ = ProjectConversion::begin(std::move(*bytes), request_.conversion);
            convert(observer);
            conversion_.finish();
        } else if (error) {
            refuse(error->localizedDescription());
        }
        if (place_) {
            takePlaced();
        }
        file_.report = std::move(conversion_.report);
        file_.report.path = path_;
        file_.losses = conversion_.losses;
        return std::move(file_);
    }

  private:
    void convert(SwapObserver& observer) {
        file_.isOtherFormat = conversion_.isOtherFormat;
        if (!conversion_.refusal.empty()) {
            return refuse(formatString("The file %@%@ was not converted: %@", path_, placeInFile(),
                                       conversion_.refusal));
        }
        if (request_.conversion.to.empty()) {
            return;
        }
        if (const string why = whyNotInThisForm(); !why.empty()) {
            return refuse(formatString("The file %@ was not converted: %@", path_, why));
        }
        if (request_.isStrict && conversion_.losses != 0) {
            return refuse(
                formatString("The file %@ was not converted: it would lose something.", path_));
        }
        if (request_.isDryRun) {
            return;
        }
        if (isStopped()) {
            return refuse(formatString("The file %@ was not converted: it was stopped.", path_));
        }
        if (request_.isInPlace) {
            replace(observer);
        } else if (becomesBundle()) {
            writeBundle();
        } else {
            writeFile(wantedPath());
        }
    }

    [[nodiscard]] bool isExpected(const string& bytes) const {
        return !request_.expected || *request_.expected == platform::ContentDigest::of(bytes);
    }

    [[nodiscard]] bool isStopped() const { return request_.stop.stopRequested(); }

    [[nodiscard]] string placeInFile() const {
        return conversion_.line == 0
                   ? ""
                   : formatString("(%zu,%zu)", conversion_.line, conversion_.column);
    }

    [[nodiscard]] bool hasBundles() const {
        const auto version = fcpxml::Version::parse(request_.conversion.to);
        return conversion_.kind == FileKind::fcpxml && version && *version >= kFirstWithBundles;
    }

    [[nodiscard]] bool becomesBundle() const {
        const bool isAsked =
            request_.form == BundleForm::bundle ||
            (request_.form == BundleForm::asTheFile &&
             (!bundle_.empty() || (request_.output && fcpxml::isBundleName(*request_.output))));
        return isAsked && hasBundles();
    }

    [[nodiscard]] string whyNotInThisForm() const {
        if (request_.output && request_.output->ends_with('/') &&
            !platform::isDirectory(*request_.output) && !becomesBundle()) {
            return formatString("there is no folder %@.", *request_.output);
        }
        if (request_.output && fcpxml::isBundleName(*request_.output) && !becomesBundle()) {
            return formatString("%@ is the name of a bundle, and the result is a file.",
                                *request_.output);
        }
        if (request_.form == BundleForm::bundle && !hasBundles()) {
            return formatString("%@ %@ has no bundles.",
                                conversion_.kind == FileKind::fcpxml ? "FCPXML" : "XMEML",
                                request_.conversion.to);
        }
        if (request_.isInPlace && !bundle_.empty() && !hasBundles()) {
            return formatString(
                "it is in a bundle, which FCPXML %@ does not have; without "
                "--in-place a file is written.",
                request_.conversion.to);
        }
        return "";
    }

    [[nodiscard]] string wantedPath() const {
        const string source = bundle_.empty() ? path_ : bundle_;
        const SplitName name = splitExtension(lastComponent(source));
        const string extension = becomesBundle()   ? string(fcpxml::kBundleExtension)
                                 : bundle_.empty() ? name.extension
                                                   : ".fcpxml";
        // Of a name that is too long the end of its stem goes.
        const string ending = formatString(" (%@)%@", request_.conversion.to, extension);
        const string wanted =
            string(truncateUTF8(name.stem, kLongestName - std::min(ending.size(), kLongestName))) +
            ending;
        if (!request_.output) {
            return source.substr(0, source.size() - lastComponent(source).size()) + wanted;
        }
        return platform::isDirectory(*request_.output) && !fcpxml::isBundleName(*request_.output)
                   ? joinPath(*request_.output, wanted)
                   : withoutTrailingSlashes(*request_.output);
    }

    [[nodiscard]] WorkingCopy::Writer writer() const {
        return [this](const WorkingCopy::Sink& sink) { return conversion_.write(sink); };
    }

    void writeFile(const string& wanted) {
        ErrorSlot error;
        const std::optional<ResultFile> written = writeResultFile(wanted, writer(), path_, error);
        if (!written) {
            return refuse(error->localizedDescription());
        }
        conversion_.report.conversion->result = written->path;
        tellLost(written->lostMetadata);
        if (!bundle_.empty()) {
            file_.notes.push_back(
                formatString("What else is in the bundle %@ was not copied to the file.", bundle_));
        }
    }

    // The folder gets its name when everything is in it.
    void writeBundle() {
        const string wanted = wantedPath();
        ErrorSlot error;
        platform::TemporaryFolder hidden;
        if (!hidden.make(wanted, error)) {
            return refuse(error->localizedDescription());
        }
        const string bundle = joinPath(hidden.path(), lastComponent(wanted));
        const string content = fcpxml::contentOfBundle(bundle);
        // It names what of the bundle it is that cannot be copied.
        if (!bundle_.empty() && !platform::copyItem(bundle_, bundle, error)) {
            return refuse(error->localizedDescription());
        }
        // A bundle that may not be changed can be copied, and its copy is to be the same in the
        // end.
        const platform::BorrowedMode mode(bundle);
        const bool isMade = bundle_.empty() ? platform::createDirectory(bundle, error)
                                            : platform::removeFile(content, error);
        const std::optional<ResultFile> written =
            isMade ? writeResultFile(content, writer(), path_, error) : std::nullopt;
        if (!written) {
            return refuseFor(wanted, *error);
        }
        if (giveName(bundle, wanted)) {
            mode.giveBack();
            tellLost(written->lostMetadata);
        }
    }

    // What happened in the hidden folder has happened to the bundle, for the user.
    void refuseFor(const string& wanted, const Error& reason) {
        ErrorSlot error;
        platform::failFile(error, wanted, "written", reason.code);
        refuse(error->localizedDescription());
    }

    bool giveName(const string& bundle, const string& wanted) {
        const string name = lastComponent(wanted);
        const string folder = wanted.substr(0, wanted.size() - name.size());
        int errorNumber = EEXIST;
        string path;
        for (long number = 1; errorNumber == EEXIST && number <= kMostNumbers; ++number) {
            path = folder + numberedName(name, number, kLongestName);
            errorNumber = platform::renameWithoutReplacing(bundle, path);
        }
        if (errorNumber != 0) {
            ErrorSlot error;
            platform::failFile(error, wanted, "written", errorNumber);
            refuse(error->localizedDescription());
            return false;
        }
        conversion_.report.conversion->result = path;
        return true;
    }

    void replace(SwapObserver& observer) {
        if (!conversion_.isAnythingChanged()) {
            file_.notes.push_back(formatString("The file %@ is in version %@ already.", path_,
                                               request_.conversion.to));
            return;
        }
        place_->write(writer());
        place_->finish(!isStopped(), observer);
    }

    void takePlaced() {
        place_->takeNotes();
        file_.notes.insert(file_.notes.end(), placed_.notes.begin(), placed_.notes.end());
        if (placed_.error || placed_.isCancelled) {
            return refuse(placed_.error ? placed_.error->localizedDescription()
                                        : formatString("The file %@ was not converted.", path_));
        }
        if (placed_.swap) {
            conversion_.report.conversion->result = path_;
            file_.original = placed_.swap->original;
            tellLost(placed_.lostMetadata);
        }
    }

    void tellLost(const string& lostMetadata) {
        if (!lostMetadata.empty()) {
            file_.notes.push_back(
                formatString("Something of the file %@ was not kept. %@", path_, lostMetadata));
        }
    }

    void refuse(string sentence) { file_.refusal = std::move(sentence); }

    const string& path_;
    const ConvertFileRequest& request_;
    string bundle_;
    // Where the file is to be replaced.
    InPlaceResult placed_;
    std::optional<InPlaceChange> place_;
    ProjectConversion conversion_;
    ConvertedFile file_;
};

}  // namespace

ConvertedFile convertFile(const string& path, const ConvertFileRequest& request,
                          const Waiting& waiting, SwapObserver& observer) {
    return Converting(path, request).run(waiting, observer);
}

}  // namespace vornic
