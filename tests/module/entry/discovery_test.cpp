// Discovery over fake ports: which ports are opened, which instruments are found, how long it
// takes.
#include <gtest/gtest.h>

#include "boundary/instrument_scripting.h"
#include "module/entry/discovery.h"
#include "module/entry/screens.h"
#include "module/execution/sample_action_editor.h"
#include "module/instrument/status_window.h"
#include "platform/key_store.h"
#include "platform/prompt.h"
#include "tests/support/fake_controller.h"
#include "tests/support/fake_host.h"
#include "tests/support/virtual_run.h"

namespace rvx {
namespace {

using namespace std::chrono_literals;

// The instruments of one discovery. They must be destroyed before the host.
struct Found {
  Found() {
    const platform::Microseconds begin = platform::MonotonicTime();
    DiscoverInstruments(instruments);
    took = std::chrono::duration_cast<platform::Milliseconds>(platform::MonotonicTime() - begin);
  }
  ~Found() {
    for (ViscometerInstrument* instrument : instruments) delete instrument;
    ForgetDiscoveredInstruments();
  }
  InstrumentIdentity identity(size_t index) {
    return dynamic_cast<InstrumentScripting*>(instruments.at(index))->GetIdentity();
  }
  ArrayOfInstruments instruments;
  platform::Milliseconds took{0};
};

TEST(DiscoveryTest, ASilentPortCostsAllItsAddressesAndIsClosed) {
  RunVirtual([] {
    FakeHost host;
    FakePort& port = host.ports.Add("COM1");
    Found found;
    EXPECT_TRUE(found.instruments.empty());
    EXPECT_EQ(port.written().size(), 16u);
    EXPECT_EQ(port.written()[15], "/FQMT\r");
    EXPECT_EQ(port.purges(), 16);
    EXPECT_FALSE(port.IsOpen());
    EXPECT_EQ(found.took, 4 * 1000ms + 16 * 200ms);  // the other ports can't be opened
  });
}

TEST(DiscoveryTest, FindsOneInstrumentAPortAndTriesOnlyTheFirstAddressBehindAHit) {
  RunVirtual([] {
    FakeHost host;
    FakePort& silent = host.ports.Add("COM1");
    FakeController eleven(host.ports.Add("COM2"), 11);
    FakeController zero(host.ports.Add("COM3"), 0);
    FakePort& three = host.ports.Add("COM4");
    FakeController controllerThree(three, 3);
    host.ports.SetPortSettings("COM2", "09600,8N10");
    host.ports.SetPortSettings("COM3", "");
    Found found;
    ASSERT_EQ(found.instruments.size(), 2u);
    EXPECT_EQ(found.identity(0).archiveKey, "RVXCOM2:11");
    EXPECT_EQ(found.identity(1).archiveKey, "RVXCOM3:0");
    EXPECT_EQ(found.identity(0).model, "RVX-D TX");
    EXPECT_EQ(silent.written().size(), 16u);
    EXPECT_EQ(three.written(), std::vector<std::string>{"/0QMT\r"});
    EXPECT_EQ(host.ports.settings("COM2"), "09600,8N11");  // set aside for the instrument
    EXPECT_EQ(host.ports.settings("COM3"), "");
    ArrayOfInstruments again;
    DiscoverInstruments(again);
    EXPECT_TRUE(again.empty());
  });
}

TEST(DiscoveryTest, APortInUseIsTriedOnlyIfItsSettingsGiveItToInstruments) {
  RunVirtual([] {
    FakeHost host;
    for (const char* name : {"COM1", "COM2", "COM3"}) {
      host.ports.Add(name);
      host.ports.SetInUse(name, true);
    }
    host.ports.SetPortSettings("COM2", "09600,8N10");
    host.ports.SetPortSettings("COM3", "09600,8N11");
    Found found;
    EXPECT_EQ(host.ports.opened(), (std::vector<std::string>{"COM3", "COM4"}));
    EXPECT_EQ(found.took, 2 * 1000ms + 16 * 200ms);  // the skipped ones cost nothing
  });
}

TEST(DiscoveryTest, OtherFamiliesAndLateRepliesAreNotTaken) {
  RunVirtual([] {
    FakeHost host;
    FakePort& foreign = host.ports.Add("COM1");
    foreign.SetScript([](FakePort& line, std::span<const uint8_t> bytes) {
      if (bytes[1] == '0') line.Reply("-0QMTXYZ 4 02.17OTHER\r");
      if (bytes[1] == '1') line.Reply("-1QMTRVX 4 02.17SN", 100ms);      // without a CR at the end
      if (bytes[1] == '2') line.Reply("-2QMTRVX 4 02.17LATE\r", 250ms);  // during the next query
      if (bytes[1] == '3') line.Reply("-3QMTRVX 4 02.17LATER\r", 450ms);
    });
    Found found;
    EXPECT_TRUE(found.instruments.empty());
    EXPECT_EQ(foreign.written().size(), 16u);
  });
}

TEST(DiscoveryTest, InSimulationTheFirstPortThatOpensGetsTheSimulator) {
  platform::OverrideKeyValue(
      "HKEY_LOCAL_MACHINE\\SOFTWARE\\HaldenInstrument\\TORVELL\\Instruments\\RVX", "Simulate", 1);
  RunVirtual([] {
    FakeHost host;
    host.ports.Add("COM2");
    Found found;
    ASSERT_EQ(found.instruments.size(), 1u);
    EXPECT_TRUE(found.identity(0).simulated);
    EXPECT_EQ(found.identity(0).archiveKey, "RVXCOM2:0");
    EXPECT_EQ(found.identity(0).serialNumber, "Simulator");
    EXPECT_EQ(found.identity(0).options, std::vector<std::string>{"Low Temperature Option"});
  });
  platform::OverrideKeyValue(
      "HKEY_LOCAL_MACHINE\\SOFTWARE\\HaldenInstrument\\TORVELL\\Instruments\\RVX", "Simulate", 0);
}

// A program without a QApplication must not get windows.
TEST(InstallScreensTest, WithoutAnApplicationNothingIsInstalled) {
  InstallScreens();
  EXPECT_EQ(GetSampleActionEditor(), nullptr);
  EXPECT_EQ(GetStatusWindowMaker(), nullptr);
  EXPECT_FALSE(platform::HasPrompter());
}

}  // namespace
}  // namespace rvx
