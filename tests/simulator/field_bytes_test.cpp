#include "simulator/src/field_bytes.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "VarkelCore/src/value_text.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel::sim {
namespace {

struct ShownField {
  std::string var_type;
  std::string text;
  std::size_t length;
  float coefficient;
  std::string hex;
};

// Every type, its edges and its odd lengths: the bytes are right, and show as the text they came from.
TEST(FieldBytes, EncodesWhatTheUserInterfaceShows) {
  const std::vector<ShownField> fields = {
      {"IP", "192.168.1.201", 4, 1.0F, "c0 a8 01 c9 "},
      {"MAC", "00:010:1A:FF:05:A0", 6, 1.0F, "00 10 1a ff 05 a0 "},
      {"MAC", "00:010:1A:FF:05:A0", 8, 1.0F, "00 10 1a ff 05 a0 00 00 "},
      {"string", "QN-17", 8, 1.0F, "51 4e 2d 31 37 00 00 00 "},
      {"string", "full", 4, 1.0F, "66 75 6c 6c "},
      {"HWVER", "MAIN 2.10.255.0 (4294967295)", 16, 1.0F, "4d 41 49 4e 00 00 00 00 02 0a ff 00 ff ff ff ff "},
      {"HWVER", "TOP B 12 1.2.3.4 (7)", 16, 1.0F, "54 4f 50 20 42 20 31 32 01 02 03 04 00 00 00 07 "},
      {"SWVER_YMD", "1.2.3.45 (2024-03-09)", 8, 1.0F, "01 02 03 2d 07 e8 03 09 "},
      {"DT", "1 h 0 min 1 s", 4, 1.0F, "00 00 0e 11 "},
      {"DT", "18 h 12 min 15 s", 2, 1.0F, "ff ff "},
      {"uint8", "255", 1, 1.0F, "ff "},
      {"uint16", "258", 2, 1.0F, "01 02 "},
      {"uint16", "129.00", 2, 0.5F, "01 02 "},
      {"uint16", "65.30", 2, 0.1F, "02 8d "},
      {"uint32", "4294967295", 4, 1.0F, "ff ff ff ff "},
      {"uint64", "18446744073709551615", 8, 1.0F, "ff ff ff ff ff ff ff ff "},
      {"uint32", "7", 6, 1.0F, "00 00 00 00 00 07 "},
      {"uint32", "65535", 2, 1.0F, "ff ff "},
      {"int8", "-128", 1, 1.0F, "80 "},
      {"int16", "-2", 2, 1.0F, "ff fe "},
      {"int16", "-1", 1, 1.0F, "ff "},
      {"int16", "-12.50", 2, 0.01F, "fb 1e "},
      {"int32", "2147483647", 4, 1.0F, "7f ff ff ff "},
      {"int64", "-9223372036854775808", 8, 1.0F, "80 00 00 00 00 00 00 00 "},
      {"int32", "-3", 10, 1.0F, "ff ff ff ff ff ff ff ff ff fd "},
      {"float32", "1.00", 4, 1.0F, "3f 80 00 00 "},
      {"float32", "-0.50", 4, 0.5F, "bf 80 00 00 "},
      {"double", "1.00", 8, 1.0F, "3f f0 00 00 00 00 00 00 "},
  };
  for (const ShownField& field : fields) {
    SCOPED_TRACE(field.var_type + " " + field.text);
    const auto bytes = FieldBytes(field.var_type, field.text, field.length, field.coefficient);
    EXPECT_EQ(quarn::lidar::HexLine(bytes), field.hex);
    const ValueText shown = BytesToText(field.var_type, bytes, field.coefficient);
    EXPECT_EQ(shown.fault, ValueFault::kNone);
    EXPECT_EQ(shown.text, field.text);
  }
}

TEST(FieldBytes, GivesZerosForAValueThatIsNotShown) {
  for (const char* type : {"uint16", "string", "IP", "raw", ""}) {
    EXPECT_EQ(FieldBytes(type, "", 3, 1.0F), std::vector<std::uint8_t>(3)) << type;
  }
}

TEST(FieldBytes, RefusesTextsThatDoNotFit) {
  const std::vector<ShownField> fields = {
      {"IP", "192.168.1", 4, 1.0F, {}},
      {"IP", "192.168.1.256", 4, 1.0F, {}},
      {"IP", "192.168..1", 4, 1.0F, {}},
      {"MAC", "00:01:02:03:04", 6, 1.0F, {}},
      {"MAC", "00:01:02:03:04:G5", 6, 1.0F, {}},
      {"MAC", "00:01:02:03:04:05", 5, 1.0F, {}},
      {"string", "longer", 5, 1.0F, {}},
      {"HWVER", "MAIN 2.10.256.0 (1)", 16, 1.0F, {}},
      {"HWVER", "MAIN 2.10.0.0", 16, 1.0F, {}},
      {"HWVER", "MAIN 2.10.0.0 (1)", 12, 1.0F, {}},
      {"HWVER", "MAINBOARD 2.10.0.0 (1)", 16, 1.0F, {}},
      {"SWVER_YMD", "1.2.3.4 (2024-03-256)", 8, 1.0F, {}},
      {"DT", "1 h 60 min 0 s", 4, 1.0F, {}},
      {"DT", "18 h 12 min 16 s", 2, 1.0F, {}},
      {"uint8", "256", 1, 1.0F, {}},
      {"uint8", "-1", 1, 1.0F, {}},
      {"uint8", "1.5", 1, 1.0F, {}},
      {"uint16", "256", 1, 1.0F, {}},
      {"uint8", "12 ", 1, 1.0F, {}},
      {"uint8", "127.80", 1, 0.5F, {}},
      {"int8", "128", 1, 1.0F, {}},
      {"int16", "327.68", 2, 0.01F, {}},
      {"uint8", "1", 1, 0.0F, {}},
      {"uint64", "18446744073709551616.00", 8, 0.5F, {}},
      {"float32", "one", 4, 1.0F, {}},
      {"float32", "1.00", 8, 1.0F, {}},
      {"double", "inf", 8, 1.0F, {}},
      {"bool", "1", 1, 1.0F, {}},
  };
  for (const ShownField& field : fields) {
    EXPECT_THROW(FieldBytes(field.var_type, field.text, field.length, field.coefficient),
                 std::invalid_argument)
        << field.var_type << " " << field.text;
  }
}

}  // namespace
}  // namespace varkel::sim
