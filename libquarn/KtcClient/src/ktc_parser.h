#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quarn::lidar {

/// The positions of a frame's fields; offsets and sizes in bytes. Multi-byte fields are big-endian.
struct KtcLayout {
  std::size_t header_size;
  std::size_t cmd;             ///< u8
  std::size_t return_code;     ///< u8
  std::size_t payload_length;  ///< u32
};

/// The longest header of the frame versions.
inline constexpr std::size_t kMaxKtcHeaderSize = 12;

/// The data bytes of a file-stream piece (the last one may hold fewer), and the size of the header before
/// them.
inline constexpr std::size_t kFilePieceSize = 1024;
inline constexpr std::size_t kFilePieceHeaderSize = 16;

/// Builds and describes the frames of one protocol version. Its only state is the constant header template,
/// the header of a request with command 0 and no payload, so it is thread-safe.
class GeneralKtcParser {
 public:
  virtual ~GeneralKtcParser() = default;
  GeneralKtcParser(const GeneralKtcParser&) = delete;
  GeneralKtcParser& operator=(const GeneralKtcParser&) = delete;

  /// Sets `frame` to the request frame for `payload`, which must not point into `frame`. Always true.
  virtual bool KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                               std::uint8_t cmd) const = 0;

  /// Version 1.0 copies `length` bytes at `offset` from `in` to `out`; false, with `out` unchanged, if offset
  /// + length (in 32 bits) is past the end of `in`. Any other range outside `in` gives an empty `out`.
  /// Version 2.0 depends on `status` alone. `in` and `out` may be the same vector.
  virtual bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                               std::int32_t offset, std::int32_t length,
                               std::vector<std::uint8_t>& out) const = 0;

  /// Appends to `frames` the request frames that carry `file` in numbered, CRC-protected pieces. Only version
  /// 1.0 has pieces: other versions append nothing. False if a frame can't be built; the frames before it are
  /// kept.
  virtual bool KtcFilestreamSend(std::span<const std::uint8_t> file, std::uint8_t cmd,
                                 std::vector<std::vector<std::uint8_t>>& frames) const;

  // The contents of the header template.
  virtual std::uint8_t GetHeaderIdentifier0() const = 0;
  virtual std::uint8_t GetHeaderIdentifier1() const = 0;
  virtual std::size_t GetHeaderSize() const = 0;
  virtual std::uint8_t GetReturnCode() const = 0;
  virtual std::uint8_t GetCmd() const = 0;
  virtual std::uint32_t GetPayloadLength() const = 0;

  const KtcLayout& layout() const { return layout_; }

 protected:
  using HeaderTemplate = std::array<std::uint8_t, kMaxKtcHeaderSize>;

  GeneralKtcParser(const KtcLayout& layout, const HeaderTemplate& header)
      : layout_(layout), header_template_(header) {}

  std::span<const std::uint8_t> header_template() const {
    return std::span(header_template_).first(layout_.header_size);
  }
  void Encode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
              std::uint8_t cmd) const;

 private:
  const KtcLayout layout_;
  const HeaderTemplate header_template_;
};

/// Version 1.0: "G" "t", command, return code, u32 payload length.
class Ktc_1_0_parser : public GeneralKtcParser {
 public:
  Ktc_1_0_parser();
  bool KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                       std::uint8_t cmd) const override;
  bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                       std::int32_t offset, std::int32_t length,
                       std::vector<std::uint8_t>& out) const override;
  bool KtcFilestreamSend(std::span<const std::uint8_t> file, std::uint8_t cmd,
                         std::vector<std::vector<std::uint8_t>>& frames) const override;
  std::uint8_t GetHeaderIdentifier0() const override;
  std::uint8_t GetHeaderIdentifier1() const override;
  std::size_t GetHeaderSize() const override;
  std::uint8_t GetReturnCode() const override;
  std::uint8_t GetCmd() const override;
  std::uint32_t GetPayloadLength() const override;
};

/// Version 2.0: "W" "u", protocol byte 1, command, return code, 3 reserved bytes, u32 payload length.
class Ktc_2_0_parser : public GeneralKtcParser {
 public:
  Ktc_2_0_parser();
  bool KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                       std::uint8_t cmd) const override;
  bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                       std::int32_t offset, std::int32_t length,
                       std::vector<std::uint8_t>& out) const override;
  std::uint8_t GetHeaderIdentifier0() const override;
  std::uint8_t GetHeaderIdentifier1() const override;
  std::size_t GetHeaderSize() const override;
  std::uint8_t GetReturnCode() const override;
  std::uint8_t GetCmd() const override;
  std::uint32_t GetPayloadLength() const override;
};

/// Owns the parser for a protocol version: 1 or 2. For any other version there is no parser, and the
/// operations return false.
class KtcParser {
 public:
  explicit KtcParser(std::uint8_t version);
  virtual ~KtcParser() = default;
  KtcParser(const KtcParser&) = delete;
  KtcParser& operator=(const KtcParser&) = delete;

  bool KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                       std::uint8_t cmd) const;
  bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                       std::int32_t offset, std::int32_t length, std::vector<std::uint8_t>& out) const;
  bool KtcFilestreamSend(std::span<const std::uint8_t> file, std::uint8_t cmd,
                         std::vector<std::vector<std::uint8_t>>& frames) const;

  /// Null if the version is unknown.
  const GeneralKtcParser* parser() const { return parser_.get(); }
  std::uint8_t version() const { return version_; }

 private:
  const std::unique_ptr<const GeneralKtcParser> parser_;
  const std::uint8_t version_;
};

}  // namespace quarn::lidar
