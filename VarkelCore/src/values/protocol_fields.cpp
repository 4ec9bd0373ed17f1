#include "VarkelCore/src/values/protocol_fields.h"

#include <algorithm>
#include <string_view>

#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/serial_frame.h"

namespace varkel {
namespace {

using namespace quarn::lidar;
using ByteView = std::span<const std::uint8_t>;

/// Extracts fields from a payload one after the other; missing ones are left out.
class Cutter {
 public:
  explicit Cutter(ByteView payload, std::size_t place = 0) : payload_(payload), place_(place) {}

  std::size_t left() const { return payload_.size() - std::min(place_, payload_.size()); }

  ByteView Take(const std::string& name, std::size_t size, const std::string& text = {},
                const std::string& unit = {}) {
    if (size == 0 || left() < size) return {};
    const ByteView raw = payload_.subspan(place_, size);
    fields_.push_back({{}, name, text, {}, unit, place_, {raw.begin(), raw.end()}});
    place_ += size;
    return raw;
  }
  template <std::unsigned_integral T>
  T Number(const std::string& name) {
    if (left() < sizeof(T)) return 0;
    const T value = LoadBigEndian<T>(payload_, place_);
    Take(name, sizeof(T), std::to_string(value));
    return value;
  }
  /// A u16 in tenths of a degree.
  void Angle(const std::string& name) {
    if (left() < 2) return;
    const unsigned tenths = LoadBigEndian<std::uint16_t>(payload_, place_);
    Take(name, 2, std::to_string(tenths / 10) + "." + std::to_string(tenths % 10), "deg");
  }
  void Check(const std::string& name, bool passes, std::size_t size) {
    Take(name, size, passes ? "right" : "wrong");
  }

  std::vector<DecodedField> fields() { return std::move(fields_); }

