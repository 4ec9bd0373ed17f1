#include "VarkelCore/src/pages/page_models.h"

#include <utility>

namespace varkel {

PageModels::PageModels(QObject& owner, ModelSelection& models, EventQueue& events)
    : owner_(owner), models_(models), events_(events) {
  models.Listen([this] { ValuesChanged(); });
}

PageModel* PageModels::Get(int module) {
  const auto model = models_.model();
  if (!model || module < 0 || !std::cmp_less(module, model->catalogue->module_vars().size())) return nullptr;
  PageModel*& page = pages_[module];
  if (page == nullptr) page = new PageModel(model, module, &owner_);
  return page;
}

void PageModels::Drop() {
  for (const auto& [module, page] : pages_) page->deleteLater();
  pages_.clear();
  history_.Clear();
}

void PageModels::ValuesChanged() {
  events_.Post([this] {
    const auto model = models_.model();
    if (!model) return;
    const auto changes = model->values.TakeChanges();
    for (const auto& [module, page] : pages_) page->ShowChanges(changes);
    history_.Follow(model, changes);
  });
}

void PageModels::Refuse(const VarInfo& var, const std::string& verdict) {
  events_.Post([this, model = models_.model(), &var, verdict = QString::fromStdString(verdict)] {
    if (model != models_.model()) return;
    for (const auto& [module, page] : pages_) page->SetVerdict(var, verdict);
  });
}

}  // namespace varkel
