#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"
#include "tests/catalogue/table_file.h"

namespace varkel::test {

/// The row of a variable of one byte that is read with command 0x01 and defaults to 0, unless `fields` say
/// otherwise.
inline std::string ByteRow(const std::string& fields) {
  return fields + ";Get=0x01;VarType=uint8;VarLen=1;DefaultValue=0";
}

/// A model with one page of one group; its rows are written as for `TableText`.
inline std::shared_ptr<Model> ModelOf(std::vector<std::string> rows, ValueStore::Listener listener = {}) {
  rows.insert(rows.begin(), "0,Page,Group");
  const TableFile file(TableText(rows));
  auto catalogue = std::make_shared<ConfigParser>(file.path());
  catalogue->ExtractConfigInfo();
  return std::make_shared<Model>("table", std::move(catalogue), std::move(listener));
}

}  // namespace varkel::test
