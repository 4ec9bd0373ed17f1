#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QTimer>
#include <QUrl>
#include <array>
#include <cstdint>
#include <deque>

/// The lines of the log window: the newest 10,000 (fewer if they are very long). Those of the levels that the
/// user selected are the rows.
///
/// Lives on the user interface's thread. Lines are added in batches, so that a flood of them causes a few
/// updates of the view per second, not one per line. Their text may come from the sensor: it is shown, copied
/// and saved as plain text, one line per entry; only the displayed text is truncated.
class LogModel : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ rowCount NOTIFY countChanged)
  Q_PROPERTY(int waiting READ waiting NOTIFY waitingChanged)
  Q_PROPERTY(bool paused READ paused WRITE setPaused NOTIFY pausedChanged)

 public:
  enum Level { Info, Warning, Error, Bytes };
  Q_ENUM(Level)

  static constexpr std::size_t kMaxLines = 10000;
  static constexpr qint64 kMaxCharacters = qint64{32} << 20;

  explicit LogModel(QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  /// The number of lines that arrived while paused and are not shown yet.
  int waiting() const { return static_cast<int>(incoming_.size()); }
  bool paused() const { return paused_; }
  void setPaused(bool paused);

  Q_INVOKABLE void append(int level, const QString& message);
  Q_INVOKABLE void setLevelShown(int level, bool shown);
  Q_INVOKABLE void clear();
  /// Copies the displayed lines, one text line each, to the clipboard.
  Q_INVOKABLE void copy() const;
  /// The lines of the request and the reply that belong to the byte flow line in that row, unchanged. The
  /// second is empty for a request's line; empty list for lines of other levels.
  Q_INVOKABLE QStringList exchange(int row) const;
  /// Sets the explanation shown below the line; an empty text removes it.
  Q_INVOKABLE void explain(int row, const QString& meaning);
  /// Saves the displayed lines to a file, in UTF-8. Returns an empty text, or a sentence that says why it
  /// failed.
  Q_INVOKABLE QString save(const QUrl& file) const;

  QString Text() const;

 signals:
  void countChanged();
  void waitingChanged();
  void pausedChanged();

 private:
  struct Line {
    std::uint64_t number = 0;
    QTime time;
    Level level = Info;
    QString message;
    QString meaning;
  };

  bool IsShown(const Line& line) const { return shown_levels_[static_cast<std::size_t>(line.level)]; }
  /// How many of the oldest lines exceed the limits.
  static std::size_t Excess(const std::deque<Line>& lines, qint64 characters);
  static void Drop(std::deque<Line>& lines, std::size_t excess, qint64& characters);
  void TakeIncoming();
  void DropOldest();
  void Rebuild();

  std::deque<Line> lines_;
  std::deque<Line> rows_;  // the lines_ whose level is selected; texts are shared
  std::deque<Line> incoming_;
  qint64 characters_ = 0;  // of lines_
  qint64 incoming_characters_ = 0;
  std::array<bool, 4> shown_levels_{true, true, true, true};
  std::uint64_t next_number_ = 0;
  bool paused_ = false;
  QTimer batch_;
};
