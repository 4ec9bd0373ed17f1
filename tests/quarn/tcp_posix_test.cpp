// Interference by the system, through signals and limits that only POSIX has.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <csignal>
#include <future>

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/KtcClient/src/tcp_open.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::kLoopback;

TEST(TcpClient, SignalsDoNotProlongATimeOut) {
  struct sigaction ignored {};
  ignored.sa_handler = [](int) {};
  sigaction(SIGUSR1, &ignored, nullptr);
  const auto mute = platform::TcpListener::Listen(kLoopback, 0);
  TcpClient client;
  ASSERT_TRUE(client.TryOpen(0, kLoopback, mute->port(), false, nullptr, nullptr, nullptr, 1));
  ASSERT_EQ(client.SetTimeout(200, 200), 0);
  std::promise<pthread_t> receiver;
  auto receiving = std::async(std::launch::async, [&] {
    receiver.set_value(pthread_self());
    std::uint8_t byte = 0;
    return client.Receive(&byte, 1, 0);
  });
  const pthread_t thread = receiver.get_future().get();
  const auto limit = std::chrono::steady_clock::now() + test::kPatience;
  while (receiving.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready &&
         std::chrono::steady_clock::now() < limit) {
    pthread_kill(thread, SIGUSR1);
  }
  EXPECT_LT(std::chrono::steady_clock::now(), limit) << "it ended only after the signals did";
  EXPECT_EQ(receiving.get(), -1);
}

TEST(TcpOpen, AFailedWaitIsAFailedConnection) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's check of virtual calls needs file descriptors, which this test removes";
#endif
  const test::SilentAddress silent;
  const test::LogLines log;
  std::atomic<bool> interrupted{false};
  constexpr int kOpening = 1;
  std::atomic<int> result{kOpening};
  const std::jthread opening([&] { result = tcp_open(kLoopback, silent.port(), &interrupted); });
  ASSERT_TRUE(test::Eventually([&] { return !log.All().empty(); }));
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  const rlimit none{0, files.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);  // from now on poll fails
  const bool ended = test::Eventually([&] { return result != kOpening; });
  setrlimit(RLIMIT_NOFILE, &files);
  interrupted = true;
  EXPECT_TRUE(ended);
  EXPECT_EQ(result, -1);
}

}  // namespace
}  // namespace quarn::lidar
