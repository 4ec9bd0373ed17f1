#include "VarkelCore/src/values/exchange_decoder.h"

#include <gtest/gtest.h>

#include "VarkelCore/src/values/decoded_text.h"
#include "VarkelCore/src/values/logged_exchange.h"
#include "tests/catalogue/table_file.h"
#include "tests/support/protocol_page.h"

namespace varkel {
namespace {

using quarn::test::FromHex;

ExchangeDecoder QuentaDecoder() {
  auto catalogue = std::make_shared<ConfigParser>("./Config/varID/Quenta.csv");
  EXPECT_TRUE(catalogue->ExtractConfigInfo());
  return ExchangeDecoder(std::move(catalogue));
}

/// "name=text@place" of each field; "?" for unknown bytes.
std::string Text(const std::vector<DecodedField>& fields) {
  std::string text;
  for (const DecodedField& field : fields) {
    text += (text.empty() ? "" : ", ") + (field.name.empty() ? "?" : field.name + "=" + FieldText(field)) +
            "@" + std::to_string(field.place);
  }
  return text;
}

TEST(ExchangeDecoder, ExplainsBytesByTableAndProtocol) {
  const struct {
    std::uint8_t command;
    const char* request;
    const char* reply;
    const char* name;
    const char* request_text;
    const char* reply_text;
  } kCases[] = {
      {0x05, "", "02 02 58 01 9c 00 05 42 33 00 00", "read Motor State, Motor Speed and 3 more", "",
       "Motor State=2 (Running)@0, Motor Speed=600 rpm@1, Motor Current=412 mA@3, Motor Phase Error=0.05 "
       "deg@5, "
       "Rotor Temperature=44.75 °C@7"},
      {0x05, "", "02 02 58 01", "read Motor State, Motor Speed and 3 more", "",
       "Motor State=2 (Running)@0, Motor Speed=600 rpm@1, Motor Current=-@3, Motor Phase Error=-@5, "
       "Rotor Temperature=-@7"},
      {0x05, "", "02 02 58 01 9c 00 05 42 33 00 00 aa", "read Motor State, Motor Speed and 3 more", "",
       "Motor State=2 (Running)@0, Motor Speed=600 rpm@1, Motor Current=412 mA@3, Motor Phase Error=0.05 "
       "deg@5, "
       "Rotor Temperature=44.75 °C@7, ?@11"},
      {0x20, "c0 a8 01 0a 09 40", "", "write Destination IP, Destination Port",
       "Destination IP=192.168.1.10@0, Destination Port=2368@4", ""},
      {0x22, "03 00 00 01 31", "", "write Channel Field of View",
       "channel=3@0, start 1=0.0 deg@1, start 2=30.5 deg@3", ""},
      {0xFF, "00 02 24 4c 44 43 4d 44 2c 02 02 07 00 00 00 00 87 f0 31 01 ee ff",
       "00 02 24 4c 44 43 4d 44 2c 03 03 0b 00 00 44 33 22 11 89 05 2b 79 ee ff", "get item 7",
       "to the serial line=@0, tag=$LDCMD,@2, length=2@9, code=2@10, item=7@11, nonce=@12, CRC=@16, "
       "trailer=@20",
       "to the serial line=@0, tag=$LDCMD,@2, length=3@9, code=3@10, item=11@11, contents=@12, nonce=@14, "
       "CRC=right@18, trailer=@22"},
      {0xEE, "01", "02 03", "", "?@0", "?@0"},
  };
  const ExchangeDecoder decoder = QuentaDecoder();
  for (const auto& c : kCases) {
    const auto request = FromHex(c.request);
    EXPECT_EQ(decoder.CommandName(c.command, request), c.name);
    EXPECT_EQ(Text(decoder.Request(c.command, request)).find(c.request_text), 0U)
        << Text(decoder.Request(c.command, request));
    EXPECT_EQ(Text(decoder.Reply(c.command, request, FromHex(c.reply))), c.reply_text);
  }
}

TEST(DecodedText, ShowsBytesAndMeaningSideBySide) {
  const std::vector<DecodedField> fields = {
      {"1-1", "Name", "A\nb", {}, {}, 0, FromHex("41 0a 62")},
      {{}, {}, {}, {}, {}, 3, std::vector<std::uint8_t>(17, 0x2E)},
      {"1-2", "State", "2", "Running", {}, 20, {2}},
  };
  EXPECT_EQ(DecodedText(fields),
            "  0  41 0a 62                                         A.b               Name = A?b\n"
            "  3  2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e 2e  ................\n"
            " 19  2e                                               .\n"
            " 20  02                                               .                 State = 2 (Running)");
}

TEST(LoggedExchange, JoinsTheTwoLines) {
  const std::string sent = "SEND: 47 74 20 00 00 00 00 06 c0 a8 01 0a 09 40 ";
  const struct {
    std::string sent;
    std::string received;
    const char* begin;
  } kCases[] = {
      {sent, "",
       "0x20 (write Destination IP, Destination Port)\n 0  c0 a8 01 0a  ....  Destination IP = 192.168.1.10"},
      {sent, "RECV: ret_code is 3", "0x20 (write Destination IP, Destination Port): refused with code 3"},
      {sent, "RECV: ret_code is -2", "0x20 (write Destination IP, Destination Port): no usable reply"},
      {"SEND: 47 74 0c 00 00 00 00 00 ", "RECV: 47 74 0c 00 00 00 00 01 32 ",
       "0x0C (read Calibration Date, Calibration Count and 4 more)\n  0  32  2  Calibration Date = -"},
      {"", "RECV: 01 02 ", ""},
      {"Lidar connected", "", ""},
      {"SEND: 4", "RECV: 0x", ""},
  };
  const ExchangeDecoder decoder = QuentaDecoder();
  for (const auto& c : kCases) {
    const std::string text = DecodeLogLines(decoder, c.sent, c.received);
    EXPECT_EQ(text.substr(0, std::string(c.begin).size()), c.begin) << text;
    EXPECT_EQ(text.empty(), *c.begin == '\0') << text;
  }
}

}  // namespace
}  // namespace varkel
