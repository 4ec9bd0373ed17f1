#include <gtest/gtest.h>
#include <pthread.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <regex>
#include <thread>
#include <tuple>

#include "VarkelCore/src/ktc_connect.h"
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

/// What the user must be told of this operation. What a small sensor is asked in the background fails on a
/// disturbed connection as well, and every field that a shortened reply lacks has a line.
Lines Relevant(Lines told, const Operation& operation, const Fault& fault) {
  static const Lines kBackground = {"Zelto-KTC get SN failed", "Zelto-KTC SN invalid",
                                    "get pbl version error", "Failed to get"};
  std::erase_if(told, [&](const std::string& line) {
    const auto is = [&line](const std::string& text) { return line.rfind("ERROR " + text, 0) == 0; };
    if (fault.kind == "less" && is("get var pos offset failed!")) return true;
    const bool background = std::any_of(kBackground.begin(), kBackground.end(), is);
    return background && (operation.info.empty() || !is(operation.info));
  });
  std::sort(told.begin(), told.end());
  return told;
}

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += "\n      " + line;
  return text.empty() ? "\n      nothing" : text;
}

struct Case {
  const Operation* operation;
  Fault fault;
  std::vector<std::string> rules;

  std::string name() const {
    std::string text = operation->name + " (" + operation->model + ")";
    for (const std::string& rule : rules) text += " " + rule;
    return text;
  }
};

/// Runs one case; what was wrong is in `faults`.
class CaseRun {
 public:
  CaseRun(Case& of, const std::string& thread_name)
      : case_(of), operation_(*of.operation), thread_name_(thread_name), bench_(operation_.model) {}

  Lines Run() {
    const std::optional<Lines> lines = operation_.expected(case_.fault);
    expected_ = Relevant(*lines, operation_, case_.fault);
    success_ = std::none_of(expected_.begin(), expected_.end(),
                            [this](const std::string& line) { return line.rfind("error: ", 0) == 0; });
    if (!operation_.connects && !(bench_.Connect() && bench_.AwaitPause())) return {"no undisturbed begin"};
    Disturbed();
    if (TooSlow()) return {"retry"};
    Probe();
    Leave();
    ComeBack();
    return faults_;
  }

 private:
  void Disturbed() {
    VarkelManager& manager = *bench_.manager;
    bench_.ended = 0;
    bench_.alive = false;
    bench_.told.clear();
    bench_.TakeAnswered();
    for (const std::string& rule : case_.rules) bench_.Misbehave(rule);
    operation_.start(bench_);
    constexpr int kLongest = 150;
    const bool over = bench_.Wait(
        [this] { return operation_.over ? operation_.over(bench_) : bench_.ended > 0; }, kLongest);
    Check(over, "it did not end");
    const bool connected = operation_.connects                                  ? success_
                           : operation_.disconnects == Operation::Ends::kNever  ? true
                           : operation_.disconnects == Operation::Ends::kAlways ? false
                                                                                : !success_;
    bench_.Wait([&] { return Told() == expected_ && manager.IsConnected() == connected; }, 40);
    if (case_.fault.kind == "none") case_.fault.steps = bench_.TakeAnswered();
    bench_.Behave();
    CheckTold("");
    Check(manager.IsConnected() == connected, "IsConnected is wrong");
    Check(bench_.Wait([&] {
      return !manager.IsUpgrading() && !manager.IsDownloadLog() && !manager.GetIsConnectingLidar() &&
             !manager.isWorking() && !manager.isReadingPage() && !manager.isGetPBLVersion();
    }),
          "a flag stays up");
    if (operation_.check) Check(false, operation_.check(bench_, success_));
  }

  /// The connection serves on, or the check that the window makes tells that it does not.
  void Probe() {
    if (!bench_.manager->IsConnected() || operation_.restarts) return;
    bench_.ended = 0;
    bench_.manager->CheckConnectionInBackground();
    Check(bench_.Wait([this] { return bench_.ended > 0; }), "the probe did not end");
    Check(bench_.alive == (case_.fault.kind != "close"), "the probe is wrong about the connection");
  }

  void Leave() {
    if (bench_.manager->IsConnected()) bench_.manager->Stop();
    bench_.StopSensor();
    Check(bench_.Wait([this] { return ThreadsNamed(thread_name_) == 1; }, 10), "a thread is left");
    if (faults_.empty()) CheckTold(" after the disconnect");
  }

  void ComeBack() {
    bench_.StartSensor();
    Check(bench_.Connect() && bench_.ReadsAPage(), "the next connect or page read failed");
    Check(bench_.told.empty(), "the next connection told" + Joined(bench_.told));
  }

  /// The machine did not let the connection come about in time.
  bool TooSlow() const {
    return std::find(bench_.told.begin(), bench_.told.end(),
                     "ERROR Connection Error: TCP connection failed.") != bench_.told.end();
  }

  Lines Told() const { return Relevant(bench_.told, operation_, case_.fault); }
  void CheckTold(const std::string& when) {
    if (Told() != expected_) {
      Check(false, "told" + when + Joined(bench_.told) + "\n    instead of" + Joined(expected_));
    }
  }
  void Check(bool holds, const std::string& what) {
    if (!holds && !what.empty()) faults_.push_back(what);
  }

