// The instrument object: its settings text, what it makes, its readings and its error checks.
#include <gtest/gtest.h>

#include "boundary/standards_text.h"
#include "module/calibration/standards_map.h"
#include "module/instrument/operation_timer.h"
#include "platform/prompt.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "tests/module/instrument/instrument_fixture.h"

namespace rvx {
namespace {

template <class Operation>
bool RaisesInvalid(Operation operation) {
  try {
    operation();
  } catch (InvalidException* raised) {
    delete raised;
    return true;
  }
  return false;
}

std::string KeyOf(Action* action) {
  const std::unique_ptr<Action> owned(action);
  return owned->GetClassName();
}

TEST(InstrumentTest, BeginsWithDefaultsAndAnEmptyTray) {
  RunVirtual([] {
    InstrumentBench bench;
    EXPECT_EQ(bench.instrument->GetArchiveKey(), "RVXCOM1:0");
    EXPECT_EQ(bench.instrument->GetPortAddressText(), "RVX 0h");
    EXPECT_EQ(bench.instrument->GetInstrumentId(), "RVX");
    EXPECT_EQ(bench.instrument->GetInstrumentName(), "Unsaved");
    TrayOfSampleActions* tray = bench.instrument->GetTray(0);
    TrayGuard guard(*tray);
    ASSERT_EQ(tray->GetSize(), 30);
    EXPECT_EQ(tray->GetAt(29)->GetClassName(), kNullActionClassKey);
    ConfigurationGuard configurationGuard(bench.instrument->configuration());
    // Model "4" has a different injection temperature and offset, although the model becomes known
    // late.
    EXPECT_EQ(bench.instrument->configuration().fields.injectionTemperature, 15.0);
    EXPECT_EQ(bench.instrument->configuration().fields.temperatureOffset, 0.12);
    EXPECT_EQ(bench.instrument->configuration().fields.serialNumber, "SN-1");
  });
}

TEST(InstrumentTest, TheSettingsTextBringsTheTrayBack) {
  RunVirtual([] {
    InstrumentBench bench;
    {
      TrayOfSampleActions* tray = bench.instrument->GetTray(0);
      std::shared_ptr<Action> action(bench.instrument->CreateActionByIndex(1));
      action->SetSampleId("oil\nof two lines");
      TrayGuard guard(*tray);
      (void)tray->Replace(3, action);
    }
    const std::string text = bench.instrument->SaveSettingsText();
    const std::vector<std::string> lines = platform::SplitFields(text, '\n');
    ASSERT_EQ(lines.size(), 64u);
    EXPECT_EQ(lines[0], "RVX");
    EXPECT_EQ(lines[3], "Tray 0");
    EXPECT_EQ(lines[4 + 2 * 3], "Plain Action 1");
    EXPECT_EQ(lines[4 + 2 * 3 + 1], "oil of two lines");  // a line feed would shift what follows

    bench.instrument->LoadSettingsText(text, kLoadAll);
    EXPECT_EQ(bench.instrument->SaveSettingsText(), text);

    // An unknown action empties its own position only; another instrument type has no effect.
    std::string damaged = text;
    damaged.replace(damaged.find("Plain Action 1"), 14, "Gone Action  1");
    bench.instrument->LoadSettingsText(damaged, kLoadAll);
    EXPECT_EQ(bench.instrument->SaveSettingsText().find("Gone"), std::string::npos);
    bench.instrument->LoadSettingsText(text, kLoadAll);
    std::string foreign = text;
    foreign[0] = 'X';
    bench.instrument->LoadSettingsText(foreign, kLoadAll);
    EXPECT_EQ(bench.instrument->SaveSettingsText(), text);
  });
}

TEST(InstrumentTest, WhatWasStoredIsFoundByTheNextInstrumentOnThatPort) {
  RunVirtual([] {
    InstrumentBench bench;
    bench.instrument->SetInstrumentId("  CCS 7 ");
    bench.instrument.reset();
    EXPECT_EQ(bench.host.instrumentArchive.stores(), 1);
    bench.instrument = std::make_unique<C_RVX>("COM1", 0, kModelFour, PlainActions());
    EXPECT_EQ(bench.instrument->GetInstrumentId(), "CCS 7");
    const int before = bench.host.instruments.notifications();
    bench.instrument->SetInstrumentId("");
    EXPECT_EQ(bench.instrument->GetInstrumentId(), "CCS 7");
    EXPECT_EQ(bench.host.instruments.notifications(), before + 1);
  });
}

TEST(InstrumentTest, ADamagedStoredTextGivesDefaultsATrayAndAMessage) {
  for (const char* stored : {"damaged", "RVX\nRVX\ntoo short\nTray 0\n"}) {
    RunVirtual([stored] {
      InstrumentBench bench;
      bench.instrument.reset();
      bench.host.instrumentArchive.SetText("RVXCOM1:0", stored);
      bench.instrument = std::make_unique<C_RVX>("COM1", 0, kModelFour, PlainActions());
      ASSERT_EQ(bench.host.instruments.errors().size(), 1u);
      EXPECT_NE(bench.host.instruments.errors()[0].message.find("damaged"), std::string::npos);
      TrayOfSampleActions* tray = bench.instrument->GetTray(0);
      {
        TrayGuard guard(*tray);
        EXPECT_EQ(tray->GetSize(), 30);
      }
      ConfigurationGuard guard(bench.instrument->configuration());
      EXPECT_EQ(bench.instrument->configuration().fields.injectionTemperature, 15.0);
    });
  }
}

TEST(InstrumentTest, MakesTheActionsThatRightsAndModelAllow) {
  RunVirtual([] {
    InstrumentBench bench;
    C_RVX& instrument = *bench.instrument;
    EXPECT_EQ(KeyOf(instrument.CreateActionByIndex(17)), "Plain Action 17");
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateActionByIndex(18); }));
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateActionByIndex(-1); }));
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateActionFromText("nobody"); }));
    EXPECT_TRUE(RaisesInvalid([&] { instrument.GetTray(1); }));
    EXPECT_TRUE(RaisesInvalid([&] { instrument.ReleaseTrayAction(30); }));

    EXPECT_EQ(KeyOf(instrument.CreateConfigAction(0)), "Plain Action 16");
    EXPECT_EQ(KeyOf(instrument.CreateConfigAction(7)), "Plain Action 14");
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateConfigAction(8); }));
    bench.host.security.SetUser("manager", 50);
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateConfigAction(7); }));

    // Without constants the cell can only verify; then kind 2 does not exist.
    EXPECT_EQ(KeyOf(instrument.CreateSampleAction(1)), "Plain Action 2");
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateSampleAction(2); }));
    instrument.Lock();
    instrument.configuration().fields.b1[4] = 1.0;
    instrument.Unlock();
    EXPECT_EQ(KeyOf(instrument.CreateSampleAction(1)), "Plain Action 1");
    EXPECT_EQ(KeyOf(instrument.CreateSampleAction(2)), "Plain Action 2");

    EXPECT_EQ(KeyOf(instrument.CreateServiceAction(4)), "Plain Action 5");
    instrument.Lock();
    instrument.configuration().fields.modelCode = '3';
    instrument.Unlock();
    EXPECT_TRUE(RaisesInvalid([&] { instrument.CreateServiceAction(4); }));
  });
}

