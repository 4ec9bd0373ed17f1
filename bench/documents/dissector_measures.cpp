// The dissector of a large table: how long it takes to generate, and how many frames per second tshark reads
// with it, compared with tshark alone on the same capture. One line per figure: name, tab, number.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/table_lint.h"
#include "VarkelCore/src/documents/command_list.h"
#include "VarkelCore/src/documents/dissector.h"
#include "bench/catalogue/big_table.h"
#include "tests/support/capture_file.h"

namespace varkel::bench {
namespace {

constexpr std::size_t kRows = 10'000;
constexpr std::size_t kFrames = 100'000;
constexpr int kRepeats = 3;

template <typename Work>
double Seconds(const Work& work) {
  double best = 1e9;
  for (int i = 0; i < kRepeats; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  return best;
}

test::Bytes Frame(const WireCommand& command, const test::Bytes& payload) {
  test::Bytes frame = {'G', 't', command.command.code, 0, 0, 0};
  frame.push_back(static_cast<std::uint8_t>(payload.size() >> 8U));
  frame.push_back(static_cast<std::uint8_t>(payload.size()));
  frame.insert(frame.end(), payload.begin(), payload.end());
  return frame;
}

/// Requests of all read commands in turn, and replies with arbitrary bytes.
void WriteCapture(const std::string& path, const ConfigParser& catalogue) {
  const std::vector<WireCommand> commands = ListCommands(catalogue);
  test::CaptureFile capture(path);
  for (std::size_t frames = 0, next = 0; frames < kFrames; ++next) {
    const WireCommand& command = commands[next % commands.size()];
    const auto size = PayloadSize(command.read);
    if (!size || command.has_angles) continue;
    test::Bytes reply = RequestPayload(command.command, {});
    capture.ToSensor(
        Frame(command, RequestPayload(command.command, command.read.front().var->get_cmd_payload_bytes)));
    while (reply.size() < *size) reply.push_back(static_cast<std::uint8_t>('0' + reply.size() % 10));
    capture.FromSensor(Frame(command, reply));
    frames += 2;
  }
  capture.Flush();
}

/// Processor time of the programs started so far, in seconds: other work on the machine doesn't count.
double ChildSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double TsharkSeconds(const std::string& arguments) {
  const std::string command = "tshark -n " + arguments + " >/dev/null 2>&1";
  double best = 1e9;
  for (int i = 0; i < kRepeats; ++i) {
    const double before = ChildSeconds();
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
    best = std::min(best, ChildSeconds() - before);
  }
  return best;
}

void Measure(const std::string& folder) {
  const BigTable table(kRows);
  ConfigParser catalogue(table.path());
  catalogue.ExtractConfigInfo();
  const DissectorModel model{"Big", &catalogue};
  std::string lua;
  std::cout << "dissector/make_ms\t"
            << 1000 * Seconds([&] { lua = WiresharkDissector(std::span(&model, 1)); }) << '\n'
            << "dissector/size_kib\t" << lua.size() / 1024 << '\n'
            << "lint/ms\t" << 1000 * Seconds([&] { LintTable(table.path()); }) << std::endl;
  const std::string script = folder + "/varkel.lua";
  const std::string capture = folder + "/exchanges.pcap";
  std::ofstream(script, std::ios::binary) << lua;
  WriteCapture(capture, catalogue);
  const std::string with = " -X lua_script:" + script;
  const double start = TsharkSeconds("-r " + capture + " -c 1" + with);
  const double alone = TsharkSeconds("-r " + capture);
  const double whole = TsharkSeconds("-r " + capture + with);
  const double filtered = TsharkSeconds("-r " + capture + with + " -Y 'ktc.big.motor_speed > 500'");
  std::cout << "dissector/start_ms\t" << 1000 * start << '\n'
            << "dissector/frames_per_s\t" << kFrames / (whole - start) << '\n'
            << "dissector/filtered_frames_per_s\t" << kFrames / (filtered - start) << '\n'
            << "tshark/frames_per_s\t" << kFrames / alone << std::endl;
}

}  // namespace
}  // namespace varkel::bench

int main() {
  const std::string folder =
      (std::filesystem::temp_directory_path() / ("varkel-dissector-" + std::to_string(getpid()))).string();
  try {
    std::filesystem::create_directories(folder);
    varkel::bench::Measure(folder);
    std::filesystem::remove_all(folder);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    std::filesystem::remove_all(folder);
    return EXIT_FAILURE;
  }
}
