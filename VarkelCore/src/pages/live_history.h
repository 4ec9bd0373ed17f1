#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <memory>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/values/reading_history.h"

namespace varkel {

/// The history of the selected model's live variables for QML and the plot, which name them by `var_id`.
/// Lives on the user interface's thread.
class LiveHistory : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  /// Takes over what events have changed in the model's values.
  void Follow(const std::shared_ptr<Model>& model, const std::vector<const VarInfo*>& changed);
  void Clear();

  /// Null when nothing was recorded of the variable.
  const ReadingHistory::Points* Points(const QString& var_id) const;

  /// "name", "unit", and as texts "min", "max", "mean" and "last"; empty when nothing was recorded.
  Q_INVOKABLE QVariantMap summary(const QString& var_id) const;
  /// Writes the readings of these variables into a file, a line each: time in UTC, name, unit and value.
  /// Returns why that failed, or nothing.
  Q_INVOKABLE QString saveCsv(const QUrl& file, const QStringList& var_ids) const;

 signals:
  void changed();

 private:
  const VarInfo* Find(const QString& var_id) const;

  std::shared_ptr<Model> model_;
  ReadingHistory history_;
};

}  // namespace varkel
