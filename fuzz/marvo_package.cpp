// The Marvo firmware package: header and every component.
//
// Input: the package; one that lacks the header's magic gets it.
#include "VarkelCore/src/upgrade/marvo_package.h"

#include "fuzz/input.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;

constexpr std::size_t kHeader = 56;

// A component is the end of the range that its entry names, or nothing.
void CheckComponent(Bytes package, const varkel::OtaComponent& component) {
  const auto extracted = ExtractComponent(package, component);
  const std::uint64_t end = kHeader + std::uint64_t{component.offset} + component.size;
  if (extracted.out_of_range || end > package.size()) {
    Require(extracted.data.empty(), "nothing comes from outside of the package");
    return;
  }
  const Bytes range = package.subspan(kHeader + component.offset, component.size);
  Require(extracted.data.size() <= range.size() && Same(extracted.data, range.last(extracted.data.size())),
          "a component is what its entry names");
}

void Parse(Bytes package) {
  varkel::OtaPackageHeader header;
  const auto fault = ParseMarvoPackage(package, header);
  Require((package.size() < kHeader) == (fault == varkel::MarvoPackageFault::kTooShort),
          "56 bytes are a header");
  for (const auto running : {quarn::lidar::Partition::kA, quarn::lidar::Partition::kB}) {
    const auto components = ComponentsToSend(header, running);
    Require(components.size() <= 4, "each partition gets one application");
    for (const auto& component : components) {
      Require(fault == varkel::MarvoPackageFault::kNone, "a bad package has no components");
      CheckComponent(package, component);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes(data, size);
  Parse(bytes);
  fuzz::Vector made(bytes.begin(), bytes.end());
  if (made.size() >= 4) std::copy_n("QRNA", 4, made.begin());
  Parse(made);
  return 0;
}
