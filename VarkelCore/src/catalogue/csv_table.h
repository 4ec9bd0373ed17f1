#pragma once

#include <cstddef>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace varkel {

class CsvRow;
class CsvTable;

/// A column by name. It is looked up in the header once, on the first access to one of its cells, so an
/// object serves one table only.
class CsvColumn {
 public:
  explicit CsvColumn(std::string name) : name_(std::move(name)) {}
  const std::string& name() const { return name_; }

 private:
  friend class CsvRow;
  class CsvTable;
  static constexpr std::size_t kUnresolved = static_cast<std::size_t>(-1);
  std::string name_;
  mutable std::size_t index_ = kUnresolved;
};

/// One row of a table. The row and the texts of its cells are valid only during the call that received it.
class CsvRow {
 public:
  /// The cell's text exactly as in the file, spaces included; empty if the row is too short. Raises
  /// std::runtime_error "Can't find a column named …" if the header lacks the column.
  std::string_view Cell(const CsvColumn& column) const {
    return column.index_ < size() ? Text(column.index_) : CellOfNewColumn(column);
  }
  std::string_view Cell(std::size_t index) const { return index < size() ? Text(index) : std::string_view(); }
  /// Like Cell, but a missing column counts as an empty cell.
  std::string_view CellIfPresent(const CsvColumn& column) const;

  std::size_t size() const { return bounds_.size() - 1; }
  /// The row's number within the file: the header is row 1, blank lines don't count.
  std::size_t number() const { return number_; }
  /// The line of the file, from 1, where the row begins.
  std::size_t line() const { return line_; }

 private:
  friend class CsvTable;

  std::string_view Text(std::size_t index) const {
    return {text_.data() + bounds_[index], bounds_[index + 1] - bounds_[index]};
  }
  std::string_view CellOfNewColumn(const CsvColumn& column) const;
  std::size_t Find(const CsvColumn& column) const;

  std::string text_;                    // all cells, concatenated
  std::vector<std::size_t> bounds_{0};  // start of each cell within text_, and the end of the last one
  std::size_t number_ = 0;
  std::size_t line_ = 1;
  const CsvTable* table_ = nullptr;
};

/// Reads a file of comma-separated values with a header row. Cells may be quoted and then hold commas,
/// line breaks and doubled quotes; lines end in LF, CRLF or CR; a UTF-8 byte-order mark is skipped.
///
/// The file is read in blocks; only the current row is kept in memory.
class CsvTable {
 public:
  /// Opens the file; a folder is not a file.
  explicit CsvTable(const std::string& path);
  ~CsvTable();
  CsvTable(const CsvTable&) = delete;
  CsvTable& operator=(const CsvTable&) = delete;

  bool is_open() const { return file_.is_open(); }

  /// Passes every row after the header to `handle`, in file order, and closes the file. An exception from
  /// `handle` ends the reading and passes through. Malformed quotes and read errors raise std::runtime_error.
  void ForEachRow(const std::function<void(const CsvRow&)>& handle);

  /// Number of the row being read.
  std::size_t row_number() const { return row_.number(); }
  std::size_t line() const { return line_; }

  /// The cells of the header row; empty before it has been read.
  const std::vector<std::string>& header() const { return header_; }
  /// A text to append to the error for a missing column: empty, or that the cells are separated by ";".
  std::string WrongSeparator() const;

 private:
  friend class CsvRow;
  struct Callbacks;  // what libcsv calls
  struct Parser;     // libcsv's state

  void ReadBlocks(Parser& parser);
  void EndCell(std::string_view text);
  void EndLine(int terminator);
  void EndRow();

  std::string path_;
  std::ifstream file_;
  std::vector<std::string> header_;
  CsvRow row_;
  std::size_t line_ = 1;          // the one being read
  bool is_after_return_ = false;  // the last line ended in CR, which a LF may follow
  const std::function<void(const CsvRow&)>* handle_ = nullptr;
};

}  // namespace varkel
