// Values in both directions: bytes to text, text to bytes, and the numbers in texts.
//
// Input: the type, the coefficient, for coefficient 255 its four bytes, then the field's bytes, which are the
// text as well.
#include "VarkelCore/src/value_text.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "VarkelCore/src/str_parser.h"
#include "fuzz/input.h"
#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/Platform/src/text_number.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using varkel::BytesToText;
using varkel::ValueFault;

struct Type {
  const char* name;
  std::size_t width;  ///< bytes that its codec sends; 0: can't be sent
  bool exact;         ///< what is shown, sent again, gives the same bytes
};
constexpr std::array<Type, 18> kTypes = {{{"IP", 4, true},
                                          {"MAC", 6, false},  // shown in hexadecimal, entered in decimal
                                          {"HWVER", 0, false},
                                          {"SWVER_YMD", 0, false},
                                          {"string", 0, false},
                                          {"uint8", 1, true},
                                          {"uint16", 2, true},
                                          {"uint32", 4, false},  // only values below 1 can be sent
                                          {"uint64", 8, false},
                                          {"int8", 1, true},
                                          {"int16", 2, true},
                                          {"int32", 4, false},  // goes through a float
                                          {"int64", 8, false},
                                          {"float32", 4, false},  // shown with two decimals
                                          {"double", 8, false},
                                          {"DT", 0, false},
                                          {"raw", 0, false},
                                          {"bool", 0, false}}};
constexpr std::array<float, 10> kCoefficients = {1.0F,
                                                 0.1F,
                                                 0.01F,
                                                 0.5F,
                                                 2.0F,
                                                 0.0F,
                                                 -1.0F,
                                                 1e-38F,
                                                 std::numeric_limits<float>::infinity(),
                                                 std::numeric_limits<float>::quiet_NaN()};

std::string ShownText(const Type& type, Bytes bytes, float coefficient) {
  const varkel::ValueText shown = BytesToText(type.name, bytes, coefficient);
  Require(shown.fault == ValueFault::kNone || shown.text.empty(), "a fault shows nothing");
  Require(!bytes.empty() || shown.fault != ValueFault::kNone, "no bytes are no value");
  Require(shown.text.size() <= 400 + 4 * bytes.size(), "a text is not much longer than its bytes");
  Require(type.width == 0 || bytes.size() != type.width || shown.fault == ValueFault::kNone,
          "a field of its type's width can be shown");
  return shown.text;
}

std::optional<Vector> SentBytes(const Type& type, const std::string& text, float coefficient) {
  const auto codec = varkel::MakeStrParser(type.name);
  Require((codec != nullptr) == (type.width > 0 || std::string_view(type.name) == "raw"), "codecs by name");
  if (!codec) return std::nullopt;
  try {
    Vector bytes = codec->ParseToBytes(text, coefficient);
    Require(bytes.size() == type.width, "a value has its type's width");
    return bytes;
  } catch (const std::invalid_argument& refusal) {
    Require(std::string_view(refusal.what()).find("Parser: ") != std::string_view::npos,
            "a refusal names its codec");
    return std::nullopt;
  }
}

// What is shown, entered again: the same, or what rounding leaves of it.
void FromBytes(const Type& type, Bytes bytes, float coefficient) {
  const std::string shown = ShownText(type, bytes, coefficient);
  if (type.width == 0 || bytes.size() != type.width) return;
  const auto sent = SentBytes(type, shown, 1.0F);
  if (type.exact && coefficient == 1.0F) {
    Require(sent && Same(*sent, bytes), "what is shown can be sent again");
  }
  const std::string_view name = type.name;
  if (sent && (name == "float32" || name == "double")) {
    Require(ShownText(type, *sent, 1.0F) == shown || std::abs(coefficient) != 1.0F, "a shown number stands");
  }
}

// What is entered and accepted, shown and entered again: the same bytes.
void FromText(const Type& type, const std::string& text, float coefficient) {
  const auto sent = SentBytes(type, text, coefficient);
  if (!sent || type.width == 0) return;
  const std::string shown = ShownText(type, *sent, 1.0F);
  if (type.exact) {
    const auto again = SentBytes(type, shown, 1.0F);
    Require(again && *again == *sent, "what was sent is shown as it is");
  }
}

// Fields of view: angles that came go out as the same bytes.
void FieldsOfView(Bytes reply, float degrees) {
  quarn::lidar::FovAngles starts{};
  quarn::lidar::FovAngles ends{};
  const int count = quarn::lidar::DecodeMultiFov(reply, starts, ends);
  const Vector sent = quarn::lidar::EncodeChannelFov(1, starts);
  for (std::size_t i = 0; std::cmp_less(i, count); ++i) {
    Require(Same(Bytes(sent).subspan(1 + 2 * i, 2), reply.subspan(1 + 4 * i, 2)), "an angle stands");
  }
  starts.fill(degrees);
  Require(quarn::lidar::EncodeChannelFov(1, starts).size() == 11, "any angle can be sent");
}

// ---- Numbers in texts, as the standard library reads them

template <typename Read>
auto Outcome(Read read, std::string& refusal) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (const std::invalid_argument&) {
    refusal = "invalid";
  } catch (const std::out_of_range&) {
    refusal = "out of range";
  }
  return std::nullopt;
}

template <typename T, typename Read, typename Standard>
void CompareReal(Read read, Standard standard) {
  std::string refusal;
  std::string standard_refusal;
  const std::optional<T> value = Outcome(read, refusal);
  const std::optional<T> expected = Outcome(standard, standard_refusal);
  // The standard library refuses numbers that lose digits near zero; here they are numbers.
  if (value && !expected && std::abs(*value) < std::numeric_limits<T>::min()) return;
  Require(refusal == standard_refusal, "a text is a number for both");
  Require(!value || *value == *expected || (std::isnan(*value) && std::isnan(*expected)),
          "a text is the same number for both");
}

void Numbers(const std::string& text) {
  using namespace quarn::lidar;
  for (const int base : {0, 10, 16}) {
    std::string refusal;
    std::string standard_refusal;
    const auto value = Outcome([&] { return TextToInt(text, base); }, refusal);
    const auto expected = Outcome([&] { return std::stoi(text, nullptr, base); }, standard_refusal);
    Require(value == expected && refusal == standard_refusal, "a text is the same integer for both");
  }
  CompareReal<float>([&] { return TextToFloat(text); }, [&] { return std::stof(text); });
  CompareReal<double>([&] { return TextToDouble(text); }, [&] { return std::stod(text); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const Type& type = kTypes.at(input.Byte() % kTypes.size());
  const std::uint8_t choice = input.Byte();
  const float coefficient = choice == 0xFF ? std::bit_cast<float>(input.Number<std::uint32_t>())
                                           : kCoefficients.at(choice % kCoefficients.size());
  const Bytes bytes = input.Rest();
  const std::string text(bytes.begin(), bytes.end());
  FromBytes(type, bytes.first(std::min<std::size_t>(bytes.size(), 64)), coefficient);
  FromText(type, text, coefficient);
  FieldsOfView(bytes, coefficient);
  Numbers(text);
  return 0;
}
