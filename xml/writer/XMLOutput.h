#ifndef VORNIC_XML_WRITER_XML_OUTPUT_H
#define VORNIC_XML_WRITER_XML_OUTPUT_H

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace vornic {

/// Takes the next piece of a serialised document. @return false to stop the serialisation.
using XMLSink = std::function<bool(std::string_view piece)>;

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

    /// What a new line begins with: a line end and four blanks for each level, down to level 64 and
    /// no deeper, so that indentation does not grow with the square of the depth. Once all the
    /// blanks so far make more than 64 MiB and more than four times of everything else that was
    /// written, no further line has any, so that small markup far inside does not multiply either.
    /// What stands before the line decides this and never its own indentation, so that what was
    /// written is written the same once more.
    /// @param unwritten bytes that come before the line and have not been put yet.
    [[nodiscard]] std::string_view lineBeginning(std::size_t depth, std::size_t unwritten = 0);

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
    // How much has been handed over, and how many of all bytes so far are indentation.
    std::size_t handedOver_ = 0;
    std::size_t blanks_ = 0;
    bool indents_ = true;
    bool stopped_ = false;
};

}  // namespace vornic

#endif
