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

/// The history of the selected model's live variables for QML and the plot, which identify them by `var_id`.
/// Lives on the user interface's thread.
class LiveHistory : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  /// Records the new readings among the changed values of the model.
  void Follow(const std::shared_ptr<Model>& model, const std::vector<const VarInfo*>& changed);
  void Clear();

  /// Null if nothing was recorded for the variable.
  const ReadingHistory::Points* Points(const QString& var_id) const;

  /// A map of texts: "name", "unit", "min", "max", "mean" and "last"; empty if nothing was recorded.
  Q_INVOKABLE QVariantMap summary(const QString& var_id) const;
  /// Writes the readings of these variables to a CSV file, one per line: time in UTC, name, unit and value.
  /// Returns the reason for a failure; empty on success.
  Q_INVOKABLE QString saveCsv(const QUrl& file, const QStringList& var_ids) const;

 signals:
  void changed();

 private:
  const VarInfo* Find(const QString& var_id) const;

  std::shared_ptr<Model> model_;
  ReadingHistory history_;
};

}  // namespace varkel
