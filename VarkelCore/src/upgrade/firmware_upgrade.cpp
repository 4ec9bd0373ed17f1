#include "VarkelCore/src/upgrade/firmware_upgrade.h"

#include <string>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/catalogue/named_command.h"
#include "VarkelCore/src/upgrade/marvo_package.h"
#include "VarkelCore/src/upgrade/network_upgrade.h"
#include "VarkelCore/src/upgrade/serial_upgrade.h"

namespace varkel {

namespace {

/// Progress is counted in blocks of this many bytes.
constexpr std::size_t kBlockSize = 1024;

constexpr int kJunctionBox = 2;
constexpr char kJunctionBoxCommand[] = "0x83";

constexpr char kEmptyPackage[] = "The upgrade package is empty.";

}  // namespace

FirmwareUpgrade::FirmwareUpgrade(UserReport& report, Activity& activity, WorkerThreads& workers,
                                 const std::atomic<int>& connect_type, Host host)
    : report_(report),
      activity_(activity),
      workers_(workers),
      connect_type_(connect_type),
      host_(std::move(host)),
      marvo_(report) {}

int FirmwareUpgrade::StartFromRow(const Session& session, const Catalogue& catalogue, const VarInfo* var,
                                  const QString& path) {
  if (!session || !session->is_ktc_open() || !session->is_idle() || !catalogue) return -1;
  const std::string command = var == nullptr ? std::string() : UpgradeCommandText(*var);
  const auto package = OpenWithContent(path);
  if (!package || command.empty()) return 0;
  Start(session, package,
        [this, session, catalogue, command](const auto& stop, const auto& bytes, const auto& run) {
          SendOverNetwork(stop, *session->ktc_client(), bytes, command, report_, run,
                          [&] { return host_.restart(session, catalogue); });
        });
  return 0;
}

int FirmwareUpgrade::StartSmallSensor(const Session& session, const Catalogue& catalogue,
                                      const QString& path) {
  if (!session || session->has_ended() || connect_type_ == kNetwork || activity_.is_upgrading()) {
    report_.Error("lidar is not connected, or lidar is upgrade");
    return -1;
  }
  const auto package = OpenWithContent(path);
  if (!package) return 0;
  const int mode = mode_;
  if (mode == kJunctionBox && session->ktc_client()) {
    Start(session, package, [this, session, catalogue](const auto& stop, const auto& bytes, const auto& run) {
      SendOverNetwork(stop, *session->ktc_client(), bytes, kJunctionBoxCommand, report_, run,
                      [&] { return host_.restart(session, catalogue); });
    });
  } else {
    Start(session, package, [this, session, mode](const auto& stop, const auto& bytes, const auto& run) {
      SendOverSerial(stop, *session->serial_exchange(), bytes, mode, report_, run);
    });
  }
  return 0;
}

int FirmwareUpgrade::StartMarvo(const Session& session, const QString& path) {
  const auto refuse = [this](const char* text) {
    report_.Error(text);
    return -1;
  };
  const bool is_marvo = session && session->is_ktc_open() && connect_type_ == kKtcToSmallSensor;
  if (!is_marvo || activity_.is_upgrading()) {
    return refuse("lidar is not connected, or lidar is upgrading");
  }
  const auto package = PackageFile::Open(path);
  if (!package) return refuse("Failed to open upgrade file");
  if (package->size() < kMarvoHeaderSize) return refuse("Upgrade package too small");
  Start(session, package, [this, session](const auto& stop, const auto& bytes, const auto& run) {
    marvo_.Run(stop, *session, bytes, run);
  });
  return 0;
}

/// Null if the file can't be used; an empty file is also reported.
std::shared_ptr<PackageFile> FirmwareUpgrade::OpenWithContent(const QString& path) {
  auto package = PackageFile::Open(path);
  if (package && package->size() == 0) {
    report_.Error(kEmptyPackage);
    return nullptr;
  }
  return package;
}

/// Claims the upgrade and sends the package on a worker; a file that can't be read completely ends the
/// upgrade.
void FirmwareUpgrade::Start(const Session& session, const std::shared_ptr<PackageFile>& package, Send send) {
  progress_ = 0;
  total_ = static_cast<int>(package->size() / kBlockSize);
  activity_.BeginUpgrade();
  workers_.Start([this, session, package, send = std::move(send)](const std::stop_token& stop) {
    const UpgradeRun run = Claimed(session);
    const auto bytes = package->Read();
    if (!bytes) {  // never send part of a package
      run.end();
      const std::string text = "The upgrade package can't be read whole, so nothing was sent.";
      report_.Error(text);
      report_.Log(text, "INFO");
      return;
    }
    send(stop, *bytes, run);
  });
}

UpgradeRun FirmwareUpgrade::Claimed(const Session& session) {
  return {progress_, total_, [this] { activity_.EndUpgrade(); },
          [this, session] { host_.disconnect(session); }};
}

}  // namespace varkel
