#include "app/src/history_plot.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QLineF>
#include <QLocale>
#include <QPainter>
#include <QVector>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

using varkel::ReadingHistory;

namespace {

constexpr qint64 kGapMs = 2000;  // the curve is interrupted at longer gaps, which have no value
constexpr double kCurveWidth = 1.5;
constexpr double kWidestBar = 3;  // pixels; more would look like steps

qint64 Milliseconds(const ReadingHistory::Point& point) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(point.time.time_since_epoch()).count();
}

bool IsGap(const ReadingHistory::Point& before, const ReadingHistory::Point& after) {
  return Milliseconds(after) - Milliseconds(before) > kGapMs;
}

QString WithUnit(double number, const QString& unit) {
  const QString text = QString::number(number, 'g', 12);
  return unit.isEmpty() ? text : text + ' ' + unit;
}

QString Duration(qint64 ms) {
  const qint64 seconds = (ms + 500) / 1000;
  return seconds < 120 ? QString("%1 s").arg(seconds) : QString("%1 min").arg(seconds / 60);
}

/// A constant curve is drawn through the middle.
ReadingHistory::Summary Widened(ReadingHistory::Summary range) {
  if (range.max > range.min) return range;
  const double room = std::max(1.0, std::abs(range.max) / 10);
  return {range.min - room, range.max + room, range.mean};
}

}  // namespace

HistoryPlot::HistoryPlot(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  connect(this, &HistoryPlot::inputChanged, this, &HistoryPlot::Refresh);
}

void HistoryPlot::setHistory(QObject* history) {
  if (history_ != nullptr) history_->disconnect(this);
  history_ = qobject_cast<varkel::LiveHistory*>(history);
  if (history_ != nullptr) {
    connect(history_, &varkel::LiveHistory::changed, this, &HistoryPlot::Refresh);
  }
  emit inputChanged();
}

QPointF HistoryPlot::Scale::At(const ReadingHistory::Point& point,
                               const ReadingHistory::Summary& range) const {
  return {X(Milliseconds(point)), Y(point.value, range)};
}

double HistoryPlot::Scale::X(qint64 ms) const {
  const auto span = static_cast<double>(std::max<qint64>(1, last_ms - first_ms));
  return area.left() + static_cast<double>(ms - first_ms) / span * area.width();
}

double HistoryPlot::Scale::Y(double value, const ReadingHistory::Summary& range) const {
  return area.bottom() - (value - range.min) / (range.max - range.min) * area.height();
}

std::vector<HistoryPlot::Curve> HistoryPlot::Curves() const {
  std::vector<Curve> curves;
  if (history_ == nullptr) return curves;
  for (int i = 0; i < series_.size(); ++i) {
    const Points* const points = history_->Points(series_[i]);
    if (points == nullptr) continue;
    const QVariantMap summary = history_->summary(series_[i]);
    const QColor colour = colours_.isEmpty() ? text_colour_ : colours_[i % colours_.size()].value<QColor>();
    curves.push_back({points, colour, summary.value("name").toString(), summary.value("unit").toString(),
                      ReadingHistory::Summarize(*points)});
  }
  const bool one_unit = std::all_of(curves.begin(), curves.end(),
                                    [&](const Curve& curve) { return curve.unit == curves.front().unit; });
  if (one_unit && !curves.empty()) {
    ReadingHistory::Summary all = curves.front().range;
    for (const Curve& curve : curves) {
      all.min = std::min(all.min, curve.range.min);
      all.max = std::max(all.max, curve.range.max);
    }
    for (Curve& curve : curves) curve.range = all;
  }
  for (Curve& curve : curves) curve.range = Widened(curve.range);
  return curves;
}

HistoryPlot::Scale HistoryPlot::MakeScale(const std::vector<Curve>& curves) const {
  const double text = font_size_ + 6;
  Scale scale{QRectF(1, text, width() - 2, height() - 2 * text), 0, 0};
  if (curves.empty()) return scale;
  scale.first_ms = Milliseconds(curves.front().points->front());
  scale.last_ms = Milliseconds(curves.front().points->back());
  for (const Curve& curve : curves) {
    scale.first_ms = std::min(scale.first_ms, Milliseconds(curve.points->front()));
    scale.last_ms = std::max(scale.last_ms, Milliseconds(curve.points->back()));
  }
  return scale;
}