TEST(InstrumentTest, ReportsSteppersThatFallOutOfInitialisationOnceEachTime) {
  RunVirtual([] {
    InstrumentBench bench;
    ASSERT_TRUE(bench.WaitForStatus(2));
    for (size_t fall = 1; fall <= 2; ++fall) {
      bench.controller.SetByte(12, 0x06);
      ASSERT_TRUE(bench.host.instruments.WaitForErrors(fall, 10s));
      ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 3));
      ASSERT_EQ(bench.host.instruments.errors().size(), fall);
      EXPECT_EQ(bench.host.instruments.errors().back().message,
                "Initialize stepper motors using the RVX Stepper Motor Service before continuing.");
      EXPECT_EQ(bench.instrument->GetMachineStatusText(0x06), "Not Ready, Init Steppers,");
      bench.controller.SetByte(12, 0x02);  // no checked bit: the next 0x06 is reported again
      ASSERT_TRUE(bench.WaitForStatus(bench.instrument->GetStatusSequence() + 2));
    }
  });
}

TEST(InstrumentTest, CommandsCarryTheCountsOfTheirTemperatures) {
  RunVirtual([] {
    InstrumentBench bench("0QMTRVX 1 02.17SN-1      ");  // no offset on this model
    ASSERT_TRUE(bench.WaitForStatus(2));
    TagClient client(bench.instrument.get());
    bench.instrument->SetTemperatureControl(true, -20.0, &client);
    bench.instrument->SetTemperatureControl(false, kTemperatureOff, &client);
    TestRecord test;
    test.injectionTime = 10;
    bench.instrument->StartTest(5, 0, test, &client);
    ASSERT_TRUE(client.WaitForReplies(3));
    const std::vector<std::string> commands = bench.controller.commands();
    EXPECT_EQ(commands[1], "0CTC01AD3D");  // 44349
    EXPECT_EQ(commands[2], "0CTC00FFFF");
    EXPECT_EQ(commands[3].substr(0, 22), "0CST050A191E0FB43CAD3D");
    EXPECT_NEAR(bench.instrument->GetTemperature(), -20.0, 0.001);
    EXPECT_EQ(bench.instrument->GetTargetTemperature(), 65535.0);
  });
}

