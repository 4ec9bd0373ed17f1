#include "VarkelCore/src/table_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace varkel {
namespace {

constexpr char kHeader[] =
    "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
    "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n";

std::vector<std::string> Findings(const std::string& rows) {
  const auto path = std::filesystem::temp_directory_path() /
                    (::testing::UnitTest::GetInstance()->current_test_info()->name() + std::string(".csv"));
  std::ofstream(path) << kHeader << rows;
  ConfigParser catalogue(path.string());
  catalogue.ExtractConfigInfo();
  std::filesystem::remove(path);
  return CheckSetPayloads(catalogue);
}

TEST(TableCheck, FindsFieldsAtWrongPlaces) {
  struct Case {
    const char* rows;
    const char* finding;  ///< part of the sentence; empty: none
  };
  const Case cases[] = {
      {"1,1,0x01,0x02,1,A,1,uint8,0,,,,,,,1\n1,2,0x01,0x02,2,B,1,IP,0.0.0.0,,,,,,,4\n", ""},
      {"1,1,0x01,0x02,7,Alone,1,uint8,0,,,,,,,1\n", ""},
      {"1,1,0x01,0x02,1,A,1,uint16,0,,,,,,,4\n", "uint16 takes 2 bytes, but VarLen is 4"},
      {"1,1,0x01,0x02,1,A,1,double,0,,,,,,,4\n", "double takes 8 bytes, but VarLen is 4"},
      {"1,1,0x01,0x02,1,A,1,uint8,0,,,,,,,1\n1,2,0x01,0x02,1,B,1,uint8,0,,,,,,,1\n", "is taken twice"},
      {"1,1,0x01,0x02,1,A,1,uint8,0,,,,,,,1\n1,2,0x01,0x02,3,B,1,uint8,0,,,,,,,1\n", "a field is missing"},
      {"1,1,0x01,0x02,,A,1,uint8,0,,,,,,,1\n1,2,0x01,0x02,,B,1,uint8,0,,,,,,,1\n", "SetIndex is missing"},
  };
  for (const Case& c : cases) {
    const auto findings = Findings(c.rows);
    if (*c.finding == '\0') {
      EXPECT_THAT(findings, ::testing::IsEmpty()) << c.rows;
    } else {
      EXPECT_THAT(findings, ::testing::ElementsAre(::testing::HasSubstr(c.finding))) << c.rows;
    }
  }
}

TEST(TableCheck, ShippedTablesAreSound) {
  for (const char* model : {"Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"}) {
    ConfigParser catalogue(std::string("./Config/varID/") + model + ".csv");
    ASSERT_TRUE(catalogue.ExtractConfigInfo());
    EXPECT_THAT(CheckSetPayloads(catalogue), ::testing::IsEmpty()) << model;
  }
}

}  // namespace
}  // namespace varkel
