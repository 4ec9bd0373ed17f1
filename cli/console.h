#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace varkel::cli {

enum class Colour { kPlain, kGood, kBad, kDim };

/// The terminal: results on standard output, everything else on standard error. Thread-safe.
class Console {
 public:
  /// Redirects the core's trace lines away from standard output; create it once, before any threads.
  Console();

  void Result(const std::string& text);
  void Note(const std::string& text);
  /// Overwrites the current line of standard error; an empty text clears it.
  void Status(const std::string& text);

  /// The text in a colour if standard output is a terminal and NO_COLOR is not set.
  std::string Paint(const std::string& text, Colour colour) const;
  bool has_status() const { return has_status_; }

 private:
  const bool has_colours_;
  const bool has_status_;
  std::mutex mutex_;  // guards what follows
  bool status_shown_ = false;
};

/// Makes untrusted text safe for a terminal: control characters become "?".
std::string Plain(const std::string& text);
/// The same for multi-line text; keeps the line breaks.
std::string PlainLines(const std::string& text);

/// Lines of aligned columns; the last one is not padded.
std::string Aligned(const std::vector<std::vector<std::string>>& rows);

}  // namespace varkel::cli
