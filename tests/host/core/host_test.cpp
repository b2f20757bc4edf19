// Opening a data folder, and the host's entry points.
#include "host/core/host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/library.h"
#include "platform/time_base.h"
#include "tests/host/core/fake_instrument.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

HostOptions OptionsFor(const std::string& folder) {
  HostOptions options;
  options.dataFolder = folder;
  return options;
}

TEST(Host, MakesAFreshFolderAndOpensItAgain) {
  TempFolder folder;
  const std::string data = folder / "below/data";
  Host::Open(OptionsFor(data));
  const auto host = Host::Open(OptionsFor(data));
  EXPECT_TRUE(host->notices().empty());
  EXPECT_EQ(host->samples().Count(), 0);
}

TEST(Host, SaysWhyAFolderCantBeOpened) {
  TempFolder folder;
  std::ofstream(folder / "file") << "x";
  EXPECT_EQ(KindRaisedBy([&] { Host::Open(OptionsFor(folder / "file")); }),
            HostErrorKind::DataFolder);
  EXPECT_EQ(KindRaisedBy([&] { Host::Open(OptionsFor(folder / "file/below")); }),
            HostErrorKind::DataFolder);

  std::filesystem::create_directory(folder / "damaged");
  std::ofstream(folder / "damaged/torvell.db") << std::string(8192, 'x');
  EXPECT_EQ(KindRaisedBy([&] { Host::Open(OptionsFor(folder / "damaged")); }),
            HostErrorKind::Database);
}

TEST(Host, LeavesAFolderOfAnUnknownVersionAlone) {
  for (const auto& [version, kind] :
       {std::pair("99", HostErrorKind::NewerVersion), std::pair("-1", HostErrorKind::Database),
        std::pair("0", HostErrorKind::Database)}) {  // another program's tables
    TempFolder folder;
    {
      const auto host = OpenHost(folder);
      ExecuteSql(host->database(), std::string("PRAGMA user_version = ") + version);
    }
    const std::string before = ReadFile(folder / "torvell.db");
    try {
      OpenHost(folder);
      ADD_FAILURE() << version;
    } catch (const HostError& error) {
      EXPECT_EQ(error.kind(), kind) << version;
      const std::string message = error.what();
      EXPECT_NE(message.find(std::string("of version ") + version), std::string::npos) << message;
    }
    EXPECT_EQ(ReadFile(folder / "torvell.db"), before) << version;
  }
}

TEST(Host, EndsAsWellAfterAFailedOpening) {
  TempFolder folder;
  std::filesystem::create_directory(folder / "trays.lock");
  EXPECT_EQ(KindRaisedBy([&] { OpenHost(folder); }), HostErrorKind::DataFolder);
  std::filesystem::remove(folder / "trays.lock");
  OpenHost(folder);
}

TEST(Host, EntryPointsRaiseWithoutAHost) {
  try {
    GetPortManager();
    FAIL();
  } catch (rvx::InvalidException* raised) {
    delete raised;
  }
  TempFolder folder;
  const auto host = OpenHost(folder);
  EXPECT_EQ(GetPortManager(), &host->ports());
  EXPECT_EQ(GetErrorArchive(), &host->errors());
  EXPECT_NE(GetAnalysisManager(), nullptr);
}

// The module finds the host's library and its entries by their names.
TEST(Host, IsFoundByName) {
  platform::LibraryHandle library = platform::LoadLibrary("TORVCORE.DLL");
  ASSERT_NE(library, nullptr) << platform::LastLibraryError();
  for (const char* entry :
       {"ExecuteLoadResources", "ExecutePerformCreation", "GetAnalysisArchive",
        "GetAnalysisManager", "GetArchiveManager", "GetErrorArchive", "GetInstrumentArchive",
        "GetInstrumentManager", "GetPortManager", "GetSampleArchive", "GetSecurityManager"}) {
    EXPECT_NE(platform::FindEntry(library, entry), nullptr) << entry;
  }
  EXPECT_EQ(platform::FindEntry(library, "GetPortManager"),
            reinterpret_cast<void*>(&GetPortManager));
  platform::FreeLibrary(library);
}

