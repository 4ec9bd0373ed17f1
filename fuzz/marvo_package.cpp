// The Marvo firmware package: header and every component, hostile or made by ourselves.
#include "VarkelCore/src/marvo_package.h"

#include <array>

#include "fuzz/input.h"
#include "libquarn/Platform/src/byte_order.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using quarn::lidar::Partition;
using varkel::MarvoPackageFault;
using varkel::OtaComponent;

constexpr std::size_t kComponents = 5;
constexpr std::size_t kFirstEntry = 12;
constexpr std::size_t kPreamble = 1024;

bool IsFpga(const OtaComponent& component) {
  return component.name.ends_with("_FPGA");
}

void CheckComponent(Bytes package, const OtaComponent& component) {
  const auto extracted = ExtractComponent(package, component);
  const std::uint64_t end = 56 + std::uint64_t{component.offset} + component.size;
  const auto wrapped = static_cast<std::uint32_t>(end);
  Require(extracted.out_of_range == (wrapped > package.size()), "the range test is that of 32 bits");
  if (extracted.out_of_range || end > package.size()) {
    Require(extracted.data.empty(), "nothing comes from outside of the package");
    return;
  }
  const Bytes whole = package.subspan(56 + component.offset, component.size);
  const std::size_t skipped = IsFpga(component) && whole.size() > kPreamble ? kPreamble : 0;
  Require(Same(extracted.data, whole.subspan(skipped)), "a component is what its entry names");
}

void Parse(Bytes package) {
  varkel::OtaPackageHeader header;
  const auto fault = ParseMarvoPackage(package, header);
  Require((package.size() < 56) == (fault == MarvoPackageFault::kTooShort), "56 bytes are a header");
  std::size_t sent = 0;
  for (const Partition running : {Partition::kA, Partition::kB}) {
    for (const OtaComponent& component : ComponentsToSend(header, running)) {
      Require(component.present && fault == MarvoPackageFault::kNone, "a bad package has no components");
      CheckComponent(package, component);
      ++sent;
    }
  }
  Require(sent <= 2 * kComponents - 2, "each partition gets one application");
}

// A package of the input's pieces gives these pieces back.
void BuildAndParse(fuzz::Input& input) {
  Vector package(56);
  std::copy_n("QRNA", 4, package.begin());
  package[8] = input.Byte();
  std::array<Vector, kComponents> pieces;
  for (std::size_t i = 0; i < kComponents; ++i) {
    const Bytes piece = input.Take(input.Byte());
    pieces.at(i).assign(piece.begin(), piece.end());
    if ((package[8] & 0x80U) != 0) pieces.at(i).insert(pieces.at(i).begin(), kPreamble, 0);
    const std::size_t entry = kFirstEntry + 8 * i;
    quarn::lidar::StoreLittleEndian<std::uint32_t>(package, entry,
                                                   static_cast<std::uint32_t>(package.size() - 56));
    quarn::lidar::StoreLittleEndian<std::uint32_t>(package, entry + 4,
                                                   static_cast<std::uint32_t>(pieces.at(i).size()));
    package.insert(package.end(), pieces.at(i).begin(), pieces.at(i).end());
  }
  varkel::OtaPackageHeader header;
  Require(ParseMarvoPackage(package, header) == MarvoPackageFault::kNone, "a made package is good");
  constexpr std::array<const char*, kComponents> kNames = {"BMB_APP_A", "BMB_APP_B", "BMB_FPGA", "TMB_FPGA",
                                                           "TMB_PARAM"};
  for (std::size_t i = 0; i < kComponents; ++i) {
    const auto all = ComponentsToSend(header, i == 0 ? Partition::kB : Partition::kA);
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.name == kNames.at(i); });
    Require((found != all.end()) == ((package[8] >> i & 1U) != 0), "flags name the components");
    if (found == all.end()) continue;
    CheckComponent(package, *found);
    const bool cut = IsFpga(*found) && pieces.at(i).size() > kPreamble;
    Require(ExtractComponent(package, *found).data.size() == pieces.at(i).size() - (cut ? kPreamble : 0),
            "a component comes back whole");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes(data, size);
  Parse(bytes);
  fuzz::Input input(bytes);
  BuildAndParse(input);
  return 0;
}
