#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace varkel::cli {

enum class Colour { kPlain, kGood, kBad, kWeak };

/// The terminal: results on standard output, everything else on standard error. Thread-safe.
class Console {
 public:
  /// Keeps the core's trace lines off standard output; call it once, ahead of any thread.
  Console();

  void Result(const std::string& text);
  void Note(const std::string& text);
  /// Draws over the present line of standard error; empty clears it.
  void Status(const std::string& text);

  /// The text in a colour where standard output is a terminal and NO_COLOR is not set.
  std::string Paint(const std::string& text, Colour colour) const;
  bool has_status() const { return has_status_; }

 private:
  const bool has_colours_;
  const bool has_status_;
  std::mutex mutex_;  // guards what follows
  bool status_shown_ = false;
};

/// Text from outside for a terminal: control characters, which could command it, become "?".
std::string Plain(const std::string& text);
/// The same for text of several lines, which stay.
std::string PlainLines(const std::string& text);

/// Lines of aligned columns; the last one is not padded.
std::string Aligned(const std::vector<std::vector<std::string>>& rows);

}  // namespace varkel::cli
