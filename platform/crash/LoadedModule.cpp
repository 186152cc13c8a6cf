#include "platform/crash/LoadedModule.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <fcntl.h>
#include <unistd.h>

#include "platform/crash/ElfSymbols.h"
#include "platform/files/FileDescriptor.h"

namespace vornic::platform {
namespace {

/// Cuts a file into lines without taking memory. A line that is too long is cut.
class LineReader {
  public:
    explicit LineReader(int descriptor) : descriptor_(descriptor) {}

    bool next() {
        length_ = 0;
        char character = 0;
        bool any = false;
        while (nextCharacter(character)) {
            any = true;
            if (character == '\n') {
                break;
            }
            if (length_ < line_.size()) {
                line_[length_++] = character;
            }
        }
        return any;
    }
    [[nodiscard]] std::string_view line() const { return {line_.data(), length_}; }

  private:
    bool nextCharacter(char& character) {
        if (position_ == filled_) {
            filled_ = readBlock(descriptor_, chunk_.data(), chunk_.size()).length;
            position_ = 0;
        }
        if (position_ == filled_) {
            return false;
        }
        character = chunk_[position_++];
        return true;
    }

    int descriptor_;
    std::size_t position_ = 0;
    std::size_t filled_ = 0;
    std::size_t length_ = 0;
    std::array<char, 2048> chunk_;
    std::array<char, PATH_MAX + 128> line_;
};

/// The number at the front of the text, which is taken off with the character behind it.
std::uintptr_t takeNumber(std::string_view& text) {
    std::uintptr_t number = 0;
    const char* const end = std::from_chars(text.data(), text.data() + text.size(), number, 16).ptr;
    text.remove_prefix(std::min(static_cast<std::size_t>(end - text.data()) + 1, text.size()));
    return number;
}

/// The text up to the next blank, which is taken off with the blanks behind it.
std::string_view takeField(std::string_view& text) {
    const std::string_view field = text.substr(0, text.find(' '));
    text.remove_prefix(field.size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return field;
}

}  // namespace

bool LoadedModule::find(std::uintptr_t address) {
    start_ = end_ = base_ = pathLength_ = 0;
    const FileDescriptor maps(open("/proc/self/maps", O_RDONLY | O_CLOEXEC));
    LineReader lines(maps.get());
    while (maps && lines.next()) {
        take(lines.line());
        if (contains(address)) {
            return true;
        }
    }
    start_ = end_ = 0;
    return false;
}

/// Takes a line in: "5581c0000000-5581c0001000 r-xp 00001000 fe:00 1234    /usr/bin/vornic".
void LoadedModule::take(std::string_view line) {
    start_ = takeNumber(line);
    end_ = takeNumber(line);
    isExecutable_ = takeField(line).find('x') != std::string_view::npos;
    takeField(line);  // The offset in the file,
    takeField(line);  // the device
    takeField(line);  // and the number of the file.
    if (line.empty() || line != path()) {
        base_ = start_;
    }
    pathLength_ = line.copy(path_, PATH_MAX);
    path_[pathLength_] = '\0';
}

std::size_t LoadedModule::findSymbol(std::uintptr_t offset, char* name,
                                     std::size_t capacity) const {
    if (!path().starts_with('/')) {
        return 0;
    }
    const FileDescriptor file(open(path_, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    return file ? findElfSymbol(file.get(), offset, name, capacity) : 0;
}

}  // namespace vornic::platform
