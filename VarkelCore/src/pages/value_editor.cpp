#include "VarkelCore/src/pages/value_editor.h"

#include <exception>

#include "VarkelCore/src/pages/page_description.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {
constexpr float kFullTurn = 360.0F;
}

void ValueEditor::SetText(Model& model, int type, int page, int group, int index,
                          const std::string& text) const {
  VarInfo* const var = VariableAt(*model.catalogue, page, group, index);
  if (var == nullptr) return;
  switch (type) {
    case kValue:
      model.values.Edit(*var, text);
      break;
    case kSwitchValue:
      if (var->switch_var == nullptr) {
        report_.Error(MissingSwitchText(*var));
      } else {
        model.values.Edit(*var->switch_var, text);
      }
      break;
    case kOptionIndex: {
      const int option = quarn::lidar::TextToInt(text);
      if (option >= 0 && option < var->option_num) {
        model.values.Edit(*var, std::to_string(var->options[static_cast<std::size_t>(option)]));
      } else {
        report_.Error("Invalid switch value of type 3, please check the config file! name: " + var->var_name);
      }
      break;
    }
    default:
      report_.Error("Invalid switch value of type , please check the config file! name: " + var->var_name);
  }
}

bool ValueEditor::SetFov(Model& model, int index, const std::string& degrees) const {
  if (index < 0 || index >= static_cast<int>(FovAngles().size())) return true;
  float value = 0.0F;
  try {
    value = quarn::lidar::TextToFloat(degrees);
  } catch (const std::exception&) {
    return false;
  }
  if (!(value >= 0.0F && value <= kFullTurn)) return false;
  model.values.EditFov(static_cast<std::size_t>(index), value);
  return true;
}

}  // namespace varkel
