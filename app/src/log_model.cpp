#include "app/src/log_model.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSaveFile>
#include <algorithm>

namespace {

constexpr int kBatchMs = 40;

enum Role { kTime = Qt::UserRole + 1, kLevel, kLevelName, kMessage };

QString LevelName(LogModel::Level level) {
  static const std::array<QString, 4> kNames{"INFO", "WARN", "ERROR", "BYTES"};
  return kNames[static_cast<std::size_t>(level)];
}

QString TimeText(const QTime& time) {
  return time.toString("HH:mm:ss.zzz");
}

}  // namespace

LogModel::LogModel(QObject* parent) : QAbstractListModel(parent) {
  batch_.setInterval(kBatchMs);
  batch_.setSingleShot(true);
  connect(&batch_, &QTimer::timeout, this, &LogModel::TakeIncoming);
}

int LogModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant LogModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() < 0 || index.row() >= rowCount()) {
    return {};
  }
  const Line& line = rows_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case kTime:
      return TimeText(line.time);
    case kLevel:
      return line.level;
    case kLevelName:
      return LevelName(line.level);
    case kMessage:
      return line.message;
    default:
      return {};
  }
}

QHash<int, QByteArray> LogModel::roleNames() const {
  return {{kTime, "time"}, {kLevel, "level"}, {kLevelName, "levelName"}, {kMessage, "message"}};
}

void LogModel::setPaused(bool paused) {
  if (paused_ == paused) {
    return;
  }
  paused_ = paused;
  emit pausedChanged();
  if (!paused_) {
    TakeIncoming();
  }
}

void LogModel::append(int level, const QString& message) {
  Line line;
  line.number = next_number_++;
  line.time = QTime::currentTime();
  line.level = static_cast<Level>(std::clamp(level, static_cast<int>(Info), static_cast<int>(Bytes)));
  line.message = message;
  while (line.message.endsWith('\n')) {
    line.message.chop(1);
  }
  incoming_.push_back(std::move(line));
  if (incoming_.size() > kMaxLines) {
    incoming_.pop_front();
  }
  if (paused_) {
    emit waitingChanged();
  } else if (!batch_.isActive()) {
    batch_.start();
  }
}

void LogModel::setLevelShown(int level, bool shown) {
  if (level < Info || level > Bytes || shown_levels_[static_cast<std::size_t>(level)] == shown) {
    return;
  }
  shown_levels_[static_cast<std::size_t>(level)] = shown;
  Rebuild();
}

void LogModel::clear() {
  lines_.clear();
  incoming_.clear();
  emit waitingChanged();
  Rebuild();
}

void LogModel::copy() const {
  QGuiApplication::clipboard()->setText(Text());
}

QString LogModel::save(const QUrl& file) const {
  const QString path = file.toLocalFile();
  QSaveFile target(path);
  if (target.open(QIODevice::WriteOnly | QIODevice::Text)) {
    target.write(Text().toUtf8());
    if (target.commit()) {
      return {};
    }
  }
  return QString("The log could not be written to %1: %2.").arg(path, target.errorString());
}

QString LogModel::Text() const {
  QString text;
  for (const Line& line : rows_) {
    text += TimeText(line.time) + ' ' + LevelName(line.level).leftJustified(5) + ' ' + line.message + '\n';
  }
  return text;
}

void LogModel::TakeIncoming() {
  if (paused_ || incoming_.empty()) {
    return;
  }
  const auto shown =
      std::count_if(incoming_.begin(), incoming_.end(), [this](const Line& l) { return IsShown(l); });
  if (shown > 0) {
    beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(shown) - 1);
    std::copy_if(incoming_.begin(), incoming_.end(), std::back_inserter(rows_),
                 [this](const Line& l) { return IsShown(l); });
    endInsertRows();
  }
  lines_.insert(lines_.end(), incoming_.begin(), incoming_.end());
  incoming_.clear();
  DropOldest();
  emit waitingChanged();
  emit countChanged();
}

void LogModel::DropOldest() {
  if (lines_.size() <= kMaxLines) {
    return;
  }
  lines_.erase(lines_.begin(), lines_.end() - static_cast<std::ptrdiff_t>(kMaxLines));
  const auto first_kept = std::find_if(rows_.begin(), rows_.end(),
                                       [this](const Line& l) { return l.number >= lines_.front().number; });
  if (first_kept != rows_.begin()) {
    beginRemoveRows({}, 0, static_cast<int>(first_kept - rows_.begin()) - 1);
    rows_.erase(rows_.begin(), first_kept);
    endRemoveRows();
  }
}

void LogModel::Rebuild() {
  beginResetModel();
  rows_.clear();
  std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(rows_),
               [this](const Line& l) { return IsShown(l); });
  endResetModel();
  emit countChanged();
}
