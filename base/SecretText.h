#ifndef VORNIC_BASE_SECRET_TEXT_H
#define VORNIC_BASE_SECRET_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vornic::platform {

/// A text that nobody is to see, such as a password. It lies in memory of its own that is neither
/// swapped out (as far as the system allows), nor part of a core dump, nor copied into a forked
/// child, and that is wiped when the object goes. It can be moved, not copied.
class SecretText {
  public:
    SecretText() = default;
    /// Copies the text; the one that it was copied from is the caller's to wipe.
    SecretText(std::string_view text);                                    // NOLINT: by design
    SecretText(const char* text) : SecretText(std::string_view(text)) {}  // NOLINT: by design
    /// Takes the text over and wipes the string that held it.
    SecretText(std::string&& text);  // NOLINT: by design
    ~SecretText() { wipe(); }
    SecretText(SecretText&& other) noexcept;
    SecretText& operator=(SecretText&& other) noexcept;
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;

    [[nodiscard]] std::string_view view() const { return {bytes_, length_}; }
    /// Overwrites the text and gives its memory back; it is empty from then on.
    void wipe();

  private:
    char* bytes_ = nullptr;
    std::size_t length_ = 0;
    std::size_t mapped_ = 0;
};

}  // namespace vornic::platform

#endif
