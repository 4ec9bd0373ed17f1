#include "VarkelCore/src/pages/save_check.h"

#include <QStringList>
#include <utility>

#include "VarkelCore/src/pages/page_description.h"

namespace varkel {

namespace {

using Verification = ValueStore::Verification;

/// The results so far for the saved edits.
struct Findings {
  int verified = 0;
  int unread = 0;
  int all = 0;
  QStringList faults;

  void Add(const QString& name, const std::optional<Verification>& verification,
           const std::function<QString(const std::string&)>& shown) {
    ++all;
    if (!verification || !verification->read_back) {
      ++unread;
      faults.append(QStringLiteral("%1 could not be read back").arg(name));
    } else if (verification->equal) {
      ++verified;
    } else {
      faults.append(QStringLiteral("%1 holds %2 instead of %3")
                        .arg(name, shown(*verification->read_back), shown(verification->sent)));
    }
  }
};

Findings Look(const Model& model, const SavedEdits& edits) {
  Findings findings;
  for (const VarInfo* var : edits.vars) {
    if (var->get_cmd.empty()) continue;  // can't be read back
    findings.Add(QString::fromStdString(var->var_name), model.values.Verify(*var),
                 [var](const std::string& text) { return ShownText(*var, text); });
  }
  if (edits.fov) {
    findings.Add(QStringLiteral("Field of view"), model.values.VerifyFov(),
                 [](const std::string& text) { return QString::fromStdString(text); });
  }
  return findings;
}

}  // namespace

void SaveCheck::Saved(std::shared_ptr<Model> model, int module, SavedEdits edits) {
  model_ = std::move(model);
  module_ = module;
  edits_ = std::move(edits);
}

std::optional<SaveCheck::Outcome> SaveCheck::AfterReading(bool more_to_come) {
  if (!model_) return std::nullopt;
  const Findings findings = Look(*model_, edits_);
  if (findings.unread > 0 && more_to_come) return std::nullopt;
  model_.reset();
  if (findings.all == 0) return std::nullopt;
  QStringList parts = findings.faults;
  parts.prepend(QStringLiteral("%1 of %2 verified").arg(findings.verified).arg(findings.all));
  return Outcome{module_, parts.join(QStringLiteral(", ")), findings.faults.isEmpty(),
                 findings.faults.size() > findings.unread};
}

}  // namespace varkel
