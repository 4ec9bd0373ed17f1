#include <QDir>
#include <QString>

#include "VarkelCore/src/actions/command_console.h"
#include "VarkelCore/src/actions/log_download.h"
#include "VarkelCore/src/actions/sensor_restart.h"
#include "VarkelCore/src/tasks/atomic_file.h"
#include "VarkelCore/src/values/decoded_text.h"
#include "cli/commands.h"

namespace varkel::cli {

namespace {

/// The exit code for a sensor's code (refused) or any other failure.
ExitCode ExitOf(int code) {
  return code == 0 ? kDone : code > 0 ? kRefused : kFailed;
}

SensorResult OfRestart(const Job& job, int (*act)(const ConfigParser&, SensorSession&, UserReport&),
                       const char* done) {
  if (!job.link.client()) return ModelLacks(job, "KTC commands");
  const int code = act(*job.link.model()->catalogue, *job.link.session(), job.report);
  const std::string fault = job.report.error().empty() ? "The sensor did not answer." : job.report.error();
  return Sentence(job.link.target(), ExitOf(code), code == 0 ? done : fault);
}

SensorResult OfDownload(const Job& job) {
  const bool is_done = job.report.error().empty();
  std::string text = is_done ? job.report.success() : job.report.error();
  for (const std::string& line : job.report.log()) text += "\n" + line;
  return Sentence(job.link.target(), is_done ? kDone : kFailed, text);
}

/// Logs of different sensors have the same names, so each sensor gets its own folder.
QString FolderForLogs(const Job& job) {
  QString folder = QString::fromStdString(job.arguments.output);
  if (job.is_alone) return folder;
  folder += QLatin1Char('/') + SanitizedFileName(QString::fromStdString(job.link.target().name()));
  QDir().mkpath(folder);
  return folder;
}

}  // namespace

SensorResult Send(const Job& job) {
  const auto& client = job.link.client();
  CommandConsole console(job.report);
  const auto channel =
      job.link.has_variables()
          ? CommandConsole::KtcChannel(client)
          : CommandConsole::SerialChannel(job.link.session()->serial_exchange(), client != nullptr);
  const ExchangeDecoder decoder(job.link.model()->catalogue);
  std::uint8_t code = 0;
  const auto outcome = console.Send(channel, job.arguments.code, job.arguments.payload, code);
  if (outcome == CommandConsole::Outcome::kRefused) {
    return Sentence(job.link.target(), kWrongUse, job.report.error());
  }
  if (outcome == CommandConsole::Outcome::kFailed) {
    const int failure = job.link.has_variables() ? client->LastReturnCode() : -1;
    return Sentence(
        job.link.target(), ExitOf(failure == 0 ? -1 : failure),
        job.report.error() + " (code " + std::to_string(failure) + ")\n" + console.FailureText(decoder));
  }
  SensorResult result;
  result.text = "header   " + console.return_header() + "\npayload  " + console.return_payload();
  if (const auto fields = console.DecodedReply(decoder); !fields.empty()) {
    result.text += "\n" + PlainLines(DecodedText(fields));
  }
  if (!job.report.error().empty()) result.text += "\n" + job.report.error();
  result.json = JsonHead(job.link.target(), {}, true)
                    .Text("header", console.return_header())
                    .Text("payload", console.return_payload())
                    .str();
  return result;
}

SensorResult Restart(const Job& job) {
  return OfRestart(job, RestartSensor, "The sensor restarts.");
}

SensorResult Reset(const Job& job) {
  return OfRestart(job, ResetSensor, "All settings of the sensor are reset.");
}

SensorResult DownloadLog(const Job& job) {
  if (!job.link.client()) return ModelLacks(job, "logs");
  const LogDownload download(job.report, [](bool) {});
  download.DownloadLog(*job.link.model()->catalogue, *job.link.client(), FolderForLogs(job),
                       QString::fromStdString(job.arguments.id));
  return OfDownload(job);
}

SensorResult DownloadOperationLog(const Job& job) {
  if (!job.link.client()) return ModelLacks(job, "logs");
  const LogDownload download(job.report, [](bool) {});
  download.DownloadOperationLog(*job.link.model()->catalogue, *job.link.client(),
                                QString::fromStdString(job.arguments.output), job.stop);
  return OfDownload(job);
}

}  // namespace varkel::cli
