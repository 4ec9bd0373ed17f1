#include "VarkelCore/src/catalogue/model_names.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace varkel {
namespace {

TEST(ModelSelection, ListsTheTablesOfAFolder) {
  const std::filesystem::path folder = testing::TempDir() + "varkel models";
  std::filesystem::remove_all(folder);
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
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace varkel
