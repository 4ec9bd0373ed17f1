#include "VarkelCore/src/pages/variable_details.h"

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <chrono>

#include "VarkelCore/src/pages/page_description.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel {

namespace {

QString ByteCount(std::uint32_t count) {
  return count == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(count);
}

QString Range(const VarInfo& var) {
  if (var.range_min == 0 && var.range_max == 0) return {};
  return QStringLiteral("%1 to %2").arg(var.range_min).arg(var.range_max);
}

QString Options(const VarInfo& var) {
  const QVariantList labels = OptionLabels(var);
  QStringList lines;
  for (int i = 0; i < labels.size(); ++i) {
    const QString value = QString::number(var.options[static_cast<std::size_t>(i)]);
    const QString label = labels[i].toString();
    lines.append(label == value ? value : value + QStringLiteral("  ") + label);
  }
  return lines.join('\n');
}

QString Place(const std::string& command, std::uint32_t first, std::uint32_t length, const char* where) {
  if (command.empty()) return {};
  const QString bytes = length > 1 ? QStringLiteral("bytes %1 to %2").arg(first).arg(first + (length - 1))
                                   : QStringLiteral("byte %1").arg(first);
  return QStringLiteral("%1, %2 of the %3").arg(QString::fromStdString(command), bytes, QLatin1String(where));
}

QString Origin(const ValueStore::Shown& shown) {
  const bool is_from_earlier_sensor = shown.stale && shown.origin != ValueOrigin::kEdited;
  if (is_from_earlier_sensor) return QStringLiteral("read from an earlier sensor");
  switch (shown.origin) {
    case ValueOrigin::kDefault:
      return QStringLiteral("not read, the table's default");
    case ValueOrigin::kRead:
      return QStringLiteral("read from the sensor");
    case ValueOrigin::kEdited:
      return QStringLiteral("edited, not saved yet");
    case ValueOrigin::kSent:
      return QStringLiteral("saved, not read back yet");
    case ValueOrigin::kVerified:
      return QStringLiteral("saved and read back");
    case ValueOrigin::kDiffers:
      return QStringLiteral("saved, but the sensor holds another value");
  }
  return {};
}

QString ReadTime(const ValueStore::Shown& shown) {
  if (!shown.read_time) return {};
  const auto since_epoch =
      std::chrono::duration_cast<std::chrono::milliseconds>(shown.read_time->time_since_epoch());
  return QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(since_epoch.count()),
                               QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString LastSave(const Model& model, const VarInfo& var) {
  const auto verification = model.values.Verify(var);
  if (!verification) return {};
  const QString sent = QStringLiteral("sent ") + QString::fromStdString(verification->sent);
  if (!verification->read_back) return sent + QStringLiteral(", not read back yet");
  if (verification->equal) return sent + QStringLiteral(", read back the same");
  return sent + QStringLiteral(", sensor holds ") + QString::fromStdString(*verification->read_back);
}

}  // namespace

QString BareUnit(const VarInfo& var) {
  QString unit = QString::fromStdString(var.unit).trimmed();
  if (unit.startsWith('(') && unit.endsWith(')')) unit = unit.mid(1, unit.size() - 2);
  return unit;
}

QVariantList VariableDetails(const Model& model, const VarInfo& var) {
  const ValueStore::Shown shown = model.values.Show(var);
  const struct {
    const char* caption;
    QString text;
  } kLines[] = {
      {"Value", QString::fromStdString(shown.text)},
      {"Raw bytes", QString::fromStdString(quarn::lidar::HexText(shown.raw))},
      {"Origin", Origin(shown)},
      {"Read at", ReadTime(shown)},
      {"Last save", LastSave(model, var)},
      {"Unit", BareUnit(var)},
      {"Range", Range(var)},
      {"Options", Options(var)},
      {"Type", QString::fromStdString(var.var_type) + QStringLiteral(", ") + ByteCount(shown.length)},
      {"Default", QString::fromStdString(var.default_val)},
      {"Read by", Place(var.get_cmd, var.get_start_pos, shown.length, "reply")},
      {"Set by", Place(var.set_cmd, shown.set_start_pos, shown.length, "payload")},
  };
  QVariantList lines;
  for (const auto& [caption, text] : kLines) {
    lines.append(
        QVariantMap{{QStringLiteral("caption"), QLatin1String(caption)}, {QStringLiteral("text"), text}});
  }
  return lines;
}

}  // namespace varkel
