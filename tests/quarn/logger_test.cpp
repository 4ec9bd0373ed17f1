#include "libquarn/Platform/src/logger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>

namespace log_lib {
namespace {

const char kSourceFile[] = "tests/quarn/logger_test";

TEST(Logger, WritesLevelPlaceAndTextOnStop) {
  const std::filesystem::path folder =
      testing::TempDir() + "varkel_logger_test" + std::to_string(std::random_device()());
  Logger& logger = Logger::GetInstance();
  logger.SetTap([](int, const std::string&) { throw std::runtime_error("tap"); });
  EXPECT_NO_THROW(QUARN_LOG(kError, "before the start"));
  logger.SetTap({});
  ASSERT_TRUE(logger.Start((folder / "log.txt").string()));
  QUARN_LOG(kTiming, "line %d, 100%%", 49);
  QUARN_LOG(kError, "braces {} and %s", std::string(5000, 'x').c_str());
  QUARN_LOG(kError, "%s", "one\n2026-01-01 forged\x1b[2J");
  logger.Stop();
  QUARN_LOG(kError, "after the stop");

  std::ifstream file(folder / "log.txt");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
  for (const std::string& part :
       {std::string(" debug tests/quarn/logger_test:"), std::string(" line 49, 100%\n"),
        " braces {} and " + std::string(5000, 'x') + "\n",
        std::string(" one\\n2026-01-01 forged\\x1b[2J\n")}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
  EXPECT_FALSE(logger.Start(folder.string())) << "a folder";
  file.close();
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace log_lib
