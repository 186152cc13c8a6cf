#ifndef VORNIC_TESTS_DESKTOP_PROGRAM_WAYLAND_TOKEN_H
#define VORNIC_TESTS_DESKTOP_PROGRAM_WAYLAND_TOKEN_H

#include <string>

namespace vornic::test {

/// Asks a compositor for a token that lets a program come to the front (the protocol
/// xdg-activation, version 1), as a launcher does before it starts one. @param socket of the
/// compositor
/// @return the token; "" when the compositor gives none.
[[nodiscard]] std::string requestActivationToken(const std::string& socket);

}  // namespace vornic::test

#endif