 private:
  const ByteView payload_;
  std::size_t place_;
  std::vector<DecodedField> fields_;
};

bool StartsWith(ByteView bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

/// A piece of a file is a complete KTC request inside the payload, after a four-byte code if there is one.
std::size_t FilePieceAt(ByteView request) {
  static const Ktc_1_0_parser kParser;
  for (const std::size_t place : {std::size_t{0}, std::size_t{4}}) {
    const std::size_t least = place + kParser.GetHeaderSize() + kFilePieceHeaderSize;
    if (request.size() > least && request[place] == kParser.GetHeaderIdentifier0() &&
        request[place + 1] == kParser.GetHeaderIdentifier1() &&
        LoadBigEndian<std::uint32_t>(request, place + kParser.layout().payload_length) ==
            request.size() - place - kParser.GetHeaderSize()) {
      return place;
    }
  }
  return request.size();
}

std::vector<DecodedField> FilePiece(ByteView request, std::size_t place) {
  Cutter cutter(request, place);
  cutter.Take("inner header", Ktc_1_0_parser().GetHeaderSize());
  cutter.Take("reserved", 4);
  cutter.Number<std::uint32_t>("piece");
  cutter.Number<std::uint32_t>("pieces");
  const ByteView data = request.last(cutter.left() - 4);
  const auto crc = LoadBigEndian<std::uint32_t>(request, request.size() - cutter.left());
  cutter.Check("CRC", crc == Crc32Mpeg2(data), 4);
  cutter.Take("data", data.size(), std::to_string(data.size()) + " bytes");
  return cutter.fields();
}

std::vector<DecodedField> Tunnelled(ByteView payload, bool is_reply) {
  std::vector<DecodedField> fields = SerialFrameFields(payload.subspan(kTunnelPrefix.size()), is_reply);
  for (DecodedField& field : fields) field.place += kTunnelPrefix.size();
  fields.insert(fields.begin(),
                {{}, "to the serial line", {}, {}, {}, 0, {kTunnelPrefix.begin(), kTunnelPrefix.end()}});
  return fields;
}

}  // namespace

std::string ProtocolCommandName(std::uint8_t command, ByteView request) {
  if (CarriesSerialFrame(command, request)) return SerialFrameName(request.subspan(kTunnelPrefix.size()));
  if (command == kWriteChannelFovCmd) return "write the field of view";
  if (command == kQueryMultiFovCmd) return "read the field of view";
  return FilePieceAt(request) < request.size() ? "piece of a file" : std::string();
}

std::vector<DecodedField> ProtocolRequestFields(std::uint8_t command, ByteView request) {
  if (CarriesSerialFrame(command, request)) return Tunnelled(request, false);
  if (const std::size_t place = FilePieceAt(request); place < request.size()) {
    return FilePiece(request, place);
  }
  if (command != kWriteChannelFovCmd) return {};
  Cutter cutter(request);
  cutter.Number<std::uint8_t>("channel");
  for (std::size_t i = 1; i <= kMaxFovs; ++i) cutter.Angle("start " + std::to_string(i));
  return cutter.fields();
}

std::vector<DecodedField> ProtocolReplyFields(std::uint8_t command, ByteView reply) {
  if (CarriesSerialFrame(command, reply)) return Tunnelled(reply, true);
  if (command != kQueryMultiFovCmd) return {};
  Cutter cutter(reply);
  const std::size_t count = std::min<std::size_t>(cutter.Number<std::uint8_t>("count"), kMaxFovs);
  for (std::size_t i = 1; i <= count; ++i) {
    cutter.Angle("start " + std::to_string(i));
    cutter.Angle("end " + std::to_string(i));
  }
  return cutter.fields();
}

std::vector<DecodedField> SerialFrameFields(ByteView frame, bool is_reply) {
  constexpr std::size_t kNonce = 4;
  constexpr std::size_t kCrc = 4;
  constexpr std::size_t kTrailer = 2;
  const bool is_firmware = StartsWith(frame, SerialTag(ReplyKind::kOta));
  if (!is_firmware && !StartsWith(frame, SerialTag(ReplyKind::kCommand))) return {};
  Cutter cutter(frame);
  cutter.Take("tag", kSerialTagSize,
              std::string(SerialTag(is_firmware ? ReplyKind::kOta : ReplyKind::kCommand)));
  if (is_firmware && !is_reply) {
    cutter.Take("reserved", 3);
    cutter.Number<std::uint8_t>("frame type");
    cutter.Number<std::uint32_t>("first value");
    cutter.Number<std::uint32_t>("second value");
    const auto size = cutter.Number<std::uint32_t>("data length");
    cutter.Take("data", size);
    cutter.Take("CRC", kCrc);
    cutter.Take("trailer", kTrailer);
    return cutter.fields();
  }
  cutter.Number<std::uint8_t>("length");
  cutter.Number<std::uint8_t>("code");
  const std::size_t rest = kNonce + kCrc + kTrailer;
  if (cutter.left() < rest) return cutter.fields();
  const std::size_t contents = cutter.left() - rest;
  if (!is_firmware && contents > 0) {
    cutter.Number<std::uint8_t>("item");
    cutter.Take("contents", contents - 1);
  } else if (contents > 0) {
    cutter.Take("contents", contents - 1);
    cutter.Number<std::uint8_t>("status");
  }
  cutter.Take("nonce", kNonce);
  const ReplyKind kind = is_firmware ? ReplyKind::kOta : ReplyKind::kCommand;
  if (is_reply) {
    cutter.Check("CRC", CheckReply(kind, frame), kCrc);
  } else {
    cutter.Take("CRC", kCrc);
  }
  cutter.Take("trailer", kTrailer);
  return cutter.fields();
}

std::string SerialFrameName(ByteView frame) {
  constexpr std::size_t kCode = kSerialTagSize + 1;
  constexpr std::size_t kFrameType = kSerialTagSize + 3;
  constexpr std::uint8_t kGet = 2;
  if (StartsWith(frame, SerialTag(ReplyKind::kOta)) && frame.size() > kFrameType) {
    return "firmware frame " + std::to_string(frame[kFrameType]);
  }
  if (!StartsWith(frame, SerialTag(ReplyKind::kCommand)) || frame.size() <= kCode + 1) return {};
  return (frame[kCode] == kGet ? "get item " : "set item ") + std::to_string(frame[kCode + 1]);
}

}  // namespace varkel
