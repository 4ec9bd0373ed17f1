#include "VarkelCore/src/pages/page_input.h"

#include <cstddef>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/pages/edit_check.h"
#include "VarkelCore/src/pages/page_description.h"

namespace varkel {

PageInput::PageInput(const ModelSelection& models, UserEdits& edits, PageModels& page_models,
                     UserReport& report, Events events)
    : models_(models),
      edits_(edits),
      page_models_(page_models),
      report_(report),
      events_(std::move(events)),
      editor_(report) {}

void PageInput::SetText(int type, int page, int group, int index, const std::string& text) {
  const auto model = models_.model();
  if (!model) return;
  VarInfo* const var = VariableAt(*model->catalogue, page, group, index);
  if (var != nullptr) {
    const auto edit = [&] { editor_.SetText(*model, type, page, group, index, text); };
    report_.Guard([&] {
      if (var->switch_var == nullptr) {
        edits_.Do(model, {var}, edit);
      } else {
        edits_.Do(model, {var, var->switch_var}, edit);
      }
    });
  }
  page_models_.ValuesChanged();
  if (var != nullptr && type == ValueEditor::kValue) ShowTypingFault(*model, *var, text);
  events_.edited();
}

void PageInput::ShowTypingFault(const Model& model, const VarInfo& var, const std::string& text) {
  if (!model.values.IsEdited(var)) return;
  const QString fault = TypingFault(var, text);
  if (!fault.isEmpty()) page_models_.Refuse(var, fault.toStdString());
}

void PageInput::SetAngle(int index, const std::string& degrees) {
  const auto model = models_.model();
  if (!model) return;
  bool is_taken = true;
  const auto edit = [&] { is_taken = editor_.SetFov(*model, index, degrees); };
  if (index >= 0 && std::cmp_less(index, FovAngles().size())) {
    edits_.Do(model, {static_cast<std::size_t>(index)}, edit);
  }
  if (is_taken) {
    page_models_.ValuesChanged();
    events_.edited();
  } else {
    report_.Error("Input value of fov is invalid");
    events_.angles_restored();
  }
}

void PageInput::Cancel() {
  const auto model = models_.model();
  const bool are_angles_reverted = model && model->values.Cancel();
  edits_.Forget();
  page_models_.ValuesChanged();
  events_.edited();
  if (are_angles_reverted) events_.angles_restored();
}

void PageInput::Disconnected(int connect_type) {
  edits_.Forget();
  const auto model = models_.model();
  if (!model) return;
  if (connect_type != kSerialLines) model->values.SerialNumberUnknown();
  connect_type == kNetwork ? model->values.Disconnected() : model->values.SensorChanged();
}

}  // namespace varkel
