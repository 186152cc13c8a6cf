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
        // Digesting and writing go on while the result is checked.
        const auto write = [&place](const std::string& mended, std::string_view old) {
            place.expect(old);
            place.write(mended);
        };
        result.mended = MendedBytes::of(std::move(*bytes), request, write);
        place.finish(result.mended.refusal.empty(), observer);
    }
    place.takeNotes();
    return result;
}

}  // namespace vornic