TEST(InstrumentTest, TheMotorCurrentAndModelCommandsCarryTheRecordAndTheFirmwaresForm) {
  for (const bool options : {true, false}) {
    RunVirtual([options] {
      InstrumentBench bench(options ? "0QMTRVX 1 02.17SN-1      " : "0QMTRVX 1 02.16SN-1      ");
      ASSERT_TRUE(bench.WaitForStatus(2));
      bench.instrument->Lock();
      bench.instrument->configuration().fields.testRecord.injectionTime = 10;
      bench.instrument->Unlock();
      TagClient client(bench.instrument.get());
      bench.instrument->RunMotorCurrent(5, &client);
      bench.instrument->RunMotorCurrent(0, &client);
      bench.instrument->SetModel('4', 3, &client);
      ASSERT_TRUE(client.WaitForReplies(3));
      EXPECT_EQ(client.tags(), (std::vector<std::string>{"MC", "MC", "SM"}));
      const std::vector<std::string> commands = bench.controller.commands();
      // -20 degrees C, then the injection time, which an empty position has not.
      EXPECT_EQ(commands[1].substr(0, 10), "0CMC05AD3D");
      EXPECT_EQ(commands[1].substr(14, 2), "0A");
      EXPECT_EQ(commands[2].substr(0, 10), "0CMC00AD3D");
      EXPECT_EQ(commands[2].substr(14, 2), "00");
      EXPECT_EQ(commands[1].substr(16), commands[2].substr(16));
      EXPECT_EQ(commands[1].substr(24, 2), "F0");
      EXPECT_EQ(commands[3], options ? "0CSM3433" : "0CSM34");
    });
  }
}

TEST(InstrumentTest, ReplacesATrayActionLaterOnTheUserInterfaceThread) {
  RunVirtual([] {
    InstrumentBench bench;
    TrayOfSampleActions* tray = bench.instrument->GetTray(0);
    std::shared_ptr<Action> action(bench.instrument->CreateActionByIndex(1));
    {
      TrayGuard guard(*tray);
      (void)tray->Replace(0, std::move(action));
      bench.instrument->ReleaseTrayAction(0);  // under the tray's lock, as an action does it
      EXPECT_EQ(tray->GetAt(0)->GetClassName(), "Plain Action 1");
    }
    bench.instrument.reset();  // waits for the posted work
    EXPECT_NE(bench.host.instrumentArchive.GetText("RVXCOM1:0").find("Tray 0"), std::string::npos);
  });
}

