#include "tests/desktop/program/WaylandToken.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vornic::test {

namespace {

constexpr std::string_view kActivation = "xdg_activation_v1";

// The objects of the conversation. The display has the number 1, the others get theirs here.
enum Object : std::uint32_t { display = 1, registry, synced, activation, token };

struct Event {
    std::uint32_t object = 0;
    std::uint32_t code = 0;
    std::vector<std::uint32_t> words;
};

// The text that begins at a word: its length with the zero at its end, then its bytes.
std::string textAt(const Event& event, std::size_t word) {
    if (word >= event.words.size() || event.words[word] == 0 ||
        event.words[word] > (event.words.size() - word - 1) * sizeof(std::uint32_t)) {
        return "";
    }
    return {reinterpret_cast<const char*>(&event.words[word + 1]), event.words[word] - 1};
}

// The wire format of Wayland: words of 32 bits in the machine's order.
class Connection {
  public:
    explicit Connection(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        isOpen_ =
            connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~Connection() { close(socket_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void request(std::uint32_t object, std::uint32_t code, std::vector<std::uint32_t> words = {}) {
        const auto size = static_cast<std::uint32_t>((words.size() + 2) * sizeof(std::uint32_t));
        words.insert(words.begin(), {object, size << 16U | code});
        isOpen_ = isOpen_ && send(socket_, words.data(), size, MSG_NOSIGNAL) == size;
    }
    // @return false when the compositor has hung up.
    bool read(Event& event) {
        std::uint32_t head[2] = {};
        if (!readWords(head, 2)) {
            return false;
        }
        event.object = head[0];
        event.code = head[1] & 0xFFFFU;
        event.words.resize((head[1] >> 16U) / sizeof(std::uint32_t) - 2);
        return readWords(event.words.data(), event.words.size());
    }

  private:
    bool readWords(std::uint32_t* words, std::size_t count) {
        const std::size_t size = count * sizeof(std::uint32_t);
        return isOpen_ &&
               (size == 0 || recv(socket_, words, size, MSG_WAITALL) == static_cast<ssize_t>(size));
    }

    int socket_;
    bool isOpen_ = false;
};

// @return the name that the registry has for the protocol; 0 when it does not have it.
std::uint32_t nameOfActivation(Connection& compositor) {
    compositor.request(display, 1, {registry});
    compositor.request(display, 0, {synced});
    std::uint32_t name = 0;
    for (Event event; compositor.read(event) && event.object != synced;) {
        if (event.object == registry && event.code == 0 && textAt(event, 1) == kActivation) {
            name = event.words[0];
        }
    }
    return name;
}

}  // namespace

std::string requestActivationToken(const std::string& socket) {
    Connection compositor(socket);
    const std::uint32_t name = nameOfActivation(compositor);
    if (name == 0) {
        return "";
    }
    std::vector<std::uint32_t> bound{name, kActivation.size() + 1};
    bound.resize(2 + kActivation.size() / sizeof(std::uint32_t) + 1);
    std::memcpy(&bound[2], kActivation.data(), kActivation.size());
    bound.insert(bound.end(), {1, activation});
    compositor.request(registry, 0, std::move(bound));
    compositor.request(activation, 1, {token});
    constexpr std::uint32_t kCommit = 3;
    compositor.request(token, kCommit);
    const auto isError = [](const Event& event) {
        return event.object == display && event.code == 0;
    };
    for (Event event; compositor.read(event) && !isError(event);) {
        if (event.object == token) {
            return textAt(event, 0);
        }
    }
    return "";
}

}  // namespace vornic::test
