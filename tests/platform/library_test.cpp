#include "platform/library.h"

#include <gtest/gtest.h>

#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

TEST(Library, IsFoundByItsSystemNameBesideThePlatform) {
  LibraryHandle library = LoadLibrary("RVXPLATFORM.DLL");
  ASSERT_NE(nullptr, library) << LastLibraryError();
  EXPECT_NE(nullptr, FindEntry(library, "_ZN8platform10CreateGuidEv"));
  EXPECT_EQ(nullptr, FindEntry(library, "NoSuchEntry"));
  EXPECT_NE(std::string::npos, LastLibraryError().find("NoSuchEntry"));
  FreeLibrary(library);
}

TEST(Library, ErrorsBelongToTheirThread) {
  RunVirtual(1, [] {
    EXPECT_EQ(nullptr, LoadLibrary("NoSuchThing.dll"));
    StartThread("other", [] {
      EXPECT_EQ("", LastLibraryError());
      EXPECT_EQ(nullptr, LoadLibrary("/no/such/path.so"));
    })->Join();
    EXPECT_NE(std::string::npos, LastLibraryError().find("libnosuchthing.so"));
    EXPECT_EQ(nullptr, FindEntry(nullptr, "Entry"));
  });
}

}  // namespace
}  // namespace platform
