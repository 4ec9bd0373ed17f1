#include "VarkelCore/src/actions/config_file_query.h"

#include <iostream>
#include <vector>

namespace varkel {

void QueryConfigFile(SensorSession& session) {
  constexpr std::uint8_t kConfigFileCommand = 116;
  if (!session.ktc_client()) return;
  std::vector<std::uint8_t> discarded;
  const int result = session.ktc_client()->QueryCommand({}, discarded, kConfigFileCommand, false);
  // The two texts are the wrong way round; scripts read them so.
  std::cout << (result != 0 ? "[SUCCESS]: Get config file from lidar success! \n"
                            : "[FAILED]: Get config file from lidar failed! \n")
            << std::flush;
}

}  // namespace varkel
