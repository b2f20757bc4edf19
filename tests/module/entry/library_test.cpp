// The built library as a host sees it: its exports, and what it does with another host or without
// one.
#include <gtest/gtest.h>

#include <memory>

#include "boundary/host.h"
#include "boundary/version.h"
#include "platform/library.h"
#include "tests/support/fake_controller.h"
#include "tests/support/fake_host.h"
#include "tests/support/virtual_run.h"

namespace rvx {
namespace {

using CreateFunction = void (*)(ArrayOfInstruments**);

CreateFunction LoadModule() {
  platform::LibraryHandle module = platform::LoadLibrary(RVX_LIBRARY);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<CreateFunction>(platform::FindEntry(module, "CreateInstruments"));
}

// The message of the InvalidException that CreateInstruments throws; empty if it throws none.
std::string InvalidMessage(CreateFunction create) {
  ArrayOfInstruments instruments;
  ArrayOfInstruments* array = &instruments;
  try {
    create(&array);
  } catch (InvalidException* raised) {
    const std::unique_ptr<InvalidException> owned(raised);
    return owned->GetRecord().message;
  }
  return std::string();
}

// A host reads the version before it calls one of the twelve functions.
TEST(LibraryTest, ExportsTwelveFunctionsAndItsVersionAndNoMore) {
  platform::LibraryHandle module = platform::LoadLibrary(RVX_LIBRARY);
  ASSERT_NE(module, nullptr) << platform::LastLibraryError();
  for (const char* name :
       {"CreateInstruments", "ExecuteLoadResources", "ExecutePerformCreation", "GetAnalysisArchive",
        "GetAnalysisManager", "GetArchiveManager", "GetErrorArchive", "GetInstrumentArchive",
        "GetInstrumentManager", "GetPortManager", "GetSampleArchive", "GetSecurityManager"}) {
    EXPECT_NE(platform::FindEntry(module, name), nullptr) << name;
  }
  const auto* version =
      static_cast<const int32_t*>(platform::FindEntry(module, kBoundaryVersionEntry));
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(*version, kBoundaryVersion);
  EXPECT_EQ(platform::FindEntry(module, "_ZN3rvx5C_RVX12GetTypeNameB5cxx11Ev"), nullptr);
}

TEST(LibraryTest, WithoutAHostItRaises) {
  const CreateFunction create = LoadModule();
  ASSERT_NE(create, nullptr);
  EXPECT_NE(InvalidMessage(create).find("could not be loaded"), std::string::npos);
}

TEST(LibraryTest, WithAHostThatLacksAnEntryItRaisesAndNamesIt) {
  ASSERT_NE(platform::LoadLibrary(BROKEN_HOST), nullptr) << platform::LastLibraryError();
  const CreateFunction create = LoadModule();
  ASSERT_NE(create, nullptr);
  EXPECT_NE(InvalidMessage(create).find("no entry GetPortManager"), std::string::npos);
}

TEST(LibraryTest, WorksWithAnyHostOfThoseEntries) {
  platform::LibraryHandle tiny = platform::LoadLibrary(TINY_HOST);
  ASSERT_NE(tiny, nullptr) << platform::LastLibraryError();
  auto* open = reinterpret_cast<FakeHost* (*)()>(platform::FindEntry(tiny, "OpenTinyHost"));
  auto* close = reinterpret_cast<void (*)()>(platform::FindEntry(tiny, "CloseTinyHost"));
  ASSERT_NE(open, nullptr);
  ASSERT_NE(close, nullptr);
  const CreateFunction create = LoadModule();
  ASSERT_NE(create, nullptr);
  RunVirtual([&] {
    FakeHost* host = open();
    FakeController controller(host->ports.Add("COM3"), 11);
    {
      ArrayOfInstruments instruments;
      ArrayOfInstruments* array = &instruments;
      create(&array);
      ASSERT_EQ(instruments.size(), 1u);
      const std::unique_ptr<ViscometerInstrument> instrument(instruments[0]);
      EXPECT_EQ(instrument->GetPortAddressText(), "RVX Bh");
      EXPECT_EQ(host->ports.opened(),
                (std::vector<std::string>{"COM1", "COM2", "COM3", "COM3", "COM4"}));
      try {
        instrument->CreateActionByIndex(18);
        ADD_FAILURE() << "an unknown action was made";
      } catch (InvalidException* raised) {  // crosses from a library that exports no type
        delete raised;
      }
      const std::unique_ptr<Action> action(instrument->CreateSampleAction(1));
      EXPECT_EQ(action->GetLabel(), "Verify Known Viscosity");
    }
    EXPECT_NE(host->instrumentArchive.GetText("RVXCOM3:11"), "");
    close();
  });
}

}  // namespace
}  // namespace rvx
