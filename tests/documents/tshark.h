#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "VarkelCore/src/documents/dissector.h"
#include "tests/support/capture_file.h"

namespace varkel::test {

/// Runs tshark with a dissector and a capture, in a folder that is removed with the object.
class Wireshark {
 public:
  explicit Wireshark(const std::vector<std::string>& models) {
    std::filesystem::create_directories(folder_);
    std::vector<std::unique_ptr<ConfigParser>> tables;
    std::vector<DissectorModel> shown;
    for (const std::string& model : models) {
      tables.push_back(std::make_unique<ConfigParser>("./Config/varID/" + model + ".csv"));
      EXPECT_TRUE(tables.back()->ExtractConfigInfo());
      shown.push_back({model, tables.back().get()});
    }
    std::ofstream(folder_ + "/varkel.lua", std::ios::binary) << WiresharkDissector(shown);
    capture_ = std::make_unique<CaptureFile>(folder_ + "/exchanges.pcap");
  }
  ~Wireshark() { std::filesystem::remove_all(folder_); }
  Wireshark(const Wireshark&) = delete;
  Wireshark& operator=(const Wireshark&) = delete;

  CaptureFile& capture() { return *capture_; }

  /// What tshark prints, including errors; `options` are passed through a shell.
  std::string Run(const std::string& options) {
    capture_->Flush();
    const std::string command = "tshark -r '" + folder_ + "/exchanges.pcap' -X 'lua_script:" + folder_ +
                                "/varkel.lua' " + options + " 2>&1";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
    std::string text;
    for (int c = std::fgetc(output.get()); c != EOF; c = std::fgetc(output.get())) {
      text += static_cast<char>(c);
    }
    return text;
  }

 private:
  const testing::TestInfo* const test_ = testing::UnitTest::GetInstance()->current_test_info();
  // Another checkout may be running the same test.
  const std::string folder_ =
      testing::TempDir() + "varkel_" + test_->name() + "_" + std::to_string(std::random_device()());
  std::unique_ptr<CaptureFile> capture_;
};

/// A frame of KTC 1.0 or 2.0.
inline Bytes KtcFrame(std::uint8_t version, std::uint8_t command, const Bytes& payload,
                      std::uint8_t code = 0) {
  Bytes frame = version == 1 ? Bytes{'G', 't', command, code} : Bytes{'W', 'u', 1, command, code, 0, 0, 0};
  for (int shift = 24; shift >= 0; shift -= 8) {
    frame.push_back(static_cast<std::uint8_t>(payload.size() >> shift));
  }
  frame.insert(frame.end(), payload.begin(), payload.end());
  return frame;
}

}  // namespace varkel::test
