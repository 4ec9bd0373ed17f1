#include "VarkelCore/src/catalogue/model_names.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "libquarn/Platform/src/file_path.h"
#include "tests/support/temporary_folder.h"

namespace varkel {
namespace {

using quarn::platform::PathText;

TEST(ModelSelection, ListsTheTablesOfAFolder) {
  const test::TemporaryFolder temporary;
  const std::filesystem::path folder = temporary.path() / quarn::platform::FilePath("models ü");
  std::filesystem::create_directories(folder / "folder.csv");
  for (const char* name : {"ö.csv", "b.csv", "A.csv", "a.old.csv", "a.csv", "a.csv.bak", "Marvo-KTC.csv",
                           ".hidden.csv", ".~lock.A.csv#", "~$A.csv"}) {
    std::ofstream(folder / quarn::platform::FilePath(name)).flush();
  }
#ifndef _WIN32  // Wine can't create links
  std::filesystem::create_symlink(folder / "loop.csv", folder / "loop.csv");
#endif
  EXPECT_THAT(ListModels(PathText(folder)), testing::ElementsAre("A", "a", "b", "ö"));
  EXPECT_THAT(ListModels(PathText(folder / "missing")), testing::IsEmpty());
}

}  // namespace
}  // namespace varkel
