#include "VarkelCore/src/upgrade/sensor_identity.h"

#include <algorithm>
#include <exception>
#include <map>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/values/exchange_decoder.h"

namespace varkel {

namespace {

/// Reads variables one by one, but sends each query only once.
class Questions {
 public:
  Questions(quarn::lidar::KtcClient& client, const std::shared_ptr<const ConfigParser>& catalogue)
      : client_(client), decoder_(catalogue) {}

  /// The variable's text; empty if there was no answer.
  std::string Ask(const VarInfo& var) {
    if (var.get_cmd.empty()) return {};
    const auto [answer, is_new] = answers_.try_emplace(var.get_cmd + " " + var.get_cmd_payload);
    if (is_new) answer->second = Exchange(var);
    const auto& fields = answer->second;
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const DecodedField& candidate) {
      return candidate.id == var.var_id && !candidate.is_missing;
    });
    return field == fields.end() ? std::string() : field->text;
  }

 private:
  std::vector<DecodedField> Exchange(const VarInfo& var) {
    try {
      const Command command = ParseCommandText(var.get_cmd);
      const auto request = RequestPayload(command, var.get_cmd_payload_bytes);
      const ExchangeResult reply = QueryTableCommand(client_, command, request);
      if (reply) return decoder_.Reply(command.code, request, *reply);
    } catch (const std::exception&) {  // the command is not a number: the page reports it
    }
    return {};
  }

  quarn::lidar::KtcClient& client_;
  const ExchangeDecoder decoder_;
  std::map<std::string, std::vector<DecodedField>> answers_;
};

}  // namespace

SensorIdentity ReadIdentity(quarn::lidar::KtcClient& client,
                            const std::shared_ptr<const ConfigParser>& catalogue) {
  SensorIdentity identity;
  Questions questions(client, catalogue);
  if (const VarInfo* var = catalogue->FindByName("SN")) identity.serial_number = questions.Ask(*var);
  for (const auto& module : catalogue->module_vars()) {
    for (const auto& group : module) {
      for (const VarInfo* var : group) {
        const bool listed = std::any_of(
            identity.versions.begin(), identity.versions.end(),
            [var](const SensorIdentity::Version& version) { return version.name == var->var_name; });
        if (var->var_type != "SWVER_YMD" || listed) continue;  // a variable may be on several pages
        if (std::string text = questions.Ask(*var); !text.empty()) {
          identity.versions.push_back({var->var_name, std::move(text)});
        }
      }
    }
  }
  return identity;
}

std::string VersionChanges(const SensorIdentity& before, const SensorIdentity& now) {
  std::string changes;
  for (const SensorIdentity::Version& version : now.versions) {
    const auto old = std::find_if(before.versions.begin(), before.versions.end(),
                                  [&](const auto& candidate) { return candidate.name == version.name; });
    if (old == before.versions.end() || old->text == version.text) continue;
    changes += (changes.empty() ? "" : "\n") + version.name + ": " + old->text + " → " + version.text;
  }
  return changes;
}

}  // namespace varkel
