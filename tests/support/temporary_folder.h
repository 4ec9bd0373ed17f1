#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace varkel::test {

/// A new folder that no other run of the tests uses, removed with its content.
class TemporaryFolder {
 public:
  TemporaryFolder() { std::filesystem::create_directories(path_); }
  ~TemporaryFolder() {
    std::error_code fault;
    std::filesystem::remove_all(path_, fault);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  const std::filesystem::path path_ = testing::TempDir() + "varkel_" + std::to_string(std::random_device()());
};

}  // namespace varkel::test
