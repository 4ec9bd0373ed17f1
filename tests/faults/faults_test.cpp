#include <gtest/gtest.h>
#include <pthread.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <regex>
#include <thread>
#include <utility>

#include "VarkelCore/src/session/ktc_connect.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/sensor_requests.h"
#include "tests/faults/fault_table.h"

namespace varkel::test {
namespace {

/// A thread starts under the name of the one that made it: with a name of its own each case can count its
/// threads, whatever runs beside it.
std::size_t ThreadsNamed(const std::string& name) {
  std::size_t count = 0;
  std::error_code gone;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", gone)) {
    std::string line;
    if (std::ifstream comm(task.path() / "comm"); std::getline(comm, line) && line == name) ++count;
  }
  return count;
}

/// What the user must be told of the operation. What a small sensor is asked in the background fails on a
/// disturbed connection as well, and every field that a shortened reply lacks has a line.
Lines Relevant(Lines told, const Fault& fault) {
  Lines others = {"Zelto-KTC get SN failed", "Zelto-KTC SN invalid", "get pbl version", "Failed to get"};
  if (fault.kind == "less") others.emplace_back("get var pos offset failed!");
  std::erase_if(told, [&others](const std::string& line) {
    return std::any_of(others.begin(), others.end(),
                       [&line](const std::string& text) { return line.starts_with("ERROR " + text); });
  });
  std::sort(told.begin(), told.end());
  return told;
}

struct Case {
  const Operation* operation;
  Fault fault{};
  std::string rule{};
  std::string also{};

  std::string name() const { return operation->name + " (" + operation->model + ") " + rule + " " + also; }
};

/// Runs one case. What was wrong stands in its result.
class CaseRun {
 public:
  CaseRun(Case& of, const std::string& thread_name)
      : case_(of), operation_(*of.operation), thread_name_(thread_name), bench_(operation_.model) {}

  Lines Run() {
    expected_ = Relevant(operation_.expected(case_.fault), case_.fault);
    success_ = std::none_of(expected_.begin(), expected_.end(),
                            [](auto& line) { return line.starts_with("error: "); });
    if (!operation_.connects && !(bench_.Connect() && bench_.AwaitPause())) return {"no undisturbed begin"};
    Disturbed();
    if (bench_.log.contains(kNotInTime)) return kTooSlow;
    Probe();
    if (bench_.manager->IsConnected()) bench_.manager->Stop();
    bench_.StopSensor();
    Check(bench_.Wait([this] { return ThreadsNamed(thread_name_) == 1; }), "a thread is left");
    if (faults_.empty()) CheckTold();
    bench_.StartSensor();
    Check(bench_.Connect() && bench_.ReadsAPage(), "the next connect or page read failed");
    Check(bench_.Told().empty(), "the next connection told" + testing::PrintToString(bench_.Told()));
    return faults_;
  }

  static constexpr char kNotInTime[] = "ERROR Connection Error: TCP connection failed.";
  inline static const Lines kTooSlow = {"the machine did not let a connection come about in time"};

 private:
  void Disturbed() {
    const VarkelManager& manager = *bench_.manager;
    bench_.Forget();
    for (const std::string& rule : {case_.rule, case_.also}) {
      if (!rule.empty()) bench_.AddFault(rule);
    }
    operation_.start(bench_);
    constexpr int kLongest = 150;
    Check(bench_.Wait([this] { return IsOver(); }, kLongest), "it did not end");
    bool connected = success_;
    if (!operation_.connects) {
      connected =
          operation_.disconnects == Ends::kNever || (operation_.disconnects == Ends::kOnSuccess && !success_);
    }
    bench_.Wait([&] { return Told() == expected_ && manager.IsConnected() == connected; }, 40);
    if (case_.fault.kind.empty()) case_.fault.steps = bench_.TakeAnswered();
    bench_.ClearFaults();
    CheckTold();
    Check(manager.IsConnected() == connected, "IsConnected is wrong");
    Check(bench_.Wait([this] { return !bench_.IsBusy(); }), "a flag stays up");
    if (operation_.check) Check(false, operation_.check(bench_, success_));
  }

  bool IsOver() {
    if (operation_.over) return operation_.over(bench_);
    return operation_.connects ? bench_.manager->IsConnected() || !bench_.Told().empty() : bench_.ended > 0;
  }

  /// The connection serves on, or the check that the window makes tells that it does not.
  void Probe() {
    if (!bench_.manager->IsConnected() || operation_.restarts) return;
    bench_.ended = 0;
    bench_.manager->CheckConnectionInBackground();
    Check(bench_.Wait([this] { return bench_.ended > 0; }), "the probe did not end");
    Check(bench_.alive == (case_.fault.kind != "close"), "the probe is wrong about the connection");
  }

