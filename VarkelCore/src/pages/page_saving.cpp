#include "VarkelCore/src/pages/page_saving.h"

#include <utility>

namespace varkel {

void PageSaving::Save(int module) const {
  const auto job = Prepare(module);
  if (!job) return;
  Run(*job);
  events_.saved();
}

void PageSaving::SaveInBackground(int module) {
  const auto job = Prepare(module);
  if (!job) {
    events_.finished(module);
    return;
  }
  context_.work.Start([this, job] { return Run(*job); },
                      [this, job](SavedEdits edits) {
                        check_.Saved(job->model, job->module, std::move(edits));
                        events_.saved();
                        events_.finished(job->module);
                      });
}

void PageSaving::PageRead(bool more_to_come) {
  const auto outcome = check_.AfterReading(more_to_come);
  if (!outcome) return;
  context_.report.Log("Read back after the save: " + outcome->text.toStdString(),
                      outcome->good ? "INFO" : "WARNING");
  events_.read_back(*outcome);
}

/// nullopt if the page can't be saved now.
std::optional<PageSaving::Job> PageSaving::Prepare(int module) const {
  Job job{context_.models.model(), context_.connection.session(), module};
  if (!job.model || !MayWrite(job.session)) return std::nullopt;
  const bool is_page = module >= 0 && std::cmp_less(module, job.model->catalogue->module_vars().size());
  return is_page ? std::optional(std::move(job)) : std::nullopt;
}

/// Returns the edits that were sent; empty unless all were.
SavedEdits PageSaving::Run(const Job& job) const {
  return context_.writer.Run(*job.model, *job.session->ktc_client(), job.module);
}

bool PageSaving::MayWrite(const std::shared_ptr<SensorSession>& session) const {
  UserReport& report = context_.report;
  if (!session || !session->is_ktc_open()) {
    report.Error("Please connect to lidar first");
  } else if (context_.activity.is_upgrading()) {
    report.Error("Please wait for the lidar to upgrade completely");
  } else if (context_.activity.is_downloading()) {
    report.Error("Please wait for the operation log to download completely");
  } else if (context_.activity.is_changing()) {
    report.Error("Please wait until the snapshot has been applied");
  } else {
    return true;
  }
  return false;
}

}  // namespace varkel
