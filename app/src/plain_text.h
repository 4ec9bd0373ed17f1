#pragma once

#include <QObject>
#include <QString>

/// Makes text from a sensor or a table fit to be shown or saved. What it could do to its surroundings becomes
/// visible text: control characters (a line break would forge a second entry) turn into "\n" or "\x1b", those
/// that change the direction of the text beside them, and Unicode's line separators, into "\u202e".
///
/// QML has it as the singleton `PlainText`. What is shown is cut: laying out a megabyte stops the window.
class PlainText : public QObject {
  Q_OBJECT

 public:
  static constexpr int kShownLine = 1000;  ///< characters of the text that are shown; more than any row holds
  static constexpr int kShownParagraph = 4000;
  /// The longest value that a field lets edit and a log line shows: the hexadecimal text of 5 KiB.
  static constexpr int kShownField = 16384;

  using QObject::QObject;

  /// The whole text on one line.
  static QString OneLine(const QString& text);

  /// One line, cut at `limit` characters with an ellipsis and how many there are.
  Q_INVOKABLE static QString line(const QString& text, int limit = kShownLine);
  /// Like `line`, with line breaks and tabs kept.
  Q_INVOKABLE static QString paragraph(const QString& text, int limit = kShownParagraph);
  /// What a field shows of a value.
  Q_INVOKABLE static QString field(const QString& text) { return line(text, kShownField); }
  /// True when a field can't show all of the value, and so must not let it be edited.
  Q_INVOKABLE static bool isCut(const QString& text) { return text.size() > kShownField; }
};
