#include "xml/reader/ForbiddenCharacters.h"

#include <algorithm>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "xml/text/XMLCharacters.h"

namespace vornic {

namespace {

using xmlchars::is;

// U+FFFE and U+FFFF are the only forbidden characters above the control characters.
bool isNonCharacter(const char* at, const char* end) {
    return end - at >= 3 && at[0] == '\xEF' && at[1] == '\xBF' &&
           (at[2] == '\xBE' || at[2] == '\xBF');
}

// The length of the forbidden character at `at`, or 0 when the one there is allowed.
std::size_t forbiddenLength(const char* at, const char* end) {
    const auto byte = static_cast<unsigned char>(*at);
    if (byte < 0x20) {
        return is(*at, xmlchars::kSpace) ? 0 : 1;
    }
    return byte == 0xEF && isNonCharacter(at, end) ? 3 : 0;
}

#if defined(__SSE2__)
// Passes over blocks of bytes none of which can begin a forbidden character.
const char* passHarmless(const char* at, const char* end) {
    const __m128i lastControl = _mm_set1_epi8(0x1F);
    const __m128i nonCharacterLead = _mm_set1_epi8('\xEF');
    for (; end - at >= static_cast<std::ptrdiff_t>(sizeof(__m128i)); at += sizeof(__m128i)) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i control = _mm_cmpeq_epi8(_mm_max_epu8(block, lastControl), lastControl);
        const __m128i space = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\t')),
                                                        _mm_cmpeq_epi8(block, _mm_set1_epi8('\n'))),
                                           _mm_cmpeq_epi8(block, _mm_set1_epi8('\r')));
        const __m128i suspicious =
            _mm_or_si128(_mm_andnot_si128(space, control), _mm_cmpeq_epi8(block, nonCharacterLead));
        const int places = _mm_movemask_epi8(suspicious);
        if (places != 0) {
            return at + std::countr_zero(static_cast<unsigned>(places));
        }
    }
    return at;
}
#else
const char* passHarmless(const char* at, const char*) {
    return at;
}
#endif

const char* findForbidden(const char* at, const char* end) {
    at = passHarmless(at, end);
    while (at != end && forbiddenLength(at, end) == 0) {
        at = passHarmless(at + 1, end);
    }
    return at;
}

const char* afterForbidden(const char* at, const char* end) {
    while (at != end && forbiddenLength(at, end) != 0) {
        at += forbiddenLength(at, end);
    }
    return at;
}

}  // namespace

std::size_t ForbiddenCharacters::runsIn(std::string_view text) {
    const char* const end = text.data() + text.size();
    std::size_t runs = 0;
    const char* at = findForbidden(text.data(), end);
    while (at != end) {
        ++runs;
        at = findForbidden(afterForbidden(at, end), end);
    }
    return runs;
}

void ForbiddenCharacters::forEachRun(std::string_view text,
                                     const std::function<void(TextSpan run)>& tell) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* at = findForbidden(begin, end); at != end; at = findForbidden(at, end)) {
        const char* const run = at;
        at = afterForbidden(at, end);
        tell({static_cast<std::size_t>(run - begin), static_cast<std::size_t>(at - run)});
    }
}

ForbiddenCharacters::ForbiddenCharacters(std::string_view text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    remaining_.reserve(text.size());
    for (const char* at = begin; at != end;) {
        const char* const forbidden = findForbidden(at, end);
        remaining_.append(at, forbidden);
        at = forbidden;
        while (at != end && forbiddenLength(at, end) != 0) {
            at += forbiddenLength(at, end);
            ++count_;
        }
        if (at != forbidden) {
            runs_.push_back({static_cast<std::size_t>(forbidden - begin),
                             static_cast<std::size_t>(at - forbidden),
                             {}});
        }
    }
}

const char* ForbiddenCharacters::endOfRun(const char* place, const char* end) {
    return afterForbidden(place, end);
}

ForbiddenCharacters::Runs::Runs(const ForbiddenCharacters& characters) : runs_(characters.runs_) {
    std::size_t removed = 0;
    remainingOffsets_.reserve(runs_.size());
    for (const XMLEdit& run : runs_) {
        remainingOffsets_.push_back(run.offset - removed);
        removed += run.length;
    }
}

std::size_t ForbiddenCharacters::Runs::original(std::size_t remainingOffset) const {
    const auto next =
        std::upper_bound(remainingOffsets_.begin(), remainingOffsets_.end(), remainingOffset);
    if (next == remainingOffsets_.begin()) {
        return remainingOffset;
    }
    const auto last = static_cast<std::size_t>(next - remainingOffsets_.begin()) - 1;
    return runs_[last].offset + runs_[last].length + (remainingOffset - remainingOffsets_[last]);
}

TextSpan ForbiddenCharacters::Runs::original(TextSpan remaining) const {
    const std::size_t offset = original(remaining.offset);
    if (remaining.length == 0) {
        return {offset, 0};
    }
    return {offset, original(remaining.end() - 1) + 1 - offset};
}

std::size_t ForbiddenCharacters::OffsetMap::original(std::size_t remainingOffset) {
    while (next_ < runs_.size() && runs_[next_].offset <= remainingOffset + removed_) {
        removed_ += runs_[next_].length;
        ++next_;
    }
    return remainingOffset + removed_;
}

std::vector<XMLEdit> ForbiddenCharacters::editsOfOriginal(const std::vector<XMLEdit>& edits) const {
    std::vector<XMLEdit> result;
    result.reserve(runs_.size() + edits.size());
    OffsetMap map(*this);
    std::size_t nextRun = 0;
    for (const XMLEdit& edit : edits) {
        const std::size_t start = map.original(edit.offset);
        result.insert(result.end(), runs_.begin() + static_cast<std::ptrdiff_t>(nextRun),
                      runs_.begin() + static_cast<std::ptrdiff_t>(map.next_));
        // An edit that takes out text takes out the runs inside it, too.
        const std::size_t last =
            edit.length == 0 ? start : map.original(edit.offset + edit.length - 1) + 1;
        nextRun = map.next_;
        result.push_back({start, last - start, edit.replacement});
    }
    result.insert(result.end(), runs_.begin() + static_cast<std::ptrdiff_t>(nextRun), runs_.end());
    return result;
}

}  // namespace vornic
