#include "cli/progress.h"

#include <algorithm>
#include <string>

namespace varkel::cli {

void Progress::Show(std::size_t done, std::size_t total) {
  constexpr std::size_t kWidth = 30;
  constexpr std::chrono::seconds kShort{1};
  if (!console_.has_status() || total == 0 || std::chrono::steady_clock::now() - start_ < kShort) return;
  const std::size_t filled = kWidth * std::min(done, total) / total;
  console_.Status("[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "] " +
                  std::to_string(done) + "/" + std::to_string(total));
}

}  // namespace varkel::cli