// The first reading hangs while the standards are stored and read again, so its result is outdated.
TEST(InstrumentTest, AReadingOfTheStandardsThatComesTooLateIsNotTaken) {
  RunVirtual([] {
    InstrumentBench bench;
    const auto store = [&bench](const char* name) {
      bench.host.analysis.WriteAnalysisText(kStandardsArchiveName, kStandardsSection,
                                            MakeStandardRow(name, "-20", "3000", ""));
    };
    store("OLD");
    platform::Event mayEnd("test: reading ends");
    platform::Event hangs("test: reading hangs");
    bool isFirst = true;
    bench.host.analysis.afterRead = [&] {
      if (!std::exchange(isFirst, false)) return;
      hangs.Set();
      mayEnd.Wait();
    };
    const auto slow =
        platform::StartThread("slow reading", [&] { bench.instrument->ReloadStandards(); });
    hangs.Wait();
    store("NEW");
    bench.instrument->ReloadStandards();
    mayEnd.Set();
    slow->Join();
    EXPECT_EQ(bench.instrument->GetStandards()->GetStandardNames(),
              std::vector<std::string>{"NEW"});
  });
}

TEST(InstrumentTest, AllReadingsOfAFrameBelongTogetherWhenTheNextHasCome) {
  RunVirtual([] {
    InstrumentBench bench;
    C_RVX& instrument = *bench.instrument;
    bench.controller.SetWord(0, 100);
    bench.controller.SetByte(14, 4);  // Locate Sample, which counts up
    ASSERT_TRUE(bench.WaitForStatus(instrument.GetStatusSequence() + 2));
    MonitorReadings early;
    instrument.GetMonitorReadings(early);
    const StatusBytes sent = bench.controller.status();
    EXPECT_TRUE(std::equal(sent.begin(), sent.begin() + 16, early.frame.record.bytes().begin()));
    int32_t seconds = -1;
    instrument.GetOperationTimer(early, seconds);
    EXPECT_EQ(seconds, 0);

    bench.controller.SetWord(0, 102);
    ASSERT_TRUE(bench.WaitForStatus(early.frame.sequence + 2));
    uint64_t sequence = early.frame.sequence;
    MonitorReadings late;
    while (instrument.GetNextReadings(sequence, late)) EXPECT_EQ(late.frame.sequence, sequence);
    EXPECT_GT(late.frame.time, early.frame.time);
    EXPECT_EQ(late.frame.record.intCount(), late.intCount);
    instrument.GetOperationTimer(late, seconds);
    EXPECT_EQ(seconds, 1);
    // A thread that still has the older frame does not move the clock.
    instrument.GetOperationTimer(early, seconds);
    EXPECT_EQ(seconds, 1);

    const platform::Microseconds moment = late.frame.time;
    EXPECT_FALSE(late.frame.IsStale(moment + 5s));
    EXPECT_TRUE(late.frame.IsStale(moment + 5001ms));
  });
}

TEST(OperationTimerTest, CountsByGroupsAndOnceASecond) {
  OperationTimer timer;
  const OperationTimes times{120, 240, 180, 60};
  int32_t seconds = -1;
  EXPECT_FALSE(timer.Update(10, 4, times, seconds));  // Locate Sample counts up
  EXPECT_EQ(seconds, 0);
  EXPECT_FALSE(timer.Update(11, 4, times, seconds));  // the same second
  EXPECT_EQ(seconds, 0);
  timer.Update(12, 5, times, seconds);  // Lower Tube goes on in the same group
  EXPECT_EQ(seconds, 1);
  EXPECT_TRUE(timer.Update(14, 8, times, seconds));  // Injection Burst counts down
  EXPECT_EQ(seconds, 239);
  timer.Update(16, 9, times, seconds);
  EXPECT_EQ(seconds, 238);
  EXPECT_TRUE(timer.Update(18, 13, times, seconds));  // Run Test starts at the whole rotor time
  EXPECT_EQ(seconds, 60);
  EXPECT_TRUE(timer.Update(20, 3, times, seconds));
  EXPECT_EQ(seconds, 119);
  EXPECT_FALSE(timer.Update(22, 0, times, seconds));
  EXPECT_EQ(seconds, 0);
  timer.Update(65535, 4, times, seconds);
  timer.Update(0, 4, times, seconds);  // the count wraps within a second
  EXPECT_EQ(seconds, 0);
}

}  // namespace
}  // namespace rvx
