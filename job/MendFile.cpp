#include "job/MendFile.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vornic {

MendedFile mendFile(const std::string& path, const MendRequest& request, const Waiting& waiting,
                    SwapObserver& observer) {
    MendedFile result;
    InPlaceChange place(path, {"mend", "mended"}, waiting, result);
    std::optional<std::string> bytes =
        request.expected ? place.read(request.expected) : place.readUndigested();
    if (bytes) {
        bool isFinished = false;
        const MendedBytes::Watcher watcher{
            .look = [&place](std::string_view old) { place.expect(old); },
            .write =
                [&place](std::string_view old, const EditList& edits) {
                    place.write([old, &edits](const WorkingCopy::Sink& sink) {
                        return forEachPieceAfter(old, edits, sink);
                    });
                },
            .accept =
                [&place, &observer, &isFinished] {
                    isFinished = true;
                    place.finish(true, observer);
                },
        };
        result.mended = MendedBytes::of(std::move(*bytes), request, watcher);
        if (!isFinished) {
            place.finish(false, observer);
        }
    }
    place.takeNotes();
    return result;
}

}  // namespace vornic
