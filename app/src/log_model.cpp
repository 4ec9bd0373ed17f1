#include "app/src/log_model.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>
#include <QSaveFile>
#include <algorithm>
#include <utility>

#include "app/src/plain_text.h"

namespace {

constexpr int kBatchMs = 40;

enum Role { kTime = Qt::UserRole + 1, kLevel, kLevelName, kMessage, kMeaning };

QString LevelName(LogModel::Level level) {
  static const std::array<QString, 4> kNames{"INFO", "WARN", "ERROR", "BYTES"};
  return kNames[static_cast<std::size_t>(level)];
}

QString TimeText(const QTime& time) {
  return QLocale::c().toString(time, "HH:mm:ss.zzz");
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
      return PlainText::line(line.message, PlainText::kShownField);
    case kMeaning:
      return line.meaning;
    default:
      return {};
  }
}

QHash<int, QByteArray> LogModel::roleNames() const {
  return {{kTime, "time"},
          {kLevel, "level"},
          {kLevelName, "levelName"},
          {kMessage, "message"},
          {kMeaning, "meaning"}};
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
  incoming_characters_ += line.message.size();
  incoming_.push_back(std::move(line));
  Drop(incoming_, Excess(incoming_, incoming_characters_), incoming_characters_);
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
  characters_ = incoming_characters_ = 0;
  emit waitingChanged();
  Rebuild();
}

void LogModel::copy() const {
  QGuiApplication::clipboard()->setText(Text());
}

QStringList LogModel::exchange(int row) const {
  if (row < 0 || row >= rowCount() || rows_[static_cast<std::size_t>(row)].level != Bytes) {
    return {};
  }
  const QString& message = rows_[static_cast<std::size_t>(row)].message;
  if (!message.startsWith("RECV: ")) {
    return {message, {}};
  }
  for (int asked = row - 1; asked >= 0; --asked) {
    const Line& line = rows_[static_cast<std::size_t>(asked)];
    if (line.level == Bytes) {
      return {line.message.startsWith("SEND: ") ? line.message : QString(), message};
    }
  }
  return {QString(), message};
}

void LogModel::explain(int row, const QString& meaning) {
  if (row < 0 || row >= rowCount()) {
    return;
  }
  Line& shown = rows_[static_cast<std::size_t>(row)];
  shown.meaning = meaning;
  const auto kept = std::find_if(lines_.begin(), lines_.end(),
                                 [&shown](const Line& line) { return line.number == shown.number; });
  if (kept != lines_.end()) {
    kept->meaning = meaning;
  }
  emit dataChanged(index(row), index(row), {kMeaning});
}

QString LogModel::save(const QUrl& file) const {
  const QString path = file.toLocalFile();
  QSaveFile target(path);
  if (target.open(QIODevice::WriteOnly | QIODevice::Text)) {
    const QByteArray text = Text().toUtf8();
    // Flushed first, because commit does not report a full disk while writing the rest of its buffer.
    if (target.write(text) == text.size() && target.flush() && target.commit()) {
      return {};
    }
    if (target.error() == QFileDevice::NoError) {
      return QString("The log could not be written to %1: the disk may be full.").arg(path);
    }
  }
  return QString("The log could not be written to %1: %2.").arg(path, target.errorString());
}

QString LogModel::Text() const {
  QString text;
  for (const Line& line : rows_) {
    text += TimeText(line.time) + ' ' + LevelName(line.level).leftJustified(5) + ' ' +
            PlainText::OneLine(line.message) + '\n';
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
  characters_ += std::exchange(incoming_characters_, 0);
  incoming_.clear();
  DropOldest();
  emit waitingChanged();
  emit countChanged();
}

std::size_t LogModel::Excess(const std::deque<Line>& lines, qint64 characters) {
  std::size_t excess = 0;
  while (lines.size() - excess > kMaxLines || (lines.size() - excess > 1 && characters > kMaxCharacters)) {
    characters -= lines[excess++].message.size();
  }
  return excess;
}

void LogModel::Drop(std::deque<Line>& lines, std::size_t excess, qint64& characters) {
  for (; excess > 0; --excess) {
    characters -= lines.front().message.size();
    lines.pop_front();
  }
}

void LogModel::DropOldest() {
  const std::size_t excess = Excess(lines_, characters_);
  if (excess == 0) {
    return;
  }
  Drop(lines_, excess, characters_);
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
