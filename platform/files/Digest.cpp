#include "platform/files/Digest.h"

#include <array>

#include <openssl/evp.h>

namespace vornic::platform {
namespace {

const EVP_MD* algorithm(DigestKind kind) {
    switch (kind) {
        case DigestKind::md5:
            return EVP_md5();
        case DigestKind::sha1:
            return EVP_sha1();
        case DigestKind::sha256:
            return EVP_sha256();
        case DigestKind::sha512:
            return EVP_sha512();
    }
    return nullptr;
}

}  // namespace

void Digest::Release::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

std::optional<Digest> Digest::create(DigestKind kind) {
    Context context(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), algorithm(kind), nullptr) != 1) {
        return std::nullopt;
    }
    return Digest(kind, std::move(context));
}

Digest::Context Digest::duplicate(const evp_md_ctx_st* context) {
    Context copy(context != nullptr ? EVP_MD_CTX_new() : nullptr);
    return copy && EVP_MD_CTX_copy_ex(copy.get(), context) == 1 ? std::move(copy) : nullptr;
}

Digest::Digest(const Digest& other)
    : kind_(other.kind_), context_(duplicate(other.context_.get())) {}

Digest& Digest::operator=(const Digest& other) {
    if (this != &other) {
        kind_ = other.kind_;
        context_ = duplicate(other.context_.get());
    }
    return *this;
}

void Digest::update(const char* bytes, std::size_t count) {
    if (context_ && EVP_DigestUpdate(context_.get(), bytes, count) != 1) {
        context_.reset();
    }
}

std::optional<std::string> Digest::value() const {
    const Context copy = duplicate(context_.get());
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned length = 0;
    if (!copy || EVP_DigestFinal_ex(copy.get(), bytes.data(), &length) != 1) {
        return std::nullopt;
    }
    return std::string(bytes.begin(), bytes.begin() + length);
}

}  // namespace vornic::platform
