#include "job/RelinkFile.h"

#include "base/PathText.h"
#include "formats/fcpxml/Bundle.h"

namespace vornic {

namespace {

const InPlaceChange::Words kWords{"relink", "relinked"};

}  // namespace

InPlaceResult relinkInPlace(const std::string& path, const std::string& bytesRead,
                            const std::string& newBytes, const Waiting& waiting,
                            SwapObserver& observer) {
    InPlaceResult result;
    InPlaceChange place(path, kWords, waiting, result);
    if (place.read(platform::ContentDigest::of(bytesRead))) {
        place.write(newBytes);
        place.finish(true, observer);
    }
    place.takeNotes();
    return result;
}

std::vector<std::string> clearLeftByRelinking(const std::string& path, const Waiting& waiting) {
    InPlaceResult result;
    InPlaceChange place(path, kWords, waiting, result);
    place.clearLeft();
    place.takeNotes();
    return result.notes;
}

std::string relinkedPath(const std::string& path) {
    std::string whole = path;
    std::string extension = splitExtension(lastComponent(path)).extension;
    const std::string folder = parentFolder(path);
    if (fcpxml::isBundleName(folder)) {
        whole = folder;
    }
    const std::string name = lastComponent(whole);
    return whole.substr(0, whole.size() - name.size()) + splitExtension(name).stem + " (relinked)" +
           extension;
}

}  // namespace vornic
