#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace quarn::test {

inline std::vector<std::uint8_t> FromHex(const std::string& text) {
  std::vector<std::uint8_t> bytes;
  std::istringstream in(text);
  for (unsigned value = 0; in >> std::hex >> value;) {
    bytes.push_back(static_cast<std::uint8_t>(value));
  }
  return bytes;
}

/// The rows of the table that has this heading row on a protocol page; there must be `count` of them.
inline std::vector<std::vector<std::string>> PageTable(const std::string& path, const std::string& heading,
                                                       std::size_t count) {
  std::ifstream page(path);
  std::string line;
  while (std::getline(page, line) && line != heading) {
  }
  std::getline(page, line);
  std::vector<std::vector<std::string>> rows;
  while (std::getline(page, line) && line.starts_with('|')) {
    std::vector<std::string>& row = rows.emplace_back();
    std::istringstream cells(line.substr(1));
    for (std::string cell; std::getline(cells, cell, '|');) {
      row.push_back(cell);
    }
  }
  EXPECT_EQ(rows.size(), count) << heading;
  return rows;
}

}  // namespace quarn::test
