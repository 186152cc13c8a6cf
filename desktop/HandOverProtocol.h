#ifndef VORNIC_DESKTOP_HAND_OVER_PROTOCOL_H
#define VORNIC_DESKTOP_HAND_OVER_PROTOCOL_H

/// What two programs say to each other when one hands files to the other. The one that has files
/// says their paths, each ended by `kEndOfPath`, and `kEndOfPath` once more. Before them may stand
/// what lets the other one come to the front: `kActivation` and the token that the desktop gave
/// (XDG activation, or a startup notification), ended in the same way. The other one says
/// `kHeard` at once and every second while it cannot tell yet whether it opens anything, then
/// `kReady`. Up to here the first one takes everything back by hanging up. With `kCommit` it leaves
/// the files to the other one, which opens them and says `kTaken`. Who does not want them hangs up,
/// and the first one opens its files itself.
namespace vornic::hand_over {

inline constexpr char kEndOfPath = '\0';
inline constexpr char kActivation = '@';
inline constexpr char kHeard = '.';
inline constexpr char kReady = '?';
inline constexpr char kCommit = '!';
inline constexpr char kTaken = '+';

}  // namespace vornic::hand_over

#endif
