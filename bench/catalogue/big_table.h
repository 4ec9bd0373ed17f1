#pragma once

#include <cstddef>
#include <string>

namespace varkel::bench {

/// A model table with any number of variables, in a file that is removed with the object: the rows of
/// Quenta's table repeated, each time with new group identifiers, commands and names.
class BigTable {
 public:
  explicit BigTable(std::size_t variables);
  ~BigTable();
  BigTable(const BigTable&) = delete;
  BigTable& operator=(const BigTable&) = delete;

  const std::string& path() const { return path_; }
  /// Bytes of all cells, without separators and quotes.
  std::size_t text_size() const { return text_size_; }

 private:
  std::string path_;
  std::size_t text_size_ = 0;
};

}  // namespace varkel::bench
