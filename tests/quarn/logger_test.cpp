#include "libquarn/Platform/src/logger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/KtcClient/src/tcp_open.h"
#include "libquarn/KtcClient/src/tcp_ssl_client.h"

namespace log_lib {
namespace {

const char kSourceFile[] = "tests/quarn/logger_test";

void LogFiftyLines(int thread) {
  for (int i = 0; i < 50; ++i) QUARN_LOG(kTiming, "line %d of thread %d, 100%%", i, thread);
}

TEST(Logger, WritesLevelPlaceAndTextOnStop) {
  const std::filesystem::path folder =
      testing::TempDir() + "varkel_logger_test" + std::to_string(std::random_device()());
  Logger& logger = Logger::GetInstance();
  QUARN_LOG(kError, "before the start");
  ASSERT_TRUE(logger.Start((folder / "log.txt").string()));
  std::thread other(LogFiftyLines, 0);
  LogFiftyLines(1);
  other.join();
  QUARN_LOG(kError, "braces {} and %s", std::string(5000, 'x').c_str());
  QUARN_LOG(kError, "%s", "one\n2026-01-01 forged\x1b[2J");
  logger.Stop();
  QUARN_LOG(kError, "after the stop");

  std::ifstream file(folder / "log.txt");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 102);
  for (const std::string& part :
       {std::string(" debug tests/quarn/logger_test:"), std::string(" line 49 of thread 1, 100%\n"),
        " braces {} and " + std::string(5000, 'x') + "\n",
        std::string(" one\\n2026-01-01 forged\\x1b[2J\n")}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
  EXPECT_FALSE(logger.Start(folder.string())) << "a folder";
  file.close();
  std::filesystem::remove_all(folder);
}

// Whoever reads the file looks for the transports under their own names.
TEST(Logger, TransportsLogUnderTheirOwnNames) {
  using quarn::lidar::TcpClient;
  using quarn::lidar::TcpSslClient;
  const std::string path =
      testing::TempDir() + "varkel_transport_log" + std::to_string(std::random_device()());
  ASSERT_TRUE(Logger::GetInstance().Start(path));
  EXPECT_FALSE(TcpClient().SetReceiveTimeout(1));
  EXPECT_FALSE(TcpSslClient().SetReceiveTimeout(1));
  EXPECT_EQ(quarn::lidar::tcp_open("1.2.3", 80), -1);
  EXPECT_FALSE(quarn::lidar::InitSslClient(nullptr, nullptr, "absent.pem"));
  Logger::GetInstance().Stop();
  std::ifstream file(path);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string folder = " libquarn/KtcClient/src/";
  for (const char* line :
       {"tcp_client SetReceiveTimeout TcpClient not open",
        "tcp_ssl_client SetReceiveTimeout TcpClient not open", "tcp_ssl_client tcp_open ip:1.2.3 port:80",
        "tcp_ssl_client InitSslClient ca path: absent.pem"}) {
    EXPECT_NE(text.find(folder + line), std::string::npos) << line << " is not in\n" << text;
  }
  file.close();
  std::filesystem::remove(path);
}

TEST(Logger, SurvivesATapThatThrows) {
  Logger::GetInstance().SetTap([](int, const std::string&) { throw std::runtime_error("tap"); });
  EXPECT_NO_THROW(QUARN_LOG(kWarning, "thrown at"));
  Logger::GetInstance().SetTap({});
}

}  // namespace
}  // namespace log_lib
