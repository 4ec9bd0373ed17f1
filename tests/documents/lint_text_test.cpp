#include "VarkelCore/src/documents/lint_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace varkel {
namespace {

TEST(LintText, IsALineThatEditorsCanFollow) {
  EXPECT_EQ(FindingLine({"a.csv", 3, "Get", Severity::kError, "Wrong."}), "a.csv:3: Get: error: Wrong.");
  EXPECT_EQ(FindingLine({"a.csv", 0, "", Severity::kWarning, "Odd."}), "a.csv: warning: Odd.");
}

TEST(LintText, CountsErrorsAndWarnings) {
  std::vector<TableFinding> findings;
  EXPECT_EQ(FindingCount(findings), "no findings");
  findings.push_back({"", 1, "", Severity::kWarning, ""});
  EXPECT_EQ(FindingCount(findings), "1 warning");
  EXPECT_FALSE(HasErrors(findings));
  findings.push_back({"", 1, "", Severity::kError, ""});
  findings.push_back({"", 1, "", Severity::kError, ""});
  EXPECT_EQ(FindingCount(findings), "2 errors and 1 warning");
  EXPECT_TRUE(HasErrors(findings));
}

}  // namespace
}  // namespace varkel
