#include "platform/files/ContentDigest.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <memory>

#include <unistd.h>

namespace vornic::platform {
namespace {

// Odd, so that multiplying by one loses nothing; otherwise arbitrary.
constexpr std::uint64_t kSpread = 0xD1B54A32D192ED03U;
constexpr std::uint64_t kCarry = 0x8CB92BA72F3D8DD7U;

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = __builtin_bswap64(word);
    }
    return word;
}

/// Takes a word into a lane. For each word a different lane gives a different result, and for each
/// lane a different word, so that a difference once taken in never gets lost.
std::uint64_t taken(std::uint64_t lane, std::uint64_t word) {
    constexpr int kTurn = 27;
    return std::rotl(lane + word * kSpread, kTurn) * kCarry;
}

void takeBlock(ContentDigest::Value& lanes, const char* bytes) {
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
        lanes[lane] = taken(lanes[lane], wordAt(bytes + lane * sizeof(std::uint64_t)));
    }
}

std::uint64_t stirred(std::uint64_t value) {
    constexpr int kHalf = 32;
    value = (value ^ (value >> kHalf)) * kSpread;
    value = (value ^ (value >> kHalf)) * kCarry;
    return value ^ (value >> kHalf);
}

}  // namespace

ContentDigest::ContentDigest()
    : lanes_{0x9E6C63D0676A9A99U, 0xC2B2AE3D27D4EB4FU, 0x5851F42D4C957F2DU, 0x2545F4914F6CDD1DU} {}

void ContentDigest::update(std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    const std::size_t waiting = length_ % kBlock;
    length_ += bytes.size();
    if (waiting > 0) {
        const std::size_t added = std::min(bytes.size(), kBlock - waiting);
        std::memcpy(rest_.data() + waiting, bytes.data(), added);
        bytes.remove_prefix(added);
        if (waiting + added < kBlock) {
            return;
        }
        takeBlock(lanes_, rest_.data());
    }
    for (; bytes.size() >= kBlock; bytes.remove_prefix(kBlock)) {
        takeBlock(lanes_, bytes.data());
    }
    std::copy(bytes.begin(), bytes.end(), rest_.begin());
}

ContentDigest::Value ContentDigest::value() const {
    Value lanes = lanes_;
    std::array<char, kBlock> last{};
    std::copy_n(rest_.begin(), length_ % kBlock, last.begin());
    takeBlock(lanes, last.data());
    lanes[0] = taken(lanes[0], length_);
    // Each step can be undone, so that different lanes stay different.
    constexpr int kRounds = 3;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
            lanes[lane] += stirred(lanes[(lane + 1) % lanes.size()]);
        }
    }
    return lanes;
}

ContentDigest::Value ContentDigest::of(std::string_view bytes) {
    ContentDigest digest;
    digest.update(bytes);
    return digest.value();
}

ErrnoOr<ContentDigest::Value> ContentDigest::ofFile(int descriptor) {
    constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
    ContentDigest digest;
    for (off_t offset = 0;;) {
        const ssize_t got = pread(descriptor, buffer.get(), kBufferSize, offset);
        if (got == 0) {
            return digest.value();
        }
        if (got > 0) {
            digest.update({buffer.get(), static_cast<std::size_t>(got)});
            offset += got;
        } else if (errno != EINTR) {
            return Errno{errno};
        }
    }
}

}  // namespace vornic::platform
