#include "VarkelCore/src/table_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

TEST(TableCheck, FindsFieldsAtWrongPlaces) {
  const struct {
    std::vector<std::string> fields;
    std::vector<const char*> finding;  // part of its sentence
  } kCases[] = {
      {{"VarType=uint8;VarLen=1;SetIndex=1", "VarType=IP;VarLen=4;SetIndex=2"}, {}},
      {{"VarType=uint16;VarLen=4;SetIndex=1"}, {"uint16 takes 2 bytes, but VarLen is 4"}},
      {{"VarType=uint8;VarLen=1;SetIndex=1", "VarType=uint8;VarLen=1;SetIndex=1"}, {"is taken twice"}},
      {{"VarType=uint8;VarLen=1;SetIndex=1", "VarType=uint8;VarLen=1;SetIndex=3"}, {"a field is missing"}},
      {{"VarType=uint8;VarLen=1", "VarType=uint8;VarLen=1"}, {"SetIndex is missing"}},
  };
  for (const auto& c : kCases) {
    std::vector<std::string> rows;
    for (const auto& field : c.fields) {
      rows.push_back("Get=1;Set=2;Index=" + std::to_string(rows.size()) + ";" + field);
    }
    const test::TableFile file(test::TableText(rows));
    ConfigParser catalogue(file.path());
    catalogue.ExtractConfigInfo();
    const auto findings = CheckSetPayloads(catalogue);
    ASSERT_EQ(findings.size(), c.finding.size()) << rows[0];
    for (const auto& finding : findings) EXPECT_THAT(finding, testing::HasSubstr(c.finding[0]));
  }
}

}  // namespace
}  // namespace varkel
