#include "job/MendFile.h"

#include <optional>
#include <utility>

namespace vornic {

MendedFile mendFile(const std::string& path, const MendRequest& request, const Waiting& waiting,
                    SwapObserver& observer) {
    MendedFile result;
    InPlaceChange place(path, {"mend", "mended"}, waiting, result);
    if (std::optional<std::string> bytes = place.read(request.expected)) {
        result.mended =
            MendedBytes::of(std::move(*bytes), request,
                            [&place](const std::string& mended) { place.write(mended); });
        place.finish(result.mended.refusal.empty(), observer);
    }
    place.takeNotes();
    return result;
}

}  // namespace vornic
