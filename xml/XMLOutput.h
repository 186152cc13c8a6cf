#ifndef VORNIC_XML_XML_OUTPUT_H
#define VORNIC_XML_XML_OUTPUT_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "xml/XMLDocument.h"

namespace vornic {

/// A line end and four blanks for each level, down to level 64 and no deeper, so that indentation
/// does not grow with the square of the depth.
[[nodiscard]] std::string_view xmlLineBeginning(std::size_t depth);

/// Collects what is written and hands it to a sink in large pieces. Once the sink has stopped it,
/// everything else is dropped.
class XMLOutput {
  public:
    explicit XMLOutput(const XMLSink& sink)
        : sink_(sink), buffer_(std::make_unique_for_overwrite<char[]>(kSize)) {}

    void put(char c) {
        if (used_ == kSize) {
            flush();
        }
        buffer_[used_++] = c;
    }
    void put(std::string_view piece) {
        if (piece.size() > kSize - used_) {
            putLong(piece);
            return;
        }
        std::memcpy(buffer_.get() + used_, piece.data(), piece.size());
        used_ += piece.size();
    }
    /// Writes a C string of which nobody knows the length yet; meant for short ones, such as names.
    void putName(const char* name) {
        for (; *name != '\0'; ++name) {
            put(*name);
        }
    }
    /// Writes text with its markup characters escaped. Control characters that XML forbids are left
    /// out.
    void putText(const char* text);
    /// The same for an attribute value in double quotes, with tabs and line ends as references.
    void putValue(const char* value);
    /// Writes one character of white space as a reference.
    void putReference(char space);

    /// Hands over what has been collected.
    void flush();
    [[nodiscard]] bool stopped() const { return stopped_; }

  private:
    static constexpr std::size_t kSize = std::size_t{256} * 1024;

    void putLong(std::string_view piece);
    void putEscape(char c);

    const XMLSink& sink_;
    std::unique_ptr<char[]> buffer_;
    std::size_t used_ = 0;
    bool stopped_ = false;
};

}  // namespace vornic

#endif
