#include "VarkelCore/src/pages/variable_details.h"

#include <QMap>

#include "tests/values/value_table.h"

namespace varkel {
namespace {

QMap<QString, QString> Details(const Model& model, const VarInfo& var) {
  QMap<QString, QString> details;
  for (const QVariant& line : VariableDetails(model, var)) {
    const QString text = line.toMap().value("text").toString();
    if (!text.isEmpty()) details.insert(line.toMap().value("caption").toString(), text);
  }
  details.remove("Read at");  // in the user's own time zone
  return details;
}

TEST(VariableDetailsTest, ShowTheTableAndTheHistory) {
  const auto model = test::ModelOf(
      {"Index=1;Get=0x01;Set=0x02;VarName=Limit;VarType=uint16;DefaultValue=7;VarLen=2;Options=1~9;Unit=mm;"
       "Permission=1;FunctionModule=1_1_1_1",
       "Index=2;Get=0x01;VarName=Mode;VarType=uint8;DefaultValue=0;VarLen=1;Options=0|1;"
       "OptionDescription=0_Off;FunctionModule=1_1_2_3"});
  VarInfo& limit = *model->catalogue->FindByName("Limit");
  QMap<QString, QString> expected = {{"Value", "7"},
                                     {"Origin", "not read, the table's default"},
                                     {"Unit", "mm"},
                                     {"Range", "1 to 9"},
                                     {"Type", "uint16, 2 bytes"},
                                     {"Default", "7"},
                                     {"Read by", "0x01, bytes 0 to 1 of the reply"},
                                     {"Set by", "0x02, bytes 0 to 1 of the payload"}};
  EXPECT_EQ(Details(*model, limit), expected);

  model->values.Sent({"0x02", {{&limit, "8", {0, 8}}}, {}}, model->values.Now());
  model->values.Read({{&limit, "9", {0, 9}}}, model->values.Now());
  expected["Value"] = "9";
  expected["Raw bytes"] = "00 09";
  expected["Origin"] = "saved, but the sensor holds another value";
  expected["Last save"] = "sent 8, sensor holds 9";
  EXPECT_EQ(Details(*model, limit), expected);

  const auto mode = Details(*model, *model->catalogue->FindByName("Mode"));
  EXPECT_EQ(mode.value("Options"), "0  Off\n1");
  EXPECT_EQ(mode.value("Read by"), "0x01, byte 2 of the reply");
}

}  // namespace
}  // namespace varkel
