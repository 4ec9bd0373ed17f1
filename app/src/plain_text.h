#pragma once

#include <QObject>
#include <QString>

/// Makes text from a sensor or a table safe to show or save. Characters that could affect their surroundings
/// become visible: control characters (a line break would forge a second entry) are replaced by texts like
/// "\n" or
/// "\x1b", and characters that change the text direction, and Unicode line separators, by texts like
/// "\u202e".
///
/// In QML the singleton `PlainText`. Displayed text is truncated, because laying out a megabyte blocks the
/// window.
class PlainText : public QObject {
  Q_OBJECT

 public:
  static constexpr int kShownLine =
      1000;  ///< maximum number of displayed characters; more than fits in any row
  static constexpr int kShownParagraph = 4000;
  /// Length of the longest value that can be edited in a field or shown in a log line: 5 KiB as hexadecimal
  /// text.
  static constexpr int kShownField = 16384;

  using QObject::QObject;

  /// The whole text on one line.
  static QString OneLine(const QString& text);

  /// One line, truncated to `limit` characters followed by an ellipsis and the total number.
  Q_INVOKABLE static QString line(const QString& text, int limit = kShownLine);
  /// Like `line`, with line breaks and tabs kept.
  Q_INVOKABLE static QString paragraph(const QString& text, int limit = kShownParagraph);
  /// The text that a field shows for a value.
  Q_INVOKABLE static QString field(const QString& text) { return line(text, kShownField); }
  /// True if a field can't show the whole value and therefore must not allow editing it.
  Q_INVOKABLE static bool isCut(const QString& text) { return text.size() > kShownField; }
};
