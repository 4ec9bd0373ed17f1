// The console: command and payload as typed, what goes out, what is shown of the reply.
//
// Input: a line with the command, a line with the payload, then the reply.
#include <stdexcept>

#include "VarkelCore/src/actions/command_console.h"
#include "VarkelCore/src/catalogue/command_text.h"
#include "fuzz/input.h"
#include "tests/core/small_sensor_bench.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using varkel::CommandConsole;

/// A console with its sensor: what it sent last, and what it said.
struct Bench {
  CommandConsole::Outcome Send(const std::string& command, const std::string& payload) {
    const CommandConsole::Channel channel = {
        [this](std::uint8_t /*code*/, Bytes sent_payload, Vector& answer) {
          ++queries;
          sent.assign(sent_payload.begin(), sent_payload.end());
          answer.assign(reply.begin(), reply.end());
          return reply.empty() ? -1 : 0;
        },
        "failed", "header", "payload"};
    return console.Send(channel, command, payload, code);
  }

  const Bytes reply;
  varkel::test::RecordedReport report{};
  CommandConsole console{report};
  int queries = 0;
  std::uint8_t code = 0;
  Vector sent{};
};

void Console(const std::string& command, const std::string& payload, Bytes reply) {
  using Outcome = CommandConsole::Outcome;
  Bench bench{reply};
  const Outcome outcome = bench.Send(command, payload);
  if (outcome != Outcome::kSent) {
    Require(bench.queries == (outcome == Outcome::kRefused ? 0 : 1) && bench.report.Take().size() == 1 &&
                bench.console.history().empty() && bench.console.return_header().empty(),
            "a text that is refused or fails is told once and shows nothing");
    return;
  }
  Require(reply.size() >= 8, "a reply has a header");
  const auto record = bench.console.history().front();
  const std::string shown = bench.console.return_payload();
  const auto code = bench.code;
  const Vector sent = bench.sent;
  Require(bench.Send(record.command, record.payload) == Outcome::kSent && bench.code == code &&
              bench.sent == sent,
          "what the history shows sends the same");
  const auto limit = std::min(reply.size() - 8, CommandConsole::kShownPayload);
  Require(bench.Send("0", shown) == Outcome::kSent && Same(bench.sent, reply.subspan(8, limit)),
          "a shown payload is a payload");
}

// The commands of the tables.
void TableCommand(const std::string& text, Bytes payload) {
  varkel::Command command;
  try {
    command = varkel::ParseCommandText(text);
  } catch (const std::logic_error&) {  // no number, or too large a one
    return;
  }
  const Vector request = RequestPayload(command, payload);
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
