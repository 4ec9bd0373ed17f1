#include "VarkelCore/src/catalogue/command_text.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace varkel {
namespace {

TEST(CommandText, IsACommandByteOrAFourByteCode) {
  const struct {
    const char* text;
    std::uint8_t code;
    std::optional<std::uint32_t> extended_code;
  } kCases[] = {{"0x21", 0x21, {}},     {"33", 33, {}},        {"010", 8, {}},
                {"300", 300 - 256, {}}, {"0x010", 0xFF, 0x10}, {"0xFF000001", 0xFF, 0xFF000001},
                {"65536", 0xFF, 65536}};
  for (const auto& c : kCases) {
    const Command command = ParseCommandText(c.text);
    EXPECT_EQ(command.code, c.code) << c.text;
    EXPECT_EQ(command.extended_code, c.extended_code) << c.text;
  }
  EXPECT_THROW(ParseCommandText("get"), std::invalid_argument);
  EXPECT_THROW(ParseCommandText(""), std::invalid_argument);
  EXPECT_THROW(ParseCommandText("0x100000000"), std::out_of_range);
  const std::vector<std::uint8_t> payload = {0xAA, 0xBB};
  EXPECT_EQ(RequestPayload(ParseCommandText("0x21"), payload), payload);
  EXPECT_EQ(RequestPayload(ParseCommandText("0x01020304"), payload),
            (std::vector<std::uint8_t>{1, 2, 3, 4, 0xAA, 0xBB}));
}

}  // namespace
}  // namespace varkel
