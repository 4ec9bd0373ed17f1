#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"
#include "tests/catalogue/table_file.h"

namespace varkel::test {

/// A model with one page of one group; its rows are written as for `TableText`.
inline std::shared_ptr<Model> ModelOf(std::vector<std::string> rows, ValueStore::Listener listener = {}) {
  rows.insert(rows.begin(), "0,Page,Group");
  const TableFile file(TableText(rows));
  auto catalogue = std::make_shared<ConfigParser>(file.path());
  catalogue->ExtractConfigInfo();
  return std::make_shared<Model>("table", std::move(catalogue), std::move(listener));
}

}  // namespace varkel::test
