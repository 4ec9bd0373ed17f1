#include "cli/console.h"

#include <QString>
#include <QVector>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "libquarn/Platform/src/terminal.h"

namespace varkel::cli {

namespace {

using quarn::lidar::IsTerminal;
using quarn::lidar::StandardStream;

bool IsColourWanted() {
  const char* const no_colour = std::getenv("NO_COLOR");
  return (no_colour == nullptr || *no_colour == '\0') && IsTerminal(StandardStream::kOutput);
}

void Write(FILE* stream, const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fflush(stream);
}

std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(QString::fromStdString(text).toUcs4().size());
}

std::string PlainBut(const std::string& text, QChar kept) {
  QString plain = QString::fromStdString(text);
  const auto commands = [kept](QChar c) {
    return c != kept && (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format);
  };
  std::replace_if(plain.begin(), plain.end(), commands, QLatin1Char('?'));
  return plain.toStdString();
}

}  // namespace

Console::Console() : has_colours_(IsColourWanted()), has_status_(IsTerminal(StandardStream::kError)) {
  std::cout.rdbuf(nullptr);  // keeps the core's trace lines out of the results
}

void Console::Result(const std::string& text) {
  Status({});
  const std::lock_guard lock(mutex_);
  Write(stdout, text + "\n");
}

void Console::Note(const std::string& text) {
  Status({});
  const std::lock_guard lock(mutex_);
  Write(stderr, text + "\n");
}

void Console::Status(const std::string& text) {
  if (!has_status_) return;
  const std::lock_guard lock(mutex_);
  if (text.empty() && !status_shown_) return;
  Write(stderr, "\r\x1B[K" + text);
  status_shown_ = !text.empty();
}

std::string Console::Paint(const std::string& text, Colour colour) const {
  if (!has_colours_ || colour == Colour::kPlain) return text;
  const char* const code = colour == Colour::kGood ? "32" : colour == Colour::kBad ? "31" : "2";
  return std::string("\x1B[") + code + "m" + text + "\x1B[0m";
}

std::string Plain(const std::string& text) {
  return PlainBut(text, QLatin1Char('?'));
}

std::string PlainLines(const std::string& text) {
  return PlainBut(text, QLatin1Char('\n'));
}

std::string Aligned(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  std::string text;
  for (const auto& row : rows) {
    if (!text.empty()) text += "\n";
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 < row.size()) text += std::string(widths[i] - Width(row[i]) + 2, ' ');
    }
  }
  return text;
}

}  // namespace varkel::cli
