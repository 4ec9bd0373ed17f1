#include "VarkelCore/src/pages/variable_finder.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

#include "VarkelCore/src/pages/page_description.h"

namespace varkel {

namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return Lower(c); });
  return lower;
}

std::vector<std::string> Words(std::string_view query) {
  std::istringstream stream(Lower(query));
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::string SearchedText(const VarInfo& var) {
  std::string text = var.var_name + '\n' + var.unit + '\n' + var.get_cmd + '\n' + var.set_cmd;
  for (const auto& [option, label] : var.option_labels) text += '\n' + label;
  return Lower(text);
}

bool ContainsWithoutCase(const std::string& text, const std::string& word) {
  const auto equal = [](char a, char b) { return Lower(a) == b; };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), equal) != text.end();
}

}  // namespace

VariableFinder::VariableFinder(std::shared_ptr<Model> model) : model_(std::move(model)) {
  const ConfigParser& catalogue = *model_->catalogue;
  for (int page = 0; std::cmp_less(page, catalogue.module_vars().size()); ++page) {
    int row = 0;
    for (const PageRow& place : RowsOfPage(catalogue, page)) {
      if (const VarInfo* var = VariableAt(catalogue, page, place.group, place.index)) {
        entries_.push_back({{var, page, place.group, row}, Lower(var->var_name), SearchedText(*var)});
      }
      ++row;
    }
  }
}

std::vector<FoundRow> VariableFinder::Find(std::string_view query, std::size_t limit) const {
  const std::vector<std::string> words = Words(query);
  if (words.empty()) return {};
  std::string name = words.front();
  for (std::size_t i = 1; i < words.size(); ++i) name += ' ' + words[i];

  std::array<std::vector<FoundRow>, 3> ranks;
  const auto lock = model_->catalogue->LockValues();
  for (const Entry& entry : entries_) {
    const auto occurs = [&](const std::string& word) {
      return entry.text.find(word) != std::string::npos ||
             ContainsWithoutCase(entry.row.var->current_val, word);
    };
    if (!std::all_of(words.begin(), words.end(), occurs)) continue;
    const std::size_t place = entry.name.find(name);
    const std::size_t rank = place == 0 ? 0 : place != std::string::npos ? 1 : 2;
    if (ranks[rank].size() < limit) ranks[rank].push_back(entry.row);
  }
  std::vector<FoundRow> found;
  for (const auto& rank : ranks) {
    found.insert(found.end(), rank.begin(),
                 rank.begin() + static_cast<std::ptrdiff_t>(std::min(rank.size(), limit - found.size())));
  }
  return found;
}

}  // namespace varkel
