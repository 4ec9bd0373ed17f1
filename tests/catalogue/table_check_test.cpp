#include "VarkelCore/src/catalogue/table_check.h"

#include <gtest/gtest.h>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

TEST(TableCheck, FindsFieldsAtWrongPlaces) {
  const struct {
    std::string first, second;  // fields of one command
    const char* finding;        // part of its sentence
  } kCases[] = {
      {"VarType=uint8;VarLen=1;SetIndex=1", "VarType=IP;VarLen=4;SetIndex=2", nullptr},
      {"VarType=uint8;VarLen=1;SetIndex=1", "VarType=uint16;VarLen=4;SetIndex=2",
       "uint16 takes 2 bytes, but VarLen is 4"},
      {"VarType=uint8;VarLen=1;SetIndex=1", "VarType=uint8;VarLen=1;SetIndex=1", "is taken twice"},
      {"VarType=uint8;VarLen=1;SetIndex=1", "VarType=uint8;VarLen=1;SetIndex=3", "a field is missing"},
      {"VarType=uint8;VarLen=1", "VarType=uint8;VarLen=1", "SetIndex is missing"}};
  for (const auto& c : kCases) {
    const test::TableFile file(
        test::TableText({"Get=1;Set=2;Index=1;" + c.first, "Get=1;Set=2;Index=2;" + c.second}));
    ConfigParser catalogue(file.path());
    catalogue.ExtractConfigInfo();
    const auto findings = CheckSetPayloads(catalogue);
    EXPECT_EQ(findings.empty(), c.finding == nullptr) << c.second;
    EXPECT_TRUE(findings.empty() || findings.front().find(c.finding) != std::string::npos)
        << findings.front();
  }
}

}  // namespace
}  // namespace varkel
