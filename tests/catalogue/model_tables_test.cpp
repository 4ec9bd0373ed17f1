#include <gtest/gtest.h>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {
namespace {

class ModelTable : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    const bool loaded = catalogue.ExtractConfigInfo();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_TRUE(loaded) << catalogue.path();
  }

  ConfigParser catalogue{std::string("./Config/varID/") + GetParam() + ".csv"};
};

TEST_P(ModelTable, CanBeIdentifiedAndProbed) {
  for (const std::string name : {"SN", "PN", "Restart", "Destination IP", "Destination Port"}) {
    const bool probes = name.starts_with("Dest");
    if (probes && GetParam() == std::string("Zelto")) continue;
    const VarInfo* var = catalogue.FindByName(name);
    ASSERT_NE(var, nullptr) << name;
    EXPECT_EQ(var->get_cmd, probes ? "0x08" : name == "Restart" ? "0x10" : "0x07") << name;
    EXPECT_EQ(var->component_type == kStandalone, name == "Restart") << name;
    EXPECT_TRUE(!probes || var->get_start_pos == (name.ends_with("IP") ? 12U : 16U)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(All, ModelTable, testing::Values("Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"),
                         [](const auto& model) { return "Model" + std::to_string(model.index); });

}  // namespace
}  // namespace varkel
