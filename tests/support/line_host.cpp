// The far ends of serial ports for tests built for a system without pseudo-terminals. line_host FOLDER
// NAME... serves each connection to its TCP port with a line, to which the link FOLDER/NAME of a free name
// points. Prints "port NUMBER" and runs until it is killed.

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "libquarn/Platform/src/pseudo_terminal.h"
#include "tests/support/line_blocks.h"

namespace {

using quarn::platform::PseudoTerminal;
using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;
namespace platform = quarn::platform;
namespace test = quarn::test;

constexpr std::int64_t kReadUs = 10'000;
constexpr std::int64_t kWriteUs = 10'000'000;

/// The names of the lines, each used by one connection at a time.
class Names {
 public:
  Names(fs::path folder, std::span<char*> names) : folder_(std::move(folder)) {
    for (const char* name : names) taken_[name] = false;
  }

  /// Empty when all are taken.
  std::string LinkTo(const std::string& terminal) {
    const std::lock_guard lock(mutex_);
    for (auto& [name, taken] : taken_) {
      if (taken) continue;
      taken = true;
      fs::remove(folder_ / name);
      fs::create_symlink(terminal, folder_ / name);
      return name;
    }
    return {};
  }
  void Free(const std::string& name) {
    const std::lock_guard lock(mutex_);
    taken_[name] = false;
  }

 private:
  const fs::path folder_;
  std::mutex mutex_;
  std::map<std::string, bool> taken_;
};

Bytes Answer(PseudoTerminal& line, const Bytes& request) {
  switch (request.empty() ? 0 : request.front()) {
    case test::kWriteLine:
      return {line.Write(std::span(request).subspan(1), kWriteUs) ? std::uint8_t{1} : std::uint8_t{0}};
    case test::kReadLine: {
      Bytes block(request.size() == 3 ? quarn::lidar::LoadBigEndian<std::uint16_t>(request, 1) : 0);
      const int count = line.WaitReadable(kReadUs) > 0 ? line.Read(block) : 0;
      block.resize(static_cast<std::size_t>(std::max(count, 0)));
      return block;
    }
    case test::kLineRate: {
      Bytes rate(sizeof(std::uint32_t));
      quarn::lidar::StoreBigEndian(std::span(rate), 0, line.BaudRate());
      return rate;
    }
    default:
      return {};
  }
}

void Serve(platform::SocketHandle connection, Names& names) {
  const auto line = PseudoTerminal::Create();
  const std::string name = line ? names.LinkTo(line->name()) : "";
  bool alive = test::SendBlock(connection, Bytes(name.begin(), name.end())) && !name.empty();
  while (alive) {
    const auto request = test::ReceiveBlock(connection);
    alive =
        request && *request != Bytes{test::kPullLine} && test::SendBlock(connection, Answer(*line, *request));
  }
  if (line) line->Pull();
  if (!name.empty()) names.Free(name);
  test::SendBlock(connection, {});  // the line is gone: the answer to kPullLine
  platform::CloseSocket(connection);
}

}  // namespace

int main(int argc, char** argv) {
  const auto listener = platform::TcpListener::Listen("127.0.0.1", 0);
  if (argc < 3 || listener == nullptr) {
    std::fprintf(stderr, "line_host FOLDER NAME...: no names, or no port on 127.0.0.1\n");
    return 1;
  }
  Names names(argv[1], std::span(argv, static_cast<std::size_t>(argc)).subspan(2));
  std::printf("port %u\n", unsigned{listener->port()});
  std::fflush(stdout);
  for (;;) {
    const platform::SocketHandle connection = listener->Accept(-1);
    if (connection != platform::kInvalidSocket) std::thread(Serve, connection, std::ref(names)).detach();
  }
}
