#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quarn::lidar {

/// The frames of a small sensor on a serial line: commands open with "$LDCMD,", firmware data with "$LDOTA,".
/// Requests and replies end in a CRC-32/MPEG-2 and the trailer EE FF. docs/serial-protocol.md shows them byte
/// by byte. Everything here is pure: no I/O, no state.

/// The replies to the two kinds of frame differ in the byte order of their CRC.
enum class ReplyKind : std::uint8_t {
  kCommand = 1,  ///< least significant byte first
  kOta = 2,      ///< most significant byte first
};

inline constexpr std::size_t kSerialTagSize = 7;
/// The smallest reply, without contents, and the largest that its length byte can describe.
inline constexpr std::size_t kMinReplySize = 19;
inline constexpr std::size_t kMaxReplySize = kMinReplySize + 255;
/// The most bytes that one read of a reply takes.
inline constexpr std::size_t kMaxReplyBlock = 1500;

/// Offsets in a reply's body (length byte, echoed command code, rest).
inline constexpr std::size_t kBodyLength = 0;
inline constexpr std::size_t kBodyCommand = 1;

/// "$LDCMD," or "$LDOTA,".
std::string_view SerialTag(ReplyKind kind);

/// A fresh random number, so that no two frames of the same command are equal.
std::uint32_t FreshNonce();

/// A command request. Its length byte counts the command code and the payload, modulo 256.
std::vector<std::uint8_t> EncodeCommandFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                             std::uint32_t nonce);

/// A firmware request; the meaning of the two values depends on the frame's type (ota_transfer.h).
std::vector<std::uint8_t> EncodeOtaFrame(std::uint8_t type, std::uint32_t first, std::uint32_t second,
                                         std::span<const std::uint8_t> data);

/// A sensor's reply, for simulators and tests. The length byte counts `rest` only.
std::vector<std::uint8_t> EncodeReplyFrame(ReplyKind kind, std::uint8_t code,
                                           std::span<const std::uint8_t> rest, std::uint32_t nonce);

/// Whether the block is one complete reply of that kind: at least 19 bytes, trailer, CRC, and a length byte
/// that counts exactly what follows the command code (a request's counts the command code too). The tag's
/// bytes are not checked: a reply whose first bytes a line garbles after a pause is still accepted.
bool CheckReply(ReplyKind kind, std::span<const std::uint8_t> block);

/// Whether the last bytes are the trailer EE FF.
bool EndsInTrailer(std::span<const std::uint8_t> block);

/// The body of a block that CheckReply has accepted.
std::span<const std::uint8_t> ReplyBody(std::span<const std::uint8_t> block);

/// The size of a reply with this length byte, from its tag to its trailer.
constexpr std::size_t ReplySize(std::uint8_t length) {
  return kMinReplySize + length;
}

}  // namespace quarn::lidar