  Lines Told() const { return Relevant(bench_.Told(), case_.fault); }
  void CheckTold() {
    Check(Told() == expected_, "told " + testing::PrintToString(bench_.Told()) + "\n    instead of " +
                                   testing::PrintToString(expected_));
  }
  void Check(bool holds, const std::string& what) {
    if (!holds && !what.empty()) faults_.push_back(what);
  }

  using Ends = Operation::Ends;
  Case& case_;
  const Operation& operation_;
  const std::string thread_name_;
  FaultBench bench_;
  Lines expected_;
  bool success_ = false;
  Lines faults_;
};

/// The cases side by side: most of their time they wait. The first ones are begun first.
void RunAll(std::vector<Case>& cases) {
  static std::atomic<int> runs = 0;
  std::atomic<std::size_t> next = 0;
  std::mutex turn;
  const auto run_one = [&](Case& one) {
    const std::string name = "fault-" + std::to_string(++runs);
    pthread_setname_np(pthread_self(), name.c_str());
    std::unique_lock alone(turn, std::defer_lock);
    if (one.operation->alone) alone.lock();
    Lines faults = CaseRun::kTooSlow;
    for (int attempt = 0; attempt < 3 && faults == CaseRun::kTooSlow; ++attempt) {
      faults = CaseRun(one, name).Run();
    }
    if (ThreadsNamed(name) != 1) faults.emplace_back("a thread outlives the controller");
    for (const std::string& fault : faults) ADD_FAILURE() << one.name() << ": " << fault;
  };
  std::vector<std::jthread> threads(std::min(std::size_t{64}, cases.size()));
  for (std::jthread& thread : threads) {
    thread = std::jthread([&] {
      for (std::size_t at = next++; at < cases.size(); at = next++) run_one(cases[at]);
    });
  }
}

std::string Rule(const Operation& operation, const Point& point, const Kind& kind) {
  const unsigned coarse_timer = operation.patience_ms / 10;
  const std::string late = std::to_string(operation.patience_ms + coarse_timer + 700);
  return point.command + "=" + std::regex_replace(kind.rule, std::regex("LATE"), late) + point.nth;
}

void AddDisturbances(const Case& undisturbed, std::vector<Case>& cases) {
  const Operation& operation = *undisturbed.operation;
  const std::size_t last = undisturbed.fault.steps.size();
  std::map<std::size_t, Point> points;
  for (const Point& point : operation.points) points[points.size() + 1] = point;
  const bool counted = points.empty();
  for (const std::size_t at : {std::size_t{1}, (last + 2) / 2, last}) {
    if (counted) points[at] = {"*", last > 1 ? "#" + std::to_string(at) : ""};
  }
  for (const auto& [at, point] : points) {
    for (const Kind& kind : kKinds) {
      const Fault fault{kind.name, at, counted ? undisturbed.fault.steps : std::vector<std::size_t>()};
      if (operation.expected(fault) == kUntellable) continue;
      cases.push_back({&operation, fault, Rule(operation, point, kind), point.also});
    }
  }
}

TEST(FaultSuite, EveryOperationMeetsEveryFault) {
  const char* const chosen = std::getenv("VARKEL_FAULTS");  // a regular expression, for a part of the suite
  const std::regex pattern(chosen != nullptr ? chosen : "");
  const std::vector<Operation> operations = Operations();
  std::vector<Case> undisturbed;
  for (const Operation& operation : operations) {
    const Case one{&operation};
    if (std::regex_search(one.name(), pattern)) undisturbed.push_back(one);
  }
  RunAll(undisturbed);
  ASSERT_FALSE(testing::Test::HasFailure());
  std::vector<Case> cases;
  for (const Case& one : undisturbed) AddDisturbances(one, cases);
  std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {  // the long ones first
    return std::pair(a.operation->alone, a.operation->patience_ms) >
           std::pair(b.operation->alone, b.operation->patience_ms);
  });
  RunAll(cases);
  std::cerr << undisturbed.size() << " operations, " << cases.size() << " disturbances\n";
}

TEST(LateReply, OfACarriedCommandAnswersNoOtherOne) {
  sim::SimulatedSensor sensor(
      {.table_path = "./Config/varID/Zelto-KTC.csv", .faults = {"ldcmd-get:8=late:3000#1"}});
  sensor.Start();
  constexpr std::uint32_t kTimeoutMs = 2000;
  const auto client =
      MakeKtcClient({.ip_address = "127.0.0.1", .port = std::to_string(sensor.port())}, kTimeoutMs);
  while (!client->IsOpen()) std::this_thread::yield();
  std::vector<std::uint8_t> reply;
  quarn::lidar::KtcSerialClient carried(client);
  const std::vector<std::uint8_t> safety = {quarn::lidar::kFunctionSafetyItem};
  EXPECT_EQ(carried.QueryCommand(quarn::lidar::kGetRequest, safety, reply, kTimeoutMs), -3);
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
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  std::cout.setstate(std::ios::badbit);  // the operations' traces
  return RUN_ALL_TESTS();
}
