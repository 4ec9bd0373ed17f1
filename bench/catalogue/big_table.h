#pragma once

#include <cstddef>
#include <string>

namespace varkel::bench {

/// A model table with as many variables as wanted, in a file of its own that goes with the object: the rows
/// of the Quenta's table over and over, each round with group identifiers, commands and names of its own.
class BigTable {
 public:
  explicit BigTable(std::size_t variables);
  ~BigTable();
  BigTable(const BigTable&) = delete;
  BigTable& operator=(const BigTable&) = delete;

  const std::string& path() const { return path_; }
  /// Bytes of all cells, separators and quotes left out.
  std::size_t text_size() const { return text_size_; }

 private:
  std::string path_;
  std::size_t text_size_ = 0;
};

}  // namespace varkel::bench