TEST(Host, AMissingModuleIsSaid) {
  TempFolder folder;
  HostOptions options = OptionsFor(folder.path());
  options.moduleName = folder / "none.so";
  const auto host = Host::Open(options);
  EXPECT_EQ(KindRaisedBy([&] { host->DiscoverInstruments(); }), HostErrorKind::ModuleMissing);
}

class Client : public rvx::UserInterfaceClient {
 public:
  rvx::FrameWindow* PerformCreation() override {
    thread = platform::CurrentThreadName();
    throw new rvx::InvalidException();
  }
  int32_t LoadResources() override {
    thread = platform::CurrentThreadName();
    // Calls once more from inside the call.
    if (depth++ == 0) {
      EXPECT_EQ(ExecuteLoadResources(this), 7);
    }
    return 7;
  }
  std::string thread;
  int depth = 0;
};

TEST(Host, RunsTheClientOnTheUserInterfaceThread) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  Client client;
  EXPECT_EQ(ExecuteLoadResources(&client), 7);
  EXPECT_EQ(client.thread, "user interface");
  EXPECT_EQ(client.depth, 2);
  try {
    ExecutePerformCreation(&client);
    FAIL() << "what the client raises arrives at the caller";
  } catch (rvx::InvalidException* raised) {
    delete raised;
  }
}

// An instrument's destructor may still call the host's services.
TEST(Host, DeletesInstrumentsBeforeItsServices) {
  TempFolder folder;
  bool deleted = false;
  {
    const auto host = OpenHost(folder);
    FakeInstrument& instrument = Adopt(*host);
    instrument.onDestroy = [&] {
      Client client;
      EXPECT_EQ(ExecuteLoadResources(&client), 7);
      EXPECT_EQ(GetInstrumentManager()->GetInstrument(0), nullptr);
      FakeInstrument last;
      GetInstrumentArchive()->StoreInstrument("RVXCOM1:0", &last);
      deleted = true;
    };
    EXPECT_EQ(GetInstrumentManager()->GetInstrument(0), &instrument);
    EXPECT_EQ(GetInstrumentManager()->GetInstrument(1), nullptr);
    struct Listener : SelectionListener {
      void InstrumentSelected(int32_t index) override { told.push_back(index); }
      std::vector<int32_t> told;
    } listener;
    host->instruments().AddSelectionListener(&listener);
    EXPECT_EQ(GetInstrumentManager()->SelectInstrument(1, 1), 0);
    EXPECT_NE(GetInstrumentManager()->SelectInstrument(0, 0), 0);  // only a question
    EXPECT_NE(GetInstrumentManager()->SelectInstrument(0, 1), 0);
    EXPECT_EQ(listener.told, std::vector<int32_t>{0});
    host->instruments().RemoveSelectionListener(&listener);
  }
  EXPECT_TRUE(deleted);
  EXPECT_TRUE(OpenHost(folder)->instrumentTexts().Read("RVXCOM1:0"));
}

TEST(Host, ASeedMakesTheSameIdsOnAFreshFolderAndOthersLater) {
  auto firstId = [](const std::string& path) {
    HostOptions options = OptionsFor(path);
    options.seed = 7;
    const auto host = Host::Open(options);
    return platform::FormatGuid(platform::CreateGuid());
  };
  TempFolder one, two;
  const std::string first = firstId(one.path());
  EXPECT_EQ(firstId(two.path()), first);
  const std::string second = firstId(one.path());
  EXPECT_NE(second, first);
  EXPECT_EQ(firstId(two.path()), second);
}

class Monitor : public rvx::ViscometerArrayMonitor {
 public:
  void ErrorReported(rvx::ActionErrorRecord) override {}
  void InstrumentsChanged(int32_t) override {
    ++calls;
    if (leaveAt == calls) GetInstrumentManager()->UnregisterMonitor(handle);
  }
  int calls = 0;
  int leaveAt = 0;
  int32_t handle = 0;
};

