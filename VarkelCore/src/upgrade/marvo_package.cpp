#include "VarkelCore/src/upgrade/marvo_package.h"

#include <algorithm>
#include <string_view>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel {

namespace {

using quarn::lidar::LoadLittleEndian;
using quarn::lidar::Partition;

constexpr std::string_view kMagic = "QRNA";
constexpr std::size_t kTotalSizeOffset = 4;
constexpr std::size_t kFlagsOffset = 8;
constexpr std::size_t kComponentsOffset = 12;
constexpr std::size_t kComponentEntry = 8;  // offset and size
constexpr std::uint32_t kFpgaPreamble = 1024;

constexpr char kTmbFpga[] = "TMB_FPGA";
constexpr char kBmbFpga[] = "BMB_FPGA";

// In the order of their flags and fields.
constexpr OtaComponentRef OtaPackageHeader::*kComponents[] = {
    &OtaPackageHeader::bmb_app_a, &OtaPackageHeader::bmb_app_b, &OtaPackageHeader::bmb_fpga,
    &OtaPackageHeader::tmb_fpga, &OtaPackageHeader::tmb_param};

}  // namespace

MarvoPackageFault ParseMarvoPackage(std::span<const std::uint8_t> package, OtaPackageHeader& header) {
  header = {};
  if (package.size() < kMarvoHeaderSize) return MarvoPackageFault::kTooShort;
  if (!std::equal(kMagic.begin(), kMagic.end(), package.begin())) return MarvoPackageFault::kWrongMagic;
  header.total_size = LoadLittleEndian<std::uint32_t>(package, kTotalSizeOffset);
  header.flags = package[kFlagsOffset];
  std::size_t entry = kComponentsOffset;
  unsigned flag = 1;
  for (OtaComponentRef OtaPackageHeader::*const component : kComponents) {
    if ((header.flags & flag) != 0) {
      header.*component = {LoadLittleEndian<std::uint32_t>(package, entry),
                           LoadLittleEndian<std::uint32_t>(package, entry + sizeof(std::uint32_t)), true};
    }
    entry += kComponentEntry;
    flag <<= 1U;
  }
  return MarvoPackageFault::kNone;
}

std::vector<OtaComponent> ComponentsToSend(const OtaPackageHeader& header, Partition running) {
  std::vector<OtaComponent> components;
  const auto add = [&components](const char* name, std::uint8_t type, const OtaComponentRef& ref) {
    if (ref.present) components.push_back({name, type, ref.offset, ref.size, true});
  };
  if (running == Partition::kA) {
    add("BMB_APP_B", 2, header.bmb_app_b);
  } else {
    add("BMB_APP_A", 2, header.bmb_app_a);
  }
  add(kBmbFpga, 1, header.bmb_fpga);
  add(kTmbFpga, 0, header.tmb_fpga);
  add("TMB_PARAM", 3, header.tmb_param);
  return components;
}

ExtractedComponent ExtractComponent(std::span<const std::uint8_t> package, const OtaComponent& component) {
  const std::uint32_t start = static_cast<std::uint32_t>(kMarvoHeaderSize) + component.offset;
  const std::uint32_t end = start + component.size;
  if (end > package.size()) return {{}, true};
  const std::uint64_t true_start = std::uint64_t{kMarvoHeaderSize} + component.offset;
  if (true_start > package.size() || component.size > package.size() - true_start) return {};
  const auto data = package.subspan(static_cast<std::size_t>(true_start), component.size);
  const bool is_fpga = component.name == kBmbFpga || component.name == kTmbFpga;
  return {is_fpga && component.size > kFpgaPreamble ? data.subspan(kFpgaPreamble) : data, false};
}

}  // namespace varkel
