#ifndef VORNIC_PLATFORM_FILES_DIGEST_H
#define VORNIC_PLATFORM_FILES_DIGEST_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

struct evp_md_ctx_st;

namespace vornic::platform {

/// The message digests of RFC 1321 (MD5) and FIPS 180-4 (SHA-1, SHA-256, SHA-512).
enum class DigestKind { md5, sha1, sha256, sha512 };

/// A digest that is fed piece by piece. A copy is a digest of its own that has been fed the same
/// bytes. One thread at a time.
class Digest {
  public:
    /// A digest of no bytes yet. @return nothing when memory is short or the machine's policy
    /// forbids the kind.
    [[nodiscard]] static std::optional<Digest> create(DigestKind kind);
    Digest(const Digest& other);
    Digest& operator=(const Digest& other);
    Digest(Digest&&) noexcept = default;
    Digest& operator=(Digest&&) noexcept = default;
    ~Digest() = default;

    [[nodiscard]] DigestKind kind() const { return kind_; }
    void update(const char* bytes, std::size_t count);
    /// The digest of all bytes so far: 16, 20, 32 or 64 raw bytes. The object may be fed on.
    /// @return nothing when the library failed to digest or to copy.
    [[nodiscard]] std::optional<std::string> value() const;

  private:
    struct Release {
        void operator()(evp_md_ctx_st* context) const;
    };
    using Context = std::unique_ptr<evp_md_ctx_st, Release>;

    Digest(DigestKind kind, Context context) : kind_(kind), context_(std::move(context)) {}
    [[nodiscard]] static Context duplicate(const evp_md_ctx_st* context);

    DigestKind kind_;
    /// Null once the library has failed.
    Context context_;
};

}  // namespace vornic::platform

#endif
