#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// A row of a page, found by a search.
struct FoundRow {
  const VarInfo* var = nullptr;
  int page = 0;
  int group = 0;
  int row = 0;  ///< its place in the page's list of rows
};

/// Searches the rows of all pages of a model: names, units, commands, option labels and present values.
///
/// On construction everything but the values is put into one lower-case text per row. Not thread-safe; the
/// values are read under the catalogue's lock.
class VariableFinder {
 public:
  explicit VariableFinder(std::shared_ptr<Model> model);

  /// The first `limit` rows in which all words of `query` occur, ignoring the case of ASCII letters: first
  /// those whose name begins with the query, then those whose name contains it, then the others; each group
  /// in page order. Empty for a query without a word.
  std::vector<FoundRow> Find(std::string_view query, std::size_t limit) const;

  const Model& model() const { return *model_; }

 private:
  struct Entry {
    FoundRow row;
    std::string name;
    std::string text;  ///< name, unit, commands and options, one per line
  };

  const std::shared_ptr<Model> model_;
  std::vector<Entry> entries_;
};

}  // namespace varkel
