#include "VarkelCore/src/snapshots/change_text.h"

#include <algorithm>

namespace varkel {

namespace {

QString Counted(std::size_t count, const char* one, const char* several) {
  return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : several));
}

QString OldText(const ChangeOutcome& change) {
  return change.old_text.empty() ? QStringLiteral("–") : QString::fromStdString(change.old_text);
}

}  // namespace

QString OutcomeText(const ChangeOutcome& change) {
  switch (change.verdict) {
    case Verdict::kVerified:
      return QStringLiteral("verified");
    case Verdict::kDiffers:
      return QStringLiteral("the sensor holds %1").arg(QString::fromStdString(change.holds));
    case Verdict::kRefused:
      return QStringLiteral("refused, code %1").arg(change.code);
    case Verdict::kUnconfirmed:
      return QStringLiteral("sent, not confirmed");
    case Verdict::kNotSent:
      break;
  }
  return QStringLiteral("not sent");
}

QString PlanText(const std::vector<ChangeOutcome>& changes, const QStringList& edited) {
  QString text = QStringLiteral("%1 will be written to the sensor, after a snapshot of its present state:\n")
                     .arg(Counted(changes.size(), "value", "values"));
  for (const ChangeOutcome& change : changes) {
    text += QStringLiteral("\n%1: %2 → %3")
                .arg(QString::fromStdString(change.name), OldText(change),
                     QString::fromStdString(change.new_text));
  }
  if (!edited.isEmpty()) {
    text += QStringLiteral("\n\nLeft unchanged because of unsaved edits: %1.")
                .arg(edited.join(QStringLiteral(", ")));
  }
  return text;
}

QString SummaryText(const RunReport& run) {
  const std::pair<Verdict, const char*> parts[] = {
      {Verdict::kVerified, "written and verified"},
      {Verdict::kDiffers, "written, but the sensor holds another value"},
      {Verdict::kRefused, "refused"},
      {Verdict::kUnconfirmed, "sent, not confirmed"},
      {Verdict::kNotSent, "not sent"}};
  QStringList texts;
  for (const auto& [verdict, words] : parts) {
    const auto count =
        std::count_if(run.changes.begin(), run.changes.end(),
                      [wanted = verdict](const ChangeOutcome& change) { return change.verdict == wanted; });
    if (count > 0) texts += QStringLiteral("%1 %2").arg(count).arg(QLatin1String(words));
  }
  QString text = texts.join(QStringLiteral(", ")) + QLatin1Char('.');
  if (run.moved_to) {
    text += QStringLiteral(" The sensor answers at %1 now: connect there.")
                .arg(QString::fromStdString(AddressText(*run.moved_to)));
  }
  return text;
}

QString ProblemText(const ChangeResult& result) {
  QStringList refusals;
  for (const PlanRefusal& refusal : result.refusals) refusals += QString::fromStdString(refusal.text);
  if (!refusals.isEmpty()) return QStringLiteral("Nothing was written.\n") + refusals.join(QLatin1Char('\n'));
  if (result.reading == ReadEnd::kConnectionLost) {
    return QStringLiteral("The sensor no longer answers; nothing was written.");
  }
  if (result.reading == ReadEnd::kStopped) return QStringLiteral("Stopped; nothing was written.");
  return QString::fromStdString(result.fault.empty() ? result.run.detail : result.fault);
}

}  // namespace varkel
