#include "VarkelCore/src/values/exchange_decoder.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <limits>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/values/protocol_fields.h"
#include "VarkelCore/src/values/value_text.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Platform/src/byte_order.h"

namespace varkel {
namespace {

using ByteView = std::span<const std::uint8_t>;

/// The fields ordered by position, with the gaps between them filled with fields of unknown bytes.
std::vector<DecodedField> Filled(std::vector<DecodedField> fields, ByteView payload) {
  std::stable_sort(fields.begin(), fields.end(),
                   [](const DecodedField& a, const DecodedField& b) { return a.place < b.place; });
  std::vector<DecodedField> filled;
  std::size_t end = 0;
  const auto fill_up_to = [&](std::size_t place) {
    if (place <= end) return;
    const ByteView gap = payload.subspan(end, place - end);
    filled.push_back({{}, {}, {}, {}, {}, end, {gap.begin(), gap.end()}});
  };
  for (DecodedField& field : fields) {
    fill_up_to(std::min(field.place, payload.size()));
    end = std::max(end, std::min(field.place + field.raw.size(), payload.size()));
    filled.push_back(std::move(field));
  }
  fill_up_to(payload.size());
  return filled;
}

std::string OptionLabel(const VarInfo& var, const std::string& text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  const auto label = var.option_labels.find(value);
  return label == var.option_labels.end() ? std::string() : label->second;
}

/// The unit without the space and parentheses of " (rpm)".
std::string PlainUnit(const VarInfo& var) {
  constexpr std::size_t kBrackets = 3;
  return var.unit.size() > kBrackets ? var.unit.substr(2, var.unit.size() - kBrackets) : std::string();
}

bool IsAction(const VarInfo& var) {
  return var.component_type == kStandalone || var.component_type == kUpgradeArea;
}

/// "Model, PN and 5 more".
std::string Names(const std::vector<const VarInfo*>& vars) {
  constexpr std::size_t kShown = 2;
  std::string text;
  const std::size_t shown = vars.size() == kShown + 1 ? vars.size() : std::min(vars.size(), kShown);
  for (std::size_t i = 0; i < shown; ++i) text += (i == 0 ? "" : ", ") + vars[i]->var_name;
  return shown == vars.size() ? text : text + " and " + std::to_string(vars.size() - shown) + " more";
}

}  // namespace

ExchangeDecoder::ExchangeDecoder(std::shared_ptr<const ConfigParser> catalogue)
    : catalogue_(std::move(catalogue)) {
  Index(catalogue_->get_cmd_map(), gets_);
  Index(catalogue_->set_cmd_map(), sets_);
}

void ExchangeDecoder::Index(const std::map<std::string, ConfigParser::VarList>& commands,
                            std::map<Code, Vars>& index) {
  for (const auto& [text, vars] : commands) {
    try {
      const Command command = ParseCommandText(text);
      Vars& list = index[{command.code, command.extended_code}];
      list.insert(list.end(), vars.begin(), vars.end());
    } catch (const std::exception&) {  // a command that is not a number is never sent
    }
  }
}

ExchangeDecoder::Route ExchangeDecoder::FindRoute(std::uint8_t command, ByteView request) const {
  Route route{{command, std::nullopt}, request, nullptr, {}, nullptr};
  if (command == quarn::lidar::kKtcExtensionCmd && request.size() >= kExtendedCodeSize) {
    route.code.second = quarn::lidar::LoadBigEndian<std::uint32_t>(request, 0);
    route.content = request.subspan(kExtendedCodeSize);
    if (gets_.count(route.code) == 0 && sets_.count(route.code) == 0) {
      route.code.second.reset();
      route.content = request;
    }
  }
  const auto gets = gets_.find(route.code);
  const auto sets = sets_.find(route.code);
  for (const auto& [list, index] : {std::pair(gets, &gets_), std::pair(sets, &sets_)}) {
    if (list == index->end()) continue;
    for (const VarInfo* var : list->second) {
      if (IsAction(*var)) route.action = var;
    }
  }
  if (gets != gets_.end()) {
    std::copy_if(gets->second.begin(), gets->second.end(), std::back_inserter(route.gets),
                 [&](const VarInfo* var) {
                   return std::equal(var->get_cmd_payload_bytes.begin(), var->get_cmd_payload_bytes.end(),
                                     route.content.begin(), route.content.end());
                 });
  }
  if (route.gets.empty() && sets != sets_.end() && !route.content.empty()) route.sets = &sets->second;
  return route;
}

std::string ExchangeDecoder::CommandName(std::uint8_t command, ByteView request) const {
  const Route route = FindRoute(command, request);
  if (route.action != nullptr) return route.action->var_name;
  if (!route.gets.empty()) return "read " + Names(route.gets);
  if (route.sets != nullptr) return "write " + Names(*route.sets);
  return ProtocolCommandName(command, request);
}

std::vector<DecodedField> ExchangeDecoder::Request(std::uint8_t command, ByteView request) const {
  const Route route = FindRoute(command, request);
  const std::size_t code_size = request.size() - route.content.size();
  // The table has only the channel; the angles are not variables.
  const bool is_fov = !route.code.second && command == quarn::lidar::kWriteChannelFovCmd;
  std::vector<DecodedField> fields;
  if (code_size > 0) {
    fields.push_back(
        {{}, "four-byte code", {}, {}, {}, 0, {request.begin(), request.begin() + kExtendedCodeSize}});
  }
  if (route.sets != nullptr && route.action == nullptr && !is_fov) {
    for (const VarInfo* var : *route.sets) {
      std::uint32_t place = 0;
      {
        const auto lock = catalogue_->LockValues();
        place = var->set_start_pos;
      }
      fields.push_back(Field(*var, request, code_size + place, var->set_coefficient));
    }
  } else if (route.gets.empty() || route.action != nullptr || is_fov) {
    fields = ProtocolRequestFields(command, request);
  }
  return Filled(std::move(fields), request);
}

std::vector<DecodedField> ExchangeDecoder::Reply(std::uint8_t command, ByteView request,
                                                 ByteView reply) const {
  const Route route = FindRoute(command, request);
  const bool is_fov = !route.code.second && command == quarn::lidar::kQueryMultiFovCmd;
  std::vector<DecodedField> fields;
  if (route.gets.empty() || route.action != nullptr || is_fov) {
    fields = ProtocolReplyFields(command, reply);
  } else if (!reply.empty()) {
    for (const VarInfo* var : route.gets) {
      fields.push_back(Field(*var, reply, var->get_start_pos, var->coefficient));
    }
  }
  if (route.code.second && reply.size() >= kExtendedCodeSize) {
    fields.push_back(
        {{}, "four-byte code", {}, {}, {}, 0, {reply.begin(), reply.begin() + kExtendedCodeSize}});
  }
  return Filled(std::move(fields), reply);
}

DecodedField ExchangeDecoder::Field(const VarInfo& var, ByteView payload, std::size_t place,
                                    float coefficient) const {
  std::size_t length = 0;
  {
    const auto lock = catalogue_->LockValues();
    length = var.var_len;
  }
  if (TakesWholePayload(var.var_name)) {
    place = 0;
    length = payload.size();
  }
  DecodedField field{var.var_id, var.var_name, {}, {}, PlainUnit(var), place, {}};
  const ByteView rest = payload.subspan(std::min(place, payload.size()));
  const ByteView raw = rest.first(std::min(length, rest.size()));
  field.raw.assign(raw.begin(), raw.end());
  field.is_missing = raw.size() < length;
  if (!field.is_missing) {
    field.text = BytesToText(var.var_type, raw, coefficient).text;
    field.label = OptionLabel(var, field.text);
  }
  return field;
}

}  // namespace varkel
