#ifndef VORNIC_XML_TEXT_SURVEY_H
#define VORNIC_XML_TEXT_SURVEY_H

#include <array>
#include <cstddef>
#include <string_view>

#include "platform/files/ContentsWatcher.h"

namespace vornic {

/// What is known of the characters in a text that XML forbids.
enum class XMLForbidden {
    unknown,
    none,
};

/// One look at bytes, in pieces, that tells whether they are UTF-8 and whether XML forbids a
/// character among them (XML 1.0, section 2.2). As fast as memory. One thread.
class TextSurvey final : public platform::ContentsWatcher {
  public:
    TextSurvey() = default;
    /// Of bytes that are all there.
    explicit TextSurvey(std::string_view bytes) { take(bytes); }

    void begin() override { *this = TextSurvey(); }
    /// In which pieces the bytes come makes no difference.
    void take(std::string_view piece) override;

    /// Whether the bytes so far are well-formed UTF-8 (RFC 3629), the last character included.
    [[nodiscard]] bool isUTF8() const { return isValid_ && cutLength_ == 0; }
    /// What they hold of forbidden characters. For bytes that are UTF-8.
    [[nodiscard]] XMLForbidden forbidden() const { return forbidden_; }

  private:
    static constexpr std::size_t kLongestCut = 3;

    [[nodiscard]] std::string_view completeCut(std::string_view piece);
    void survey(std::string_view bytes);
    [[nodiscard]] std::size_t takeCharacter(std::string_view bytes);

    bool isValid_ = true;
    XMLForbidden forbidden_ = XMLForbidden::none;
    // The beginning of a character that the last piece ended in.
    std::array<char, kLongestCut> cut_{};
    std::size_t cutLength_ = 0;
};

}  // namespace vornic

#endif
