#include "app/src/history_plot.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <chrono>
#include <cmath>

using varkel::ReadingHistory;

namespace {

constexpr qint64 kGapMs = 2000;  // the curve is interrupted at longer gaps between readings
constexpr double kCurveWidth = 1.5;

qint64 Milliseconds(const ReadingHistory::Point& point) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(point.time.time_since_epoch()).count();
}

QString WithUnit(double number, const QString& unit) {
  const QString text = QString::number(number, 'g', 6);
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

void HistoryPlot::paint(QPainter* painter) {
  QFont font = painter->font();
  font.setPixelSize(font_size_);
  painter->setFont(font);
  painter->setRenderHint(QPainter::Antialiasing);
  const std::vector<Curve> curves = Curves();
  if (curves.empty() || width() < 2 || height() < 4 * font_size_) return;
  const Scale scale = MakeScale(curves);
  PaintScale(*painter, scale, curves);
  for (const Curve& curve : curves) {
    painter->setPen(QPen(curve.colour, kCurveWidth));
    // Several points in one column of pixels are drawn as the range they cover.
    QPolygonF line;
    qint64 before = 0;
    double low = 0;
    double high = 0;
    for (const ReadingHistory::Point& point : *curve.points) {
      const qint64 now = Milliseconds(point);
      const QPointF at(scale.X(now), scale.Y(point.value, curve.range));
      if (!line.isEmpty() && now - before > kGapMs) {
        painter->drawPolyline(line);
        line.clear();
      }
      before = now;
      if (line.isEmpty() || at.x() - line.last().x() >= 1) {
        line.append(at);
        low = high = at.y();
      } else if (at.y() < low || at.y() > high) {
        line.append(QPointF(line.last().x(), at.y()));
        low = std::min(low, at.y());
        high = std::max(high, at.y());
      }
    }
    line.size() == 1 ? painter->drawPoint(line.first()) : painter->drawPolyline(line);
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
      reading +=
          "   " + (curves.size() > 1 ? curve.name + " " : QString()) + WithUnit(nearest->value, curve.unit);
    }
  }
  if (reading != reading_) {
    reading_ = reading;
    emit readingChanged();
  }
  update();
}
