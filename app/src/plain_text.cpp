#include "app/src/plain_text.h"

#include <algorithm>

namespace {

enum class Breaks { kEscaped, kKept };

bool ChangesDirection(char16_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

bool ActsOnSurroundings(QChar c, Breaks breaks) {
  if (breaks == Breaks::kKept && (c == '\n' || c == '\t')) {
    return false;
  }
  const QChar::Category category = c.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph || ChangesDirection(c.unicode());
}

QString Visible(QChar c) {
  switch (c.unicode()) {
    case '\n':
      return QStringLiteral("\\n");
    case '\r':
      return QStringLiteral("\\r");
    case '\t':
      return QStringLiteral("\\t");
    default:
      return c.unicode() < 0x100 ? QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'))
                                 : QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
  }
}

QString Escaped(const QString& text, Breaks breaks) {
  const auto acts = [breaks](QChar c) { return ActsOnSurroundings(c, breaks); };
  auto found = std::find_if(text.begin(), text.end(), acts);
  if (found == text.end()) {
    return text;
  }
  QString escaped;
  escaped.reserve(text.size() + 16);
  for (auto rest = text.begin(); rest != text.end();) {
    escaped.append(rest, static_cast<int>(found - rest));
    if (found == text.end()) {
      break;
    }
    escaped += Visible(*found);
    rest = found + 1;
    found = std::find_if(rest, text.end(), acts);
  }
  return escaped;
}

QString Cut(const QString& text, int limit, Breaks breaks) {
  if (text.size() <= limit) {
    return Escaped(text, breaks);
  }
  const int kept = limit > 0 && text[limit - 1].isHighSurrogate() ? limit - 1 : limit;
  return Escaped(text.left(kept), breaks) + QStringLiteral("… (%1 characters)").arg(text.size());
}

}  // namespace

QString PlainText::OneLine(const QString& text) {
  return Escaped(text, Breaks::kEscaped);
}

QString PlainText::line(const QString& text, int limit) {
  return Cut(text, limit, Breaks::kEscaped);
}

QString PlainText::paragraph(const QString& text, int limit) {
  return Cut(text, limit, Breaks::kKept);
}
