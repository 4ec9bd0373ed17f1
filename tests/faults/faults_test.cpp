#include <gtest/gtest.h>
#include <pthread.h>

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include "VarkelCore/src/session/exchange.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "tests/faults/operations.h"

namespace varkel::test {
namespace {

// As short as a busy machine allows.
constexpr quarn::lidar::SensorTimeouts kTimeouts{.exchange_ms = 1000,
                                                 .small_exchange_ms = 1000,
                                                 .transfer_ms = 1000,
                                                 .command_ms = 1000,
                                                 .ota_ms = 1000,
                                                 .unpack_ms = 500};

struct Kind {
  const char* rule;
  bool harmless;  ///< the operation must succeed nevertheless
  bool fatal;     ///< a single exchange must fail
};
constexpr Kind kKinds[] = {
    {"late:50", true, false},          {"split:7", true, false}, {"noise", false, false},
    {"wrong-echo", false, false},      {"error:7", false, true}, {"lying-length:5", false, false},
    {"lying-length:-2", false, false}, {"silence", false, true}, {"close", false, true}};

struct Case {
  const Operation* operation;
  std::string rule{};  ///< empty: no fault
  const Kind* kind = nullptr;

  std::string name() const { return std::string(operation->name) + " (" + operation->model + ") " + rule; }
};

/// A thread that was joined stays listed for a moment, with the flag PF_EXITING, see proc(5).
bool IsExiting(const std::filesystem::path& task) {
  constexpr unsigned long kExiting = 0x4;
  std::string text;
  std::ifstream stat(task / "stat");
  if (!std::getline(stat, text)) return true;
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  std::string skipped;
  for (int i = 0; i < 6; ++i) fields >> skipped;
  unsigned long flags = 0;
  return !(fields >> flags) || (flags & kExiting) != 0;
}

/// A thread inherits the name of its creator, so each case sets a name of its own and can count its threads,
/// whatever else runs.
std::size_t ThreadsNamed(const std::string& name) {
  std::size_t count = 0;
  std::error_code gone;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
    std::ifstream comm(task.path() / "comm");
    std::string line;
    if (std::getline(comm, line) && line == name && !IsExiting(task.path())) ++count;
  }
  return count;
}

void RunCase(const Case& one, const std::string& thread_name) {
  const Operation& operation = *one.operation;
  FaultFixture fixture(operation.model);
  ASSERT_TRUE(operation.connects || fixture.Connect());
  fixture.Forget();
  if (!one.rule.empty()) fixture.AddFault(one.rule);
  operation.start(fixture);
  const auto is_over = [&] {
    return operation.connects ? fixture.manager->IsConnected() || !fixture.errors.isEmpty()
                              : fixture.ended > 0;
  };
  EXPECT_TRUE(fixture.Wait(is_over)) << "it did not end";
  EXPECT_TRUE(fixture.Wait([&] { return !fixture.IsBusy(); })) << "a flag remains set";
  fixture.ClearFaults();
  if (operation.restarts && fixture.errors.isEmpty()) {
    EXPECT_TRUE(fixture.Wait([&] {
      return fixture.sensor->restarts() > 0 && fixture.sensor->connected_clients() == 0 &&
             !fixture.manager->IsConnected();
    })) << "the sensor was not restarted";
  }

  const bool failed = !fixture.errors.isEmpty();
  EXPECT_TRUE(!failed || (fixture.errors.size() == operation.errors && fixture.successes.isEmpty()))
      << fixture.errors.join(" / ").toStdString() << " / " << fixture.successes.join(" / ").toStdString();
  EXPECT_LE(fixture.successes.size(), 1);
  if (fixture.log.contains("ERROR Connection Error: TCP connection failed.")) {
    // The machine was too busy to accept in time, so the rule did not apply.
  } else if (one.kind == nullptr || one.kind->harmless) {
    EXPECT_FALSE(failed) << fixture.errors.join(" / ").toStdString();
  } else if (one.kind->fatal && operation.is_single) {
    EXPECT_TRUE(failed) << "no error was reported";
  }

  if (fixture.manager->IsConnected()) fixture.manager->Stop();
  fixture.StopSensor();
  EXPECT_TRUE(fixture.Wait([&] { return ThreadsNamed(thread_name) == 1; })) << "a thread is left over";
  fixture.StartSensor();
  fixture.Wait([] { return true; });  // the threads' last signals
  fixture.Forget();
  EXPECT_TRUE(fixture.Connect() && fixture.ShowsTheSensor()) << "the next connection fails";
  EXPECT_TRUE(fixture.errors.isEmpty()) << fixture.errors.join(" / ").toStdString();
}

TEST(Faults, EveryOperationEndsOnceAndTheNextConnectionWorks) {
  const std::vector<Operation> operations = Operations();
  std::vector<Case> cases;
  for (const Operation& operation : operations) {
    cases.push_back({&operation});
    for (const auto& [command, number] : operation.points) {
      for (const Kind& kind : kKinds) {
        std::string rule = command;
        rule.append("=").append(kind.rule).append(number);
        cases.push_back({&operation, std::move(rule), &kind});
      }
    }
  }
  // In parallel, because they mostly wait.
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t at = next++; at < cases.size(); at = next++) {
      const std::string name = "fault-" + std::to_string(at);
      pthread_setname_np(pthread_self(), name.c_str());
      SCOPED_TRACE(cases[at].name());
      RunCase(cases[at], name);
      EXPECT_EQ(ThreadsNamed(name), 1U) << "a thread outlives the controller";
    }
  };
  std::array<std::jthread, 48> threads;
  for (std::jthread& thread : threads) thread = std::jthread(work);
  for (std::jthread& thread : threads) thread.join();
  std::cerr << cases.size() << " cases\n";
}

// A reply that arrives after its time-out is not mistaken for the next reply, nor for that of a serial
// command.
TEST(Faults, ALateReplyAnswersNoOtherCommand) {
  sim::SimulatedSensor sensor(
      {.table_path = "./Config/varID/Zelto-KTC.csv", .faults = {"ldcmd-get:8=late:1500#1"}});
  sensor.Start();
  constexpr std::uint32_t kTimeoutMs = 1000;
  const auto client =
      std::make_shared<quarn::lidar::KtcClient>("127.0.0.1", sensor.port(), false, 0U, std::uint8_t{1}, "",
                                                "", "", kTimeoutMs, kTimeoutMs, 0.0F, std::uint16_t{0});
  while (!client->IsOpen()) std::this_thread::yield();
  quarn::lidar::KtcSerialClient carried(client);
  const std::vector<std::uint8_t> safety = {quarn::lidar::kFunctionSafetyItem};
  EXPECT_EQ(carried.QueryCommand(quarn::lidar::kGetRequest, safety, kTimeoutMs), tl::unexpected(-3));
  const auto baud_rate = [&] {
    const auto result =
        varkel::QueryKtcCommand(*client, quarn::lidar::kKtcExtensionCmd, quarn::lidar::kGetBaudRatePayload);
    return result ? 0 : result.error();
  };
  EXPECT_EQ(baud_rate(), -1);
  EXPECT_EQ(baud_rate(), 0);
}

}  // namespace
}  // namespace varkel::test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  quarn::lidar::Timeouts() = varkel::test::kTimeouts;
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  std::cout.setstate(std::ios::badbit);  // the operations' traces
  return RUN_ALL_TESTS();
}