TEST(InstrumentList, MonitorsHearOfChangesUntilTheyLeave) {
  TempFolder folder;
  const auto host = OpenHost(folder);
  Monitor stays, leaves;
  leaves.handle = GetInstrumentManager()->RegisterMonitor(&leaves);
  leaves.leaveAt = 1;  // from inside the call
  stays.handle = GetInstrumentManager()->RegisterMonitor(&stays);
  EXPECT_NE(stays.handle, leaves.handle);
  GetInstrumentManager()->NotifyInstrumentChanged();
  GetInstrumentManager()->NotifyInstrumentChanged();
  GetInstrumentManager()->UnregisterMonitor(stays.handle);
  GetInstrumentManager()->NotifyInstrumentChanged();
  EXPECT_EQ(leaves.calls, 1);
  EXPECT_EQ(stays.calls, 2);
}

// A monitor that unregisters while another thread is inside its call waits until that call is over.
// Under virtual time, where the seeds try both orders of the two threads.
TEST(InstrumentList, LeavingWaitsForACallInProgress) {
  class Slow : public rvx::ViscometerArrayMonitor {
   public:
    void ErrorReported(rvx::ActionErrorRecord) override {}
    void InstrumentsChanged(int32_t) override {
      inside = true;
      entered.Set();
      platform::Sleep(platform::Milliseconds(1000));
      inside = false;
    }
    platform::Event entered{"monitor entered"};
    bool inside = false;
  };
  for (uint64_t seed = 0; seed < 10; ++seed) {
    TempFolder folder;
    platform::TimeBaseOptions options;
    options.kind = platform::TimeBaseKind::Virtual;
    options.seed = seed;
    const int result = platform::RunUnderTimeBase(options, [&] {
      const auto host = OpenHost(folder);
      Slow slow;
      const int32_t handle = GetInstrumentManager()->RegisterMonitor(&slow);
      const auto thread = platform::StartThread(
          "notifier", [] { GetInstrumentManager()->NotifyInstrumentChanged(); });
      slow.entered.Wait();
      GetInstrumentManager()->UnregisterMonitor(handle);
      const bool inside = slow.inside;
      thread->Join();
      return inside ? 1 : 0;
    });
    EXPECT_EQ(result, 0) << "seed " << seed;
  }
}

TEST(ErrorStore, ReportsSurviveAndReachListeners) {
  class Listener : public ErrorListener {
   public:
    void ErrorReported(const ErrorReport& report) override { heard += report.message; }
    std::string heard;
  };
  TempFolder folder;
  Listener listener;
  {
    const auto host = OpenHost(folder);
    host->errors().AddListener(&listener);
    rvx::ActionErrorRecord record;
    record.message = "Instrument not responding.";
    record.code = rvx::MessageCode::NotResponding;
    record.kind = 1;
    record.instrumentId = "RVX 7";
    record.tray = 1;
    record.position = 5;
    record.sampleId = "oil";
    record.operatorName = "anna";
    record.sampleFailure = 1;
    rvx::ActionException error(record);
    GetInstrumentManager()->ReportError(&error);
    // The listeners are called although the error could not be stored.
    ExecuteSql(host->database(), "ALTER TABLE ERRORS RENAME TO GONE");
    GetInstrumentManager()->ReportError(&error);
    ExecuteSql(host->database(), "ALTER TABLE GONE RENAME TO ERRORS");
    host->errors().RemoveListener(&listener);
    GetInstrumentManager()->ReportError(&error);
  }
  EXPECT_EQ(listener.heard, "Instrument not responding.Instrument not responding.");
  const auto host = OpenHost(folder);
  const auto reports = host->errors().Last(10);
  ASSERT_EQ(reports.size(), 2u);
  EXPECT_EQ(reports[0].source, "RVX 7");
  EXPECT_EQ(reports[0].code, rvx::MessageCode::NotResponding);
  EXPECT_EQ(reports[0].kind, 1);
  EXPECT_EQ(reports[0].tray, 1);
  EXPECT_EQ(reports[0].position, 5);
  EXPECT_EQ(reports[0].sampleId, "oil");
  EXPECT_EQ(reports[0].operatorName, "anna");
  EXPECT_TRUE(reports[0].sampleFailure);
  EXPECT_FALSE(reports[1].acknowledged);
  host->errors().Acknowledge({reports[1].row, 4711});
  EXPECT_FALSE(host->errors().Last(10)[0].acknowledged);
  EXPECT_TRUE(host->errors().Last(10)[1].acknowledged);
}

}  // namespace
}  // namespace torvell