  Case& case_;
  const Operation& operation_;
  const std::string thread_name_;
  FaultBench bench_;
  Lines expected_;
  bool success_ = false;
  Lines faults_;
};

/// The cases side by side: most of their time they wait.
class FaultSuite : public testing::Test {
 protected:
  void RunAll(std::vector<Case>& cases) {
    constexpr std::size_t kThreads = 64;
    std::atomic<std::size_t> next = 0;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < std::min(kThreads, cases.size()); ++i) {
      threads.emplace_back([&] {
        for (std::size_t at = next++; at < cases.size(); at = next++) RunOne(cases[at]);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  void RunOne(Case& one) {
    const std::string name = "fault-" + std::to_string(++runs_);
    pthread_setname_np(pthread_self(), name.c_str());
    const auto begin = std::chrono::steady_clock::now();
    Lines faults;
    {
      std::unique_lock turn(turn_, std::defer_lock);
      if (one.operation->alone) turn.lock();
      for (int attempt = 0; attempt < 3 && (attempt == 0 || faults == Lines{"retry"}); ++attempt) {
        faults = CaseRun(one, name).Run();
      }
    }
    if (ThreadsNamed(name) != 1) faults.emplace_back("a thread outlives the controller");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    const std::lock_guard lock(mutex_);
    ++done_[one.operation->name + " (" + one.operation->model + ")"];
    longest_ = std::max(longest_, std::pair(took.count(), one.name()));
    for (const std::string& fault : faults) ADD_FAILURE() << one.name() << ": " << fault;
  }

  std::atomic<int> runs_ = 0;
  std::mutex turn_;
  std::mutex mutex_;  // guards what follows
  std::map<std::string, int> done_;
  std::pair<double, std::string> longest_;
};

std::string Rule(const Operation& operation, const Point& point, const Kind& kind, bool last) {
  const unsigned patience =
      last && operation.last_patience_ms > 0 ? operation.last_patience_ms : operation.patience_ms;
  const std::string late =
      std::to_string(patience + patience / 10 + 700);  // the system's long timers are coarse
  return point.command + "=" + std::regex_replace(kind.rule, std::regex("LATE"), late) + point.nth;
}

/// The first, a middle and the last of the operation's exchanges.
std::vector<Point> CountedPoints(std::size_t exchanges, std::vector<std::size_t>& numbers) {
  std::vector<Point> points;
  for (const std::size_t number : {std::size_t{1}, (exchanges + 2) / 2, exchanges}) {
    if (!numbers.empty() && numbers.back() == number) continue;
    numbers.push_back(number);
    points.push_back({"*", exchanges > 1 ? "#" + std::to_string(number) : ""});
  }
  return points;
}

std::vector<Case> Disturbances(const Case& undisturbed) {
  const Operation& operation = *undisturbed.operation;
  std::vector<std::size_t> numbers;
  std::vector<Point> points = operation.points;
  if (points.empty()) {
    points = CountedPoints(undisturbed.fault.steps.size(), numbers);
  }
  std::vector<Case> cases;
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (const Kind& kind : kKinds) {
      Case one = undisturbed;
      one.fault.kind = kind.name;
      if (numbers.empty()) one.fault.steps.clear();  // they tell nothing of the points
      one.fault.at = numbers.empty() ? i + 1 : numbers[i];
      if (!operation.expected(one.fault)) continue;
      if (!points[i].also.empty()) one.rules.push_back(points[i].also);
      one.rules.push_back(Rule(operation, points[i], kind, i + 1 == points.size()));
      cases.push_back(std::move(one));
    }
  }
  return cases;
}

TEST_F(FaultSuite, EveryOperationSurvivesEveryMisbehaviour) {
  const char* const chosen = std::getenv("VARKEL_FAULTS");  // a regular expression, for a part of the suite
  const std::regex pattern(chosen != nullptr ? chosen : ".*");
  std::vector<Case> undisturbed;
  for (const Operation& operation : Operations()) undisturbed.push_back({&operation, {"none", 1, {}}, {}});
  std::erase_if(undisturbed, [&](const Case& one) { return !std::regex_search(one.name(), pattern); });
  RunAll(undisturbed);
  ASSERT_FALSE(HasFailure());

  std::vector<Case> cases;
  for (const Case& one : undisturbed) {
    for (Case& disturbed : Disturbances(one)) cases.push_back(std::move(disturbed));
  }
  // The long ones first.
  std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {
    return std::tuple(a.operation->alone, a.operation->patience_ms) >
           std::tuple(b.operation->alone, b.operation->patience_ms);
  });
  RunAll(cases);
  for (const auto& [name, count] : done_) std::cerr << count << " cases of " << name << '\n';
  std::cerr << "in all " << cases.size() + undisturbed.size() << "; longest " << longest_.first
            << " s: " << longest_.second << '\n';
}

TEST(LateReply, OfACarriedCommandAnswersNoOtherOne) {
  sim::SimulatedSensor sensor(
      {.table_path = "./Config/varID/Zelto-KTC.csv", .misbehaviours = {"ldcmd-get:8=late:3000#1"}});
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
    return QueryForCode(*client, quarn::lidar::kKtcExtensionCmd, quarn::lidar::kGetBaudRatePayload, reply);
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
