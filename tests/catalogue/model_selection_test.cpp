#include "VarkelCore/src/catalogue/model_names.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "tests/support/temporary_folder.h"

namespace varkel {
namespace {

TEST(ModelSelection, ListsTheTablesOfAFolder) {
  const test::TemporaryFolder temporary;
  const std::filesystem::path& folder = temporary.path();
  std::filesystem::create_directories(folder / "folder.csv");
  for (const char* name : {"b.csv", "A.csv", "a.old.csv", "a.csv", "a.csv.bak", "Marvo-KTC.csv",
                           ".hidden.csv", ".~lock.A.csv#", "~$A.csv"}) {
    std::ofstream(folder / name).flush();
  }
#ifndef _WIN32  // Wine can't create links
  std::filesystem::create_symlink(folder / "loop.csv", folder / "loop.csv");
#endif
  EXPECT_THAT(ListModels(folder.string()), testing::ElementsAre("A", "a", "b"));
  EXPECT_THAT(ListModels((folder / "missing").string()), testing::IsEmpty());
}

}  // namespace
}  // namespace varkel
