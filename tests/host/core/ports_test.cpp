// The ports of a data folder, as a person sets them and as discovery sees them.
#include "host/core/ports.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/time_base.h"
#include "tests/host/core/temp_folder.h"

namespace torvell {
namespace {

class Silent : public rvx::PortWatcher {
 public:
  void Receive(std::span<const uint8_t>) override { ADD_FAILURE() << "nothing is there to say"; }
};

TEST(PortSettings, TheFormIsFixedAndTheFlagStandsAtItsPlace) {
  EXPECT_EQ(FormatPortSettings({}), "009600,u=0");
  EXPECT_EQ(FormatPortSettings({115200, true}), "115200,u=1");
  for (int rate : kPortRates) {
    for (bool inUse : {false, true}) {
      std::string text = FormatPortSettings({rate, inUse});
      ASSERT_EQ(text.at(kInUseFlagPosition), inUse ? '1' : '0');
      // The module changes this one character.
      text[kInUseFlagPosition] = '1';
      const auto settings = ParsePortSettings(text);
      ASSERT_TRUE(settings);
      EXPECT_EQ(settings->rate, rate);
      EXPECT_TRUE(settings->inUse);
    }
  }
}

TEST(PortSettings, WhatAPersonTypes) {
  EXPECT_EQ(ParsePortSettings(" 19200 ")->rate, 19200);
  EXPECT_TRUE(ParsePortSettings("9600,u=1")->inUse);
  for (const char* text : {"", "fast", "9601", "-9600", "9600,", "9600,u=2", "9600,8N1",
                           "9600,u=1x", "9600.0", "00009600", ",u=1"}) {
    EXPECT_FALSE(ParsePortSettings(text)) << text;
  }
}

class PortsTest : public testing::Test {
 protected:
  // Whether to simulate is a setting of the process; this directory reads simulated_ instead.
  std::unique_ptr<PortDirectory> MakeDirectory() {
    return std::make_unique<PortDirectory>(host_->database(), host_->users(),
                                           [this] { return simulated_; });
  }
  std::string SettingsOf(PortDirectory& ports, const std::string& name) {
    std::string text = "old";
    ports.GetPortSettings(name, text);
    return text;
  }

  TempFolder folder_;
  std::unique_ptr<Host> host_ = OpenHost(folder_);
  bool simulated_ = false;
  std::unique_ptr<PortDirectory> ports_ = MakeDirectory();
  Silent watcher_;
};

TEST_F(PortsTest, AMappingIsKept) {
  ports_->SetMapping("COM3", "/dev/ttyS9", "19200");
  const auto list = MakeDirectory()->List();
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[2].name, "COM3");
  EXPECT_EQ(list[2].device, "/dev/ttyS9");
  EXPECT_EQ(list[2].settings, "019200,u=0");
  EXPECT_EQ(list[0].device, "");
  ports_->ClearMapping("COM3");
  EXPECT_EQ(ports_->List()[2].device, "");
}

TEST_F(PortsTest, BadMappingsAreRefused) {
  ports_->SetMapping("COM1", "/dev/ttyS9");
  auto kind = [&](const std::string& name, const std::string& device, const char* settings) {
    return KindRaisedBy([&] { ports_->SetMapping(name, device, settings); });
  };
  EXPECT_EQ(kind("COM5", "/dev/ttyS1", "9600"), HostErrorKind::BadInput);
  EXPECT_EQ(kind("COM2", "ttyS1", "9600"), HostErrorKind::BadInput);
  EXPECT_EQ(kind("COM2", "", "9600"), HostErrorKind::BadInput);
  EXPECT_EQ(kind("COM2", "/dev/ttyS9", "9600"), HostErrorKind::BadInput);
  EXPECT_EQ(kind("COM2", "/dev/ttyS1", "quick"), HostErrorKind::BadInput);
  host_->users().Add("anna", 100, "a");
  EXPECT_EQ(kind("COM2", "/dev/ttyS1", "9600"), HostErrorKind::NotAllowed);
  EXPECT_EQ(KindRaisedBy([&] { ports_->ClearMapping("COM1"); }), HostErrorKind::NotAllowed);
  EXPECT_EQ(ports_->List()[0].device, "/dev/ttyS9");
}

TEST_F(PortsTest, DiscoverySkipsWhatHasNoDevice) {
  ports_->SetMapping("COM2", "/dev/ttyS9");
  EXPECT_NE(ports_->IsPortInUse("COM1"), 0);
  EXPECT_EQ(SettingsOf(*ports_, "COM1"), "");
  EXPECT_EQ(ports_->IsPortInUse("COM2"), 0);
  EXPECT_EQ(SettingsOf(*ports_, "COM2"), "009600,u=0");
  EXPECT_EQ(ports_->OpenPort("COM1", &watcher_), nullptr);
  EXPECT_NE(ports_->LastFailure("COM1").find("No device"), std::string::npos);
  ports_->ClosePort("COM1", &watcher_);  // as discovery does after a failure
}

TEST_F(PortsTest, TheModuleSetsTheFlagAndNothingElse) {
  ports_->SetMapping("COM2", "/dev/ttyS9");
  ports_->SetPortSettings("COM2", "009600,u=1");
  EXPECT_EQ(SettingsOf(*ports_, "COM2"), "009600,u=1");
  ports_->SetPortSettings("COM2", "nonsense");
  EXPECT_EQ(SettingsOf(*ports_, "COM2"), "009600,u=1");
  ports_->SetPortSettings("COM1", "009600,u=1");
  EXPECT_EQ(SettingsOf(*ports_, "COM1"), "");
}

TEST_F(PortsTest, ASimulatedInstrumentLivesOnTheFirstPortWithoutADevice) {
  ports_->SetMapping("COM1", "/dev/ttyS9");
  simulated_ = true;
  EXPECT_EQ(ports_->IsPortInUse("COM2"), 0);
  EXPECT_NE(ports_->IsPortInUse("COM3"), 0);
  Silent second;
  rvx::Port* port = ports_->OpenPort("COM2", &watcher_);
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(ports_->OpenPort("COM2", &second), port);
  const uint8_t bytes[] = {'/', '0'};
  port->Write(bytes);
  port->Purge();
  ports_->ClosePort("COM2", &watcher_);
  EXPECT_TRUE(ports_->List()[1].open);
  ports_->ClosePort("COM2", &second);
  EXPECT_FALSE(ports_->List()[1].open);
  simulated_ = false;
  EXPECT_EQ(ports_->OpenPort("COM2", &watcher_), nullptr);
}

TEST(PortsClockTest, OtherClocksDoNotOpenDevices) {
  for (auto kind : {platform::TimeBaseKind::Virtual, platform::TimeBaseKind::Paced}) {
    platform::TimeBaseOptions options;
    options.kind = kind;
    options.pace = 20;
    platform::RunUnderTimeBase(options, [] {
      const TempFolder folder;
      const auto host = OpenHost(folder);
      PortDirectory ports(host->database(), host->users(), [] { return false; });
      ports.SetMapping("COM1", "/dev/null");
      Silent watcher;
      EXPECT_EQ(ports.OpenPort("COM1", &watcher), nullptr);
      EXPECT_NE(ports.LastFailure("COM1").find("clock"), std::string::npos);
      return 0;
    });
  }
}

}  // namespace
}  // namespace torvell
