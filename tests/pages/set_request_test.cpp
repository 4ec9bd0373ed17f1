#include <cstdint>
#include <string>
#include <vector>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/values/value_text.h"
#include "libquarn/Platform/src/byte_order.h"
#include "tests/values/value_table.h"

namespace varkel {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Displayed texts have two decimals, and codecs truncate: the text alone would change every seventh of these
// values.
TEST(SetRequest, UneditedFieldsKeepTheirBytes) {
  std::vector<std::string> rows = {
      "Index=0;Get=0x01;Set=0x02;SetIndex=0;VarName=Edited;VarType=uint16;VarLen=2;DefaultValue=0"};
  for (const char* coefficient : {"0.1", "0.05", "0.2"}) {
    const std::string index = std::to_string(rows.size());
    std::string& row = rows.emplace_back("Get=0x01;Set=0x02;VarType=uint16;VarLen=2;DefaultValue=0");
    row.append(";Index=")
        .append(index)
        .append(";SetIndex=")
        .append(index)
        .append(";VarName=")
        .append(coefficient);
    row.append(";Coefficient=").append(coefficient).append(";SetCoefficient=").append(coefficient);
  }
  const auto model = test::ModelOf(rows);
  const ConfigParser& catalogue = *model->catalogue;
  model->values.Edit(*catalogue.FindByName("Edited"), "258");
  int moved = 0;
  for (std::uint32_t raw = 0; raw <= 0xFFFF; ++raw) {
    const Bytes field = {static_cast<std::uint8_t>(raw >> 8U), static_cast<std::uint8_t>(raw)};
    std::vector<Reading> readings;
    Bytes expected = {1, 2};
    for (VarInfo* var : catalogue.get_cmd_map().at("0x01")) {
      readings.push_back({var, BytesToText("uint16", field, var->coefficient).text, field});
      if (readings.size() > 1) expected.insert(expected.end(), field.begin(), field.end());
    }
    model->values.Read(std::move(readings), model->values.Now());
    moved += MakeSetRequest(*model, "0x02").payload == expected ? 0 : 1;
  }
  EXPECT_EQ(moved, 0);
}

TEST(SetRequest, OtherFieldsAreEncodedFromTheirText) {
  const auto payload = [](const char* cells, const char* text, const Bytes& raw) {
    const auto model =
        test::ModelOf({std::string("Index=1;Get=0x01;Set=0x02;VarName=Value;VarLen=2;") + cells});
    model->values.Read({{model->catalogue->FindByName("Value"), text, raw}}, model->values.Now());
    return MakeSetRequest(*model, "0x02").payload;
  };
  EXPECT_EQ(payload("VarType=uint16;Coefficient=0.5;SetCoefficient=2", "12.00", {0, 24}), (Bytes{0, 6}));
  EXPECT_EQ(payload("VarType=uint16;Coefficient=0.1;SetCoefficient=0.1", "1.30", {}), (Bytes{0, 12}));
  EXPECT_THROW(payload("VarType=uint32", "70000", {1, 2}), std::invalid_argument) << "its codec refuses it";
  EXPECT_THROW(payload("VarType=string", "text", {1, 2}), std::invalid_argument);
}

}  // namespace
}  // namespace varkel
