#include "cli/run_sensors.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "cli/progress.h"

namespace varkel::cli {

namespace {

class Sensors {
 public:
  Sensors(const Arguments& arguments, const std::vector<SensorTarget>& targets,
          const std::string& table_folder, const SensorCommand& command, Console& console,
          const std::stop_token& stop, quarn::lidar::CaptureRecorder* recorder)
      : arguments_(arguments),
        targets_(targets),
        table_folder_(table_folder),
        command_(command),
        console_(console),
        stop_(stop),
        recorder_(recorder),
        progress_(console),
        results_(targets.size()) {}

  ExitCode Run();

 private:
  void Work();
  SensorResult RunOne(const SensorTarget& target);
  void Finish(std::size_t index, SensorResult result);
  void Show(const SensorTarget& target, const SensorResult& result);
  void Summarize();

  const Arguments& arguments_;
  const std::vector<SensorTarget>& targets_;
  const std::string& table_folder_;
  const SensorCommand& command_;
  Console& console_;
  const std::stop_token& stop_;
  quarn::lidar::CaptureRecorder* const recorder_;
  Progress progress_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;  // guards what follows
  std::vector<std::optional<SensorResult>> results_;
  std::size_t shown_ = 0;
  std::size_t finished_ = 0;
};

ExitCode Sensors::Run() {
  {
    const std::size_t count = std::min(static_cast<std::size_t>(arguments_.jobs), targets_.size());
    std::vector<std::jthread> threads;
    while (threads.size() < count) threads.emplace_back([this] { Work(); });
  }
  if (targets_.size() > 1) Summarize();
  ExitCode exit = kDone;
  for (const auto& result : results_) exit = MoreSevere(exit, result->exit);
  return exit;
}

void Sensors::Work() {
  for (std::size_t index = next_++; index < targets_.size(); index = next_++) {
    SensorResult result;
    try {
      result = RunOne(targets_[index]);
    } catch (const std::exception& error) {
      result = Sentence(targets_[index], kFailed, error.what());
    }
    Finish(index, std::move(result));
  }
}

SensorResult Sensors::RunOne(const SensorTarget& target) {
  if (stop_.stop_requested()) return Sentence(target, kFailed, "Stopped before it began.");
  RecordingReport report;
  const auto link = SensorLink::Open(target, table_folder_, report, stop_, recorder_);
  if (!link) {
    const bool is_lost = link.error().is_no_connection && !stop_.stop_requested();
    return Sentence(target, is_lost ? kNoConnection : kFailed, link.error().text);
  }
  Job job{arguments_, table_folder_, **link, report, stop_, console_, targets_.size() == 1, {}, {}};
  if (targets_.size() == 1) {
    job.progress = [this](std::size_t done, std::size_t total) { progress_.Show(done, total); };
  }
  job.show = [&](const SensorResult& line) { Show(target, line); };
  return command_(job);
}

void Sensors::Finish(std::size_t index, SensorResult result) {
  const std::lock_guard lock(mutex_);
  results_[index] = std::move(result);
  for (; shown_ < targets_.size() && results_[shown_]; ++shown_) Show(targets_[shown_], *results_[shown_]);
  ++finished_;
  if (targets_.size() > 1) progress_.Show(finished_, targets_.size());
}

void Sensors::Show(const SensorTarget& target, const SensorResult& result) {
  if (arguments_.json) {
    if (!result.json.empty()) console_.Result(result.json);
    return;
  }
  if (result.text.empty()) return;
  const bool is_one = targets_.size() == 1;
  const std::string name = Plain(target.name());
  if (result.is_error) {
    console_.Note((is_one ? "varkelctl: " : name + ": ") + result.text);
  } else if (arguments_.command == "watch") {
    console_.Result((is_one ? "" : name + "  ") + result.text);
  } else {
    console_.Result((is_one ? "" : console_.Paint("== " + name, Colour::kDim) + "\n") + result.text);
  }
}

/// "3 sensors: 2 done; no connection: 10.0.0.3:9347".
void Sensors::Summarize() {
  std::map<ExitCode, std::string> names;
  std::size_t done = 0;
  for (std::size_t i = 0; i < targets_.size(); ++i) {
    const ExitCode exit = results_[i]->exit;
    if (exit == kDone) ++done;
    std::string& list = names[exit];
    list += (list.empty() ? "" : ", ") + Plain(targets_[i].name());
  }
  const std::map<ExitCode, const char*> words = {{kFailed, "failed"},
                                                 {kDifferent, "with differences"},
                                                 {kRefused, "refused or not verified"},
                                                 {kNoConnection, "no connection"},
                                                 {kWrongUse, "wrong usage"}};
  std::string text = std::to_string(targets_.size()) + " sensors: " + std::to_string(done) + " done";
  for (const auto& [exit, list] : names) {
    if (exit != kDone) text += std::string("; ") + words.at(exit) + ": " + list;
  }
  console_.Note(text);
}

}  // namespace

ExitCode RunSensors(const Arguments& arguments, const std::vector<SensorTarget>& targets,
                    const std::string& table_folder, const SensorCommand& command, Console& console,
                    const std::stop_token& stop, quarn::lidar::CaptureRecorder* recorder) {
  return Sensors(arguments, targets, table_folder, command, console, stop, recorder).Run();
}

SensorCommand FindSensorCommand(const std::string& name) {
  static const std::map<std::string, SensorResult (*)(const Job&)> commands = {
      {"info", Info},
      {"read", Read},
      {"watch", Watch},
      {"snapshot", TakeSnapshot},
      {"compare", CompareSensor},
      {"set", Set},
      {"apply", Apply},
      {"rollback", RollBack},
      {"send", Send},
      {"restart", Restart},
      {"reset", Reset},
      {"log", DownloadLog},
      {"operation-log", DownloadOperationLog},
      {"upgrade", Upgrade}};
  const auto found = commands.find(name);
  return found == commands.end() ? SensorCommand() : SensorCommand(found->second);
}

JsonObject JsonHead(const SensorTarget& target, const std::string& sn, bool ok) {
  JsonObject object;
  object.Text("target", target.name()).Text("model", target.model).Text("sn", sn).Bool("ok", ok);
  return object;
}

SensorResult Sentence(const SensorTarget& target, ExitCode exit, const std::string& text) {
  const bool is_error = exit != kDone;
  return {exit, PlainLines(text),
          JsonHead(target, {}, !is_error).Text(is_error ? "error" : "message", text).str(), is_error};
}

SensorResult ModelLacks(const Job& job, const std::string& what) {
  const SensorTarget& target = job.link.target();
  return Sentence(target, kFailed, "The model " + target.model + " has no " + what + ".");
}

}  // namespace varkel::cli
