#include "VarkelCore/src/pages/page_saving.h"

namespace varkel {

std::optional<PageSaving::Save> PageSaving::Prepare(int module) const {
  Save save{models_.model(), connection_.session(), module};
  if (!save.model || !MayWrite(save.session)) return std::nullopt;
  const bool is_page =
      module >= 0 && static_cast<std::size_t>(module) < save.model->catalogue->module_vars().size();
  return is_page ? std::optional(std::move(save)) : std::nullopt;
}

SavedEdits PageSaving::Run(const Save& save) const {
  return writer_.Run(*save.model, *save.session->ktc_client(), save.module);
}

bool PageSaving::MayWrite(const std::shared_ptr<SensorSession>& session) const {
  if (!session || !session->is_ktc_open()) {
    report_.Error("Please connect to lidar first");
  } else if (activity_.is_upgrading()) {
    report_.Error("Please wait for the lidar to upgrade completely");
  } else if (activity_.is_downloading()) {
    report_.Error("Please wait for the operation log to download completely");
  } else if (activity_.is_changing()) {
    report_.Error("Please wait until the snapshot has been applied");
  } else {
    return true;
  }
  return false;
}

}  // namespace varkel