void HistoryPlot::PaintScale(QPainter& painter, const Scale& scale, const std::vector<Curve>& curves) const {
  painter.setPen(line_colour_);
  for (int i = 0; i <= 4; ++i) {
    const double y = scale.area.top() + i * scale.area.height() / 4;
    painter.drawLine(QPointF(scale.area.left(), y), QPointF(scale.area.right(), y));
  }
  painter.setPen(text_colour_);
  const bool one_scale = std::all_of(curves.begin(), curves.end(), [&](const Curve& curve) {
    return curve.range.min == curves.front().range.min && curve.range.max == curves.front().range.max;
  });
  const QRectF above(0, 0, width(), scale.area.top() - 2);
  const QRectF below(0, scale.area.bottom() + 2, width(), height() - scale.area.bottom() - 2);
  const auto& range = curves.front().range;
  if (one_scale) {
    painter.drawText(above, Qt::AlignLeft | Qt::AlignVCenter, WithUnit(range.max, curves.front().unit));
    painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter, WithUnit(range.min, curves.front().unit));
  } else {
    painter.drawText(above, Qt::AlignLeft | Qt::AlignVCenter, "each with its own scale");
  }
  painter.drawText(below, Qt::AlignRight | Qt::AlignVCenter,
                   "last " + Duration(scale.last_ms - scale.first_ms));
}

void HistoryPlot::PaintLine(QPainter& painter, const Scale& scale, const Curve& curve) {
  // As single lines: the outline of a whole jagged curve costs the painter far more.
  painter.setPen(QPen(curve.colour, kCurveWidth, Qt::SolidLine, Qt::FlatCap));
  QVector<QLineF> lines;
  const ReadingHistory::Point* before = nullptr;
  for (const ReadingHistory::Point& point : *curve.points) {
    const QPointF at = scale.At(point, curve.range);
    const bool starts = before == nullptr || IsGap(*before, point);
    lines.append({starts ? at - QPointF(kCurveWidth, 0) : lines.last().p2(), at});
    before = &point;
  }
  painter.drawLines(lines);
}

void HistoryPlot::PaintBars(QPainter& painter, const Scale& scale, const Curve& curve, double pixel) {
  struct Bar {
    double x = 0;
    double top = 0;
    double bottom = 0;
  };
  std::optional<Bar> bar;
  const auto paint_until = [&](double x) {
    const double height = std::max(kCurveWidth, bar->bottom - bar->top);
    painter.fillRect(QRectF(bar->x, (bar->top + bar->bottom - height) / 2, x - bar->x, height), curve.colour);
  };
  const ReadingHistory::Point* before = nullptr;
  double last_y = 0;
  for (const ReadingHistory::Point& point : *curve.points) {
    const QPointF at = scale.At(point, curve.range);
    if (bar && IsGap(*before, point)) {
      paint_until(bar->x + pixel);
      bar.reset();
    }
    if (!bar) {
      bar = Bar{at.x(), at.y(), at.y()};
    } else if (at.x() - bar->x >= pixel) {
      paint_until(at.x());
      bar = Bar{at.x(), last_y, last_y};  // joined to the one before
    }
    bar->top = std::min(bar->top, at.y());
    bar->bottom = std::max(bar->bottom, at.y());
    last_y = at.y();
    before = &point;
  }
  if (bar) paint_until(bar->x + pixel);
}

void HistoryPlot::paint(QPainter* painter) {
  QFont font = painter->font();
  font.setPixelSize(font_size_);
  painter->setFont(font);
  painter->setRenderHint(QPainter::Antialiasing);
  const std::vector<Curve> curves = Curves();
  if (curves.empty() || width() < 2 || height() < 4 * font_size_) return;
  const Scale scale = MakeScale(curves);
  PaintScale(*painter, scale, curves);
  const double pixel = 1 / painter->deviceTransform().m11();
  for (const Curve& curve : curves) {
    if (static_cast<double>(curve.points->size()) * kWidestBar * pixel > scale.area.width()) {
      PaintBars(*painter, scale, curve, pixel);
    } else {
      PaintLine(*painter, scale, curve);
    }
  }
  if (pointer_ >= 0) {
    painter->setPen(text_colour_);
    painter->drawLine(QPointF(pointer_, scale.area.top()), QPointF(pointer_, scale.area.bottom()));
  }
}

void HistoryPlot::Refresh() {
  QString reading;
  const std::vector<Curve> curves = pointer_ < 0 ? std::vector<Curve>() : Curves();
  if (!curves.empty()) {
    const Scale scale = MakeScale(curves);
    const double share = (pointer_ - scale.area.left()) / std::max(1.0, scale.area.width());
    const qint64 ms =
        scale.first_ms + static_cast<qint64>(share * static_cast<double>(scale.last_ms - scale.first_ms));
    reading = QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(ms), "HH:mm:ss.zzz");
    for (const Curve& curve : curves) {
      const auto after = std::partition_point(curve.points->begin(), curve.points->end(),
                                              [ms](const auto& point) { return Milliseconds(point) <= ms; });
      const auto nearest = after == curve.points->begin() ? after : std::prev(after);
      const bool in_gap = std::abs(ms - Milliseconds(*nearest)) > kGapMs;
      reading += "   " + (curves.size() > 1 ? curve.name + " " : QString()) +
                 (in_gap ? QStringLiteral("no reading") : WithUnit(nearest->value, curve.unit));
    }
  }
  if (reading != reading_) {
    reading_ = reading;
    emit readingChanged();
  }
  update();
}
