#include "VarkelCore/src/pages/search_model.h"

#include "VarkelCore/src/pages/page_description.h"

namespace varkel {

namespace {

QString ShownValue(const Model& model, const VarInfo& var) {
  const QString text = QString::fromStdString(model.values.Show(var).text);
  const int chosen = OptionValues(var).indexOf(text);
  return chosen < 0 ? text : OptionLabels(var).at(chosen).toString();
}

QString Commands(const VarInfo& var) {
  if (var.set_cmd.empty()) return QString::fromStdString(var.get_cmd);
  const QString set = QStringLiteral("set ") + QString::fromStdString(var.set_cmd);
  return var.get_cmd.empty() ? set : QString::fromStdString(var.get_cmd) + QStringLiteral(", ") + set;
}

QString PlaceText(const ConfigParser& catalogue, const FoundRow& row) {
  const auto& titles = catalogue.module_titles()[static_cast<std::size_t>(row.page)];
  return QString::fromStdString(titles.front()) + QStringLiteral(" › ") +
         QString::fromStdString(titles[static_cast<std::size_t>(row.group) + 1]);
}

}  // namespace

SearchModel::SearchModel(const ModelSelection& models, QObject* parent)
    : QAbstractListModel(parent), models_(models) {}

int SearchModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(found_.size());
}

QHash<int, QByteArray> SearchModel::roleNames() const {
  return {{kLabel, "label"},       {kPlace, "place"}, {kText, "value"},
          {kCommands, "commands"}, {kPage, "page"},   {kRow, "row"}};
}

QVariant SearchModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const FoundRow& row = found_[static_cast<std::size_t>(index.row())];
  const Model& model = finder_->model();
  switch (role) {
    case kLabel:
      return QString::fromStdString(row.var->var_name + row.var->unit);
    case kPlace:
      return PlaceText(*model.catalogue, row);
    case kText:
      return ShownValue(model, *row.var);
    case kCommands:
      return Commands(*row.var);
    case kPage:
      return row.page;
    case kRow:
      return row.row;
    default:
      return {};
  }
}

void SearchModel::setQuery(const QString& query) {
  const auto model = models_.model();
  beginResetModel();
  query_ = query;
  found_.clear();
  if (!model) {
    finder_.reset();
  } else if (!finder_ || &finder_->model() != model.get()) {
    finder_.emplace(model);
  }
  if (finder_) found_ = finder_->Find(query.toStdString(), kMaxRows);
  endResetModel();
  emit queryChanged();
}

}  // namespace varkel
