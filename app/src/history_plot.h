#pragma once

#include <QColor>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <vector>

#include "VarkelCore/src/pages/live_history.h"

/// A plot of live variables over time. If all have the same unit they share the scale at the left; with
/// several units each curve is scaled from its smallest value to its largest, and no scale is drawn.
///
/// Painted in software, which also works on machines without a graphics card.
class HistoryPlot : public QQuickPaintedItem {
  Q_OBJECT
  Q_PROPERTY(QObject* history READ history WRITE setHistory NOTIFY inputChanged)
  /// The `var_id`s of the curves.
  Q_PROPERTY(QStringList series MEMBER series_ NOTIFY inputChanged)
  /// The curves' colours, repeated if there are too few.
  Q_PROPERTY(QVariantList colours MEMBER colours_ NOTIFY inputChanged)
  Q_PROPERTY(QColor textColour MEMBER text_colour_ NOTIFY inputChanged)
  Q_PROPERTY(QColor lineColour MEMBER line_colour_ NOTIFY inputChanged)
  Q_PROPERTY(int fontSize MEMBER font_size_ NOTIFY inputChanged)
  /// The pointer's position in pixels from the left; negative if there is no pointer.
  Q_PROPERTY(qreal pointer MEMBER pointer_ NOTIFY inputChanged)
  /// Time and values at the pointer; empty without a pointer.
  Q_PROPERTY(QString reading READ reading NOTIFY readingChanged)

 public:
  explicit HistoryPlot(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

  QObject* history() const { return history_; }
  void setHistory(QObject* history);
  QString reading() const { return reading_; }

 signals:
  void inputChanged();
  void readingChanged();

 private:
  using Points = varkel::ReadingHistory::Points;
  struct Curve {
    const Points* points = nullptr;
    QColor colour;
    QString name;
    QString unit;
    varkel::ReadingHistory::Summary range;
  };
  struct Scale {  // from values and times to pixels
    QRectF area;
    qint64 first_ms = 0;
    qint64 last_ms = 0;
    double X(qint64 ms) const;
    double Y(double value, const varkel::ReadingHistory::Summary& range) const;
  };

  std::vector<Curve> Curves() const;
  Scale MakeScale(const std::vector<Curve>& curves) const;
  void PaintScale(QPainter& painter, const Scale& scale, const std::vector<Curve>& curves) const;
  void Refresh();

  QPointer<varkel::LiveHistory> history_;
  QStringList series_;
  QVariantList colours_;
  QColor text_colour_ = Qt::white;
  QColor line_colour_ = Qt::gray;
  int font_size_ = 12;
  qreal pointer_ = -1;
  QString reading_;
};
