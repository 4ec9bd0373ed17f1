// The console: command and payload as typed, what goes out, what is shown of the reply.
//
// Input: a line with the command, a line with the payload, then the reply.
#include <cctype>
#include <utility>

#include "VarkelCore/src/command_console.h"
#include "VarkelCore/src/command_text.h"
#include "fuzz/input.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/hex_text.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using varkel::CommandConsole;

class Notices : public varkel::UserReport {
 public:
  void Log(const std::string& /*text*/, const std::string& /*type*/) override {}
  void Bytes(const std::string& /*line*/) override {}
  void Error(const std::string& text) override { errors.push_back(text); }
  void Success(const std::string& /*text*/) override {}
  std::vector<std::string> errors;
};

/// A console with its sensor: what it sent, and what it said.
struct Bench {
  explicit Bench(Bytes answer) : reply(answer.begin(), answer.end()) {}

  CommandConsole::Outcome Send(const std::string& command, const std::string& payload) {
    queries = 0;
    notices.errors.clear();
    const CommandConsole::Road road = {[this](std::uint8_t sent_code, Bytes sent_payload, Vector& answer) {
                                         ++queries;
                                         code = sent_code;
                                         sent.assign(sent_payload.begin(), sent_payload.end());
                                         answer = reply;
                                         return reply.empty() ? -1 : 0;
                                       },
                                       "failed", "header", "payload"};
    return console.Send(road, command, payload, told_code);
  }

  const Vector reply;
  Notices notices;
  CommandConsole console{notices};
  int queries = 0;
  std::uint8_t code = 0;
  std::uint8_t told_code = 0;
  Vector sent;
};

bool IsHexOf(const std::string& text, Bytes bytes) {
  std::string line = quarn::lidar::HexLine(bytes);
  if (!line.empty()) line.pop_back();
  std::transform(line.begin(), line.end(), line.begin(), [](unsigned char c) { return std::toupper(c); });
  return text == line;
}

void CheckSent(Bench& bench) {
  const Bytes reply = bench.reply;
  Require(bench.queries == 1 && bench.code == bench.told_code, "one command goes out");
  Require(IsHexOf(bench.console.return_header(), reply.first(8)), "the header is shown");
  const Bytes shown = reply.subspan(8, std::min(reply.size() - 8, CommandConsole::kShownPayload));
  Require(IsHexOf(bench.console.return_payload(), shown), "the payload is shown up to its limit");
  Require(bench.notices.errors.empty() == (reply.size() - 8 <= CommandConsole::kShownPayload),
          "only a cut reply is warned about");
  const auto record = bench.console.history().front();
  const auto code = bench.code;
  const Vector sent = bench.sent;
  const auto blanks = std::count(record.payload.begin(), record.payload.end(), ' ');
  Require(std::cmp_equal(sent.size(), record.payload.empty() ? 0 : blanks + 1), "each piece is a byte");
  Require(bench.Send(record.command, record.payload) == CommandConsole::Outcome::kSent &&
              bench.code == code && bench.sent == sent,
          "what the history shows sends the same");
  const auto again = bench.console.history().front();
  Require(again.command == record.command && again.payload == record.payload, "the history is stable");
  // What is shown of a reply can be sent as it stands.
  Require(bench.Send("0", bench.console.return_payload()) == CommandConsole::Outcome::kSent &&
              Same(bench.sent, shown),
          "a shown payload is a payload");
}

void Console(const std::string& command, const std::string& payload, Bytes reply) {
  Bench bench(reply);
  switch (bench.Send(command, payload)) {
    case CommandConsole::Outcome::kRefused:
      Require(bench.queries == 0 && bench.notices.errors.size() == 1 && bench.console.history().empty(),
              "a refused text sends nothing and is told once");
      break;
    case CommandConsole::Outcome::kFailed:
      Require(bench.queries == 1 && reply.size() < 8 && bench.notices.errors.front() == "failed" &&
                  bench.console.return_header().empty() && bench.console.history().empty(),
              "a failure shows nothing");
      break;
    case CommandConsole::Outcome::kSent:
      Require(reply.size() >= 8, "a reply has a header");
      CheckSent(bench);
      break;
  }
}

// The commands of the tables.
void TableCommand(const std::string& text, Bytes payload) {
  varkel::Command command;
  try {
    command = varkel::ParseCommandText(text);
  } catch (const std::logic_error&) {  // no number, or too large a one
    return;
  }
  Require(command.extended_code.has_value() == (text.size() >= 5), "long texts are four-byte codes");
  Require(!command.extended_code || command.code == 0xFF, "four-byte codes go as command FF");
  const Vector request = RequestPayload(command, payload);
  Require(request.size() == payload.size() + (command.extended_code ? 4 : 0), "the code goes ahead");
  Require(Same(ReplyContent(command, request), payload) || !command.extended_code,
          "a repeated code is taken off");
  const Bytes content = ReplyContent(command, payload);
  Require(content.size() <= payload.size() && Same(content, payload.last(content.size())),
          "a reply's end is left");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const std::string command = input.Line();
  const std::string payload = input.Line();
  const Bytes reply = input.Rest();
  Console(command, payload, reply);
  TableCommand(command, reply);
  return 0;
}
