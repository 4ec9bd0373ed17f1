// Values in both directions: bytes to text, text to bytes, and the numbers in texts.
//
// Input: the type, the coefficient, for coefficient 255 its four bytes, then the field's bytes, which are the
// text as well.
#include "VarkelCore/src/values/value_text.h"

#include <bit>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "VarkelCore/src/values/str_parser.h"
#include "fuzz/input.h"
#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/Platform/src/text_number.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using varkel::ValueFault;

struct Type {
  const char* name;
  std::size_t width;  ///< bytes that its codec sends; 0: can't be sent
  bool exact;         ///< what is shown, sent again, gives the same bytes
};
constexpr Type kTypes[] = {{"IP", 4, true},         {"MAC", 6, false},     {"HWVER", 0, false},
                           {"SWVER_YMD", 0, false}, {"string", 0, false},  {"uint8", 1, true},
                           {"uint16", 2, true},     {"uint32", 4, false},  {"uint64", 8, false},
                           {"int8", 1, true},       {"int16", 2, true},    {"int32", 4, false},
                           {"int64", 8, false},     {"float32", 4, false}, {"double", 8, false},
                           {"DT", 0, false},        {"raw", 0, false},     {"bool", 0, false}};
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kCoefficients[] = {1, 0.1F, 0.01F, 0.5F, 2, 0, -1, 1e-38F, kInfinity, kNoNumber};

std::optional<Vector> SentBytes(const Type& type, const std::string& text, float coefficient) {
  const auto codec = varkel::MakeStrParser(type.name);
  Require((codec != nullptr) == (type.width > 0 || std::string_view(type.name) == "raw"), "codecs by name");
  if (!codec) return std::nullopt;
  try {
    Vector bytes = codec->ParseToBytes(text, coefficient);
    Require(bytes.size() == type.width, "a value has its type's width");
    return bytes;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

// What is shown, entered again, is the same.
void ShowAndSend(const Type& type, Bytes bytes, float coefficient) {
  const varkel::ValueText shown = varkel::BytesToText(type.name, bytes, coefficient);
  Require(shown.fault == ValueFault::kNone || shown.text.empty(), "a fault shows nothing");
  Require(shown.text.size() <= 400 + 4 * bytes.size(), "a text is not much longer than its bytes");
  if (type.width == 0 || bytes.size() != type.width) return;
  Require(shown.fault == ValueFault::kNone, "a field of its type's width can be shown");
  const auto sent = SentBytes(type, shown.text, 1.0F);
  Require(!type.exact || coefficient != 1.0F || (sent && Same(*sent, bytes)),
          "what is shown can be sent again");
}

// Fields of view: angles that came go out as the same bytes.
void FieldsOfView(Bytes reply) {
  quarn::lidar::FovAngles starts{};
  quarn::lidar::FovAngles ends{};
  const auto count = static_cast<std::size_t>(quarn::lidar::DecodeMultiFov(reply, starts, ends));
  const Vector sent = quarn::lidar::EncodeChannelFov(1, starts);
  for (std::size_t i = 0; i < count; ++i) {
    Require(Same(Bytes(sent).subspan(1 + 2 * i, 2), reply.subspan(1 + 4 * i, 2)), "an angle stands");
  }
}

template <typename Read>
std::string Outcome(Read read) {
  try {
    return std::to_string(read());
  } catch (const std::invalid_argument&) {
    return "invalid";
  } catch (const std::out_of_range&) {
    return "out of range";
  }
}

// As the standard library reads them in the "C" locale. Reals near zero that lose digits it refuses, while
// here they are numbers.
void Numbers(const std::string& text) {
  for (const int base : {0, 10, 16}) {
    Require(Outcome([&] { return quarn::lidar::TextToInt(text, base); }) ==
                Outcome([&] { return std::stoi(text, nullptr, base); }),
            "a text is the same integer for both");
  }
  const std::string real = Outcome([&] { return quarn::lidar::TextToDouble(text); });
  const std::string standard = Outcome([&] { return std::stod(text); });
  Require(real == standard || (standard == "out of range" && (real == "0.000000" || real == "-0.000000")),
          "a text is the same number for both");
  Outcome([&] { return quarn::lidar::TextToFloat(text); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const Type& type = kTypes[input.Byte() % std::size(kTypes)];
  const std::uint8_t choice = input.Byte();
  const float coefficient = choice == 0xFF ? std::bit_cast<float>(input.Number<std::uint32_t>())
                                           : kCoefficients[choice % std::size(kCoefficients)];
  const Bytes bytes = input.Rest();
  const std::string text(bytes.begin(), bytes.end());
  ShowAndSend(type, bytes.first(std::min<std::size_t>(bytes.size(), 64)), coefficient);
  if (const auto sent = SentBytes(type, text, coefficient)) ShowAndSend(type, *sent, 1.0F);
  FieldsOfView(bytes);
  Require(quarn::lidar::EncodeChannelFov(1, {coefficient}).size() == 11, "any angle can be sent");
  Numbers(text);
  return 0;
}
