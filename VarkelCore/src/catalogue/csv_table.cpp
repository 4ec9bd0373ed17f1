#include "VarkelCore/src/catalogue/csv_table.h"

#include <csv.h>

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "libquarn/Platform/src/file_path.h"

namespace varkel {
namespace {

constexpr std::size_t kBlockSize = 8192;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Spaces belong to the cell: texts are taken exactly as they are.
int IsTrimmed(unsigned char /*character*/) {
  return 0;
}

// Lines are counted only after a failure. `offset` is a position in the file, including the byte-order mark.
std::size_t LineAt(const std::string& path, std::size_t offset) {
  std::ifstream file(path, std::ios::binary);
  std::size_t line = 1;
  for (std::istreambuf_iterator<char> at(file); offset > 0 && at != std::istreambuf_iterator<char>();
       ++at, --offset) {
    line += *at == '\n' ? 1U : 0U;
  }
  return line;
}

}  // namespace

std::string_view CsvRow::CellIfPresent(const CsvColumn& column) const {
  if (column.index_ == CsvColumn::kUnresolved) {
    column.index_ = Find(column);
  }
  return Cell(column.index_);  // a position that no row has
}

// Also called for a cell past the end of a short row.
std::string_view CsvRow::CellOfNewColumn(const CsvColumn& column) const {
  if (column.index_ == CsvColumn::kUnresolved) {
    column.index_ = Find(column);
  }
  if (column.index_ == CsvColumn::kUnresolved) {
    throw std::runtime_error("Can't find a column named " + column.name_ + table_->WrongSeparator());
  }
  return Cell(column.index_);
}

std::size_t CsvRow::Find(const CsvColumn& column) const {
  const std::vector<std::string>& header = table_->header_;
  const auto found = std::find(header.begin(), header.end(), column.name_);
  return found == header.end() ? CsvColumn::kUnresolved : static_cast<std::size_t>(found - header.begin());
}

struct CsvTable::Parser {
  Parser() {
    if (csv_init(&state, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
      throw std::runtime_error("Can't set up the table reader");
    }
    csv_set_space_func(&state, IsTrimmed);
  }
  ~Parser() { csv_free(&state); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  csv_parser state{};
  std::exception_ptr failure;  // an exception from a handler; libcsv is C and must not be unwound
};

struct CsvTable::Callbacks {
  CsvTable* table;
  Parser* parser;

  template <typename Work>
  static void Guarded(void* data, Work work) {
    const auto* self = static_cast<Callbacks*>(data);
    if (self->parser->failure != nullptr) {
      return;
    }
    try {
      work(*self->table);
    } catch (...) {
      self->parser->failure = std::current_exception();
    }
  }
  static void OnCell(void* cell, std::size_t size, void* data) {
    const std::string_view text(static_cast<const char*>(cell), size);
    Guarded(data, [text](CsvTable& owner) { owner.EndCell(text); });
  }
  static void OnLine(int terminator, void* data) {
    Guarded(data, [terminator](CsvTable& owner) { owner.EndLine(terminator); });
  }
};

CsvTable::CsvTable(const std::string& path) : path_(path) {
  const std::filesystem::path file = quarn::platform::FilePath(path);
  std::error_code ignored;
  if (!std::filesystem::is_directory(file, ignored)) {
    file_.rdbuf()->pubsetbuf(nullptr, 0);  // ReadBlocks takes whole blocks
    file_.open(file, std::ios::binary);
  }
}

CsvTable::~CsvTable() = default;

void CsvTable::ForEachRow(const std::function<void(const CsvRow&)>& handle) {
  handle_ = &handle;
  header_.clear();
  line_ = 1;
  row_ = CsvRow();
  row_.table_ = this;
  row_.number_ = 1;
  Parser parser;
  ReadBlocks(parser);
  file_.close();
}

void CsvTable::ReadBlocks(Parser& parser) {
  Callbacks callbacks{this, &parser};
  std::array<char, kBlockSize> block;
  std::size_t offset = 0;
  for (bool first = true; file_; first = false) {
    file_.read(block.data(), static_cast<std::streamsize>(block.size()));
    std::string_view bytes(block.data(), static_cast<std::size_t>(file_.gcount()));
    if (first && bytes.starts_with(kByteOrderMark)) {
      bytes.remove_prefix(kByteOrderMark.size());
      offset = kByteOrderMark.size();
    }
    const std::size_t parsed = csv_parse(&parser.state, bytes.data(), bytes.size(), Callbacks::OnCell,
                                         Callbacks::OnLine, &callbacks);
    if (parser.failure != nullptr) {
      std::rethrow_exception(parser.failure);
    }
    offset += parsed;
    if (parsed != bytes.size()) {
      throw std::runtime_error("Malformed quotes in line " + std::to_string(LineAt(path_, offset)) + " of " +
                               path_ + ": " + csv_strerror(csv_error(&parser.state)));
    }
  }
  if (file_.bad()) {
    throw std::runtime_error("Can't read past line " + std::to_string(LineAt(path_, offset)) + " of " +
                             path_);
  }
  const int result = csv_fini(&parser.state, Callbacks::OnCell, Callbacks::OnLine, &callbacks);
  if (parser.failure != nullptr) {
    std::rethrow_exception(parser.failure);
  }
  if (result != 0) {
    throw std::runtime_error("A quote opened in row " + std::to_string(row_.number_) + " of " + path_ +
                             " is never closed");
  }
}

// In locales with decimal commas, spreadsheet programs separate cells with ";".
std::string CsvTable::WrongSeparator() const {
  const bool is_one_cell = header_.size() == 1 && header_.front().find(';') != std::string::npos;
  return is_one_cell
             ? ": " + path_ + " separates its cells with \";\". Save it as comma-separated text (CSV)."
             : "";
}

void CsvTable::EndCell(std::string_view text) {
  if (row_.size() == 0) {
    row_.line_ = line_;
  }
  is_after_return_ = false;
  line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  row_.text_.append(text);
  row_.bounds_.push_back(row_.text_.size());
}

// Called for blank lines, too, and twice for CRLF.
void CsvTable::EndLine(int terminator) {
  if (row_.size() > 0) {
    EndRow();
  }
  line_ += terminator == '\n' && is_after_return_ ? 0U : 1U;
  is_after_return_ = terminator == '\r';
}

void CsvTable::EndRow() {
  if (row_.number_ == 1) {
    for (std::size_t i = 0; i < row_.size(); ++i) {
      header_.emplace_back(row_.Cell(i));
    }
  } else {
    (*handle_)(row_);
  }
  row_.text_.clear();
  row_.bounds_.resize(1);
  ++row_.number_;
}

}  // namespace varkel
