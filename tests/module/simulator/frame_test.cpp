// The serial side: what is accepted as a frame, and the reply to each.
#include <rapidcheck.h>

#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

TEST(SimFrame, StatusByteByByteLowByteFirst) {
  UnderVirtualTime([] {
    SimSet set;
    set.WaitUntil(500 * 0x102 + 10);
    // The cell has long been at the top of its range and oscillates there.
    EXPECT_EQ(set.Status().text, "-0QST0201F2FFFFFF00E00020000006000000000000\r");
    set.Send("CTC01AC01");
    set.line.Next();
    const Heard controlled = set.Status();
    EXPECT_EQ(controlled.text.substr(13, 4), "01AC");
    EXPECT_EQ(controlled.switches(), 0x10);
    EXPECT_EQ(controlled.text.size(), 44u);
  });
}

TEST(SimFrame, SelfTestPasses) {
  UnderVirtualTime([] {
    SimSet set;
    EXPECT_EQ(set.Ask("QTR").text, "-0QTR0000\r");
  });
}

TEST(SimFrame, RefusalsByCode) {
  struct Case {
    const char* frame;
    int error;
    const char* tag;
  };
  const std::vector<Case> cases = {
      {"CUA", 0x80, "UA"},   // not known to this controller
      {"CSM4", 0x80, "SM"},  // a single digit
      {"QMT", 0x80, ""},     // the simulator has no identification
      {"XST", 0x87, ""},     // neither command nor query
      {"", 0x87, ""},
      {"CAI", 0x80, "AI"},      // too short
      {"CAI0", 0x80, "AI"},     // broken off inside a byte
      {"CAI0100", 0x80, "AI"},  // too long
      {"CAI010", 0x80, "AI"},
      {"CAI0a", 0x87, ""},  // lower case; no command was made out
      {"CAI 1", 0x87, ""},
      {"CMM000010", 0x80, "MM"},  // selects no axis
      {"CMM180010", 0x80, "MM"},  // selects two
      {"CMP01", 0x42, "MP"},
      {"CST000000000000000000000000000000", 0x42, "ST"},
      {"CMC000000000000000000000000000000", 0x42, "MC"},
  };
  UnderVirtualTime([&] {
    SimSet set;
    for (const Case& each : cases) {
      const Heard reply = set.Ask(each.frame);
      EXPECT_EQ(reply.error(), each.error) << each.frame;
      EXPECT_EQ(reply.tag(), each.tag) << each.frame;
      EXPECT_EQ(set.Status().error(), 0) << "shown twice: " << each.frame;
    }
    EXPECT_EQ(set.Status().switches(), 0);
  });
}

TEST(SimFrame, PositionsOutOfTheTray) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    const std::string zeros(28, '0');
    EXPECT_EQ(set.Ask("CMP1E").error(), 0x41);
    EXPECT_EQ(set.Ask("CST1E" + zeros).error(), 0x41);
    EXPECT_EQ(set.Ask("CMC1F" + zeros).error(), 0x41);
    EXPECT_EQ(set.Ask("CMC1E" + zeros).error(), 0);
  });
}

TEST(SimFrame, LongestFrameAndOneByteMore) {
  UnderVirtualTime([] {
    SimSet set;
    EXPECT_EQ(set.Ask("CAB" + std::string(96, '5')).error(), 0);  // 51 bytes; of any length
    set.Send("CAB" + std::string(97, '5'));                       // the 97th digit is one too many
    EXPECT_EQ(set.line.Next().error(), 0x87);
    EXPECT_EQ(set.Status().error(), 0);
  });
}

TEST(SimFrame, ABadFrameIsAnsweredOnceAndDroppedToTheNextStart) {
  UnderVirtualTime([] {
    SimSet set;
    set.instrument.Feed("/0CAI0g1234\r/0QST\r");
    EXPECT_EQ(set.line.Next().error(), 0x87);
    EXPECT_EQ(set.line.Next().error(), 0);
    EXPECT_TRUE(set.line.Rest().empty());
    EXPECT_EQ(set.Status().switches(), 0);
  });
}

TEST(SimFrame, OtherAddressesAndNoiseAreNotAnswered) {
  UnderVirtualTime([] {
    SimSet set;
    set.instrument.Feed("/1QST\r/AQST\r0QST\r//0QST\r-0QST\r");
    set.WaitMs(100);
    EXPECT_TRUE(set.line.Rest().empty());
    EXPECT_EQ(set.Status().text.size(), 44u);
  });
}

TEST(SimFrame, PiecesMakeTheSameFrame) {
  UnderVirtualTime([] {
    SimSet set;
    for (const char c : std::string("/0CAS01\r")) {
      set.instrument.Feed(std::string(1, c));
      set.WaitMs(3);
    }
    EXPECT_EQ(set.line.Next().tag(), "AS");
    EXPECT_EQ(set.Status().speed(), 4000);
  });
}

TEST(SimFrame, NothingThatComesStopsTheNextGoodFrame) {
  EXPECT_TRUE(rc::check([](uint64_t seed) {
    const auto noise = *rc::gen::container<std::string>(
        rc::gen::elementOf(std::string("/0-CQSTMPR12F\rA9g\x00\xFF", 18)));
    std::string reply;
    UnderVirtualTime(
        [&] {
          SimSet set;
          set.instrument.Feed(noise);
          set.WaitMs(1);
          set.instrument.Feed("\r");
          set.WaitMs(1);
          set.line.Rest();
          reply = set.Status().text;
        },
        seed);
    RC_ASSERT(reply.size() == 44u);
    RC_ASSERT(reply.substr(39) == "0000\r");
  }));
}

TEST(SimFrame, ErrorsWaitAndLeaveOneByOne) {
  UnderVirtualTime([] {
    SimLine line;
    SimStopHandle stop(line);
    platform::Event ownStop("own stop");
    SimBoard board(ownStop, nullptr);
    SimFirmware firmware(board);
    SimLink link(stop, board, firmware);
    const auto shown = [&] {
      link.StatusPass(0);
      for (const char c : std::string("/0QST\r")) link.Accept(static_cast<uint8_t>(c));
      return line.Next().error();
    };
    const std::vector<SimError> raised = {SimError::NotIdle, SimError::BadPosition,
                                          SimError::NotHomed, SimError::BadPacket};
    for (int round = 0; round < 4; ++round) {  // more than once round the ring
      for (const SimError error : raised) link.RaiseError(error);
      for (const SimError error : raised) EXPECT_EQ(shown(), static_cast<int>(error));
    }
    EXPECT_EQ(shown(), 0);
    // More errors than the ring can hold: the oldest are lost. The ring works again once it is
    // empty.
    for (int i = 0; i < 13; ++i) link.RaiseError(SimError::NotIdle);
    for (int i = 0; i < 11; ++i) EXPECT_EQ(shown(), 0x40);
    EXPECT_EQ(shown(), 0);
    for (const SimError error : raised) link.RaiseError(error);
    for (const SimError error : raised) EXPECT_EQ(shown(), static_cast<int>(error));
  });
}

TEST(SimFrame, ManualSwitches) {
  UnderVirtualTime([] {
    SimSet set;
    EXPECT_EQ(set.Ask("CAI01").switches(), 0x01);
    EXPECT_EQ(set.Ask("CAS01").switches(), 0x03);
    EXPECT_EQ(set.Ask("CAV01").switches(), 0x07);
    EXPECT_EQ(set.Ask("CTC01B000").switches(), 0x17);
    const Heard refused = set.Ask("CAV00");
    EXPECT_EQ(refused.error(), 0x83);
    EXPECT_EQ(refused.switches(), 0x17);
    EXPECT_EQ(set.Status().target(), 0xB000);
    EXPECT_EQ(set.Ask("CTC00FFFF").switches(), 0x07);
    EXPECT_EQ(set.Status().target(), 0xFFFF);
    EXPECT_EQ(set.Ask("CAV00").switches(), 0x03);
    EXPECT_EQ(set.Ask("CAS00").switches(), 0x01);
    EXPECT_EQ(set.Ask("CAI00").switches(), 0x00);
    EXPECT_EQ(set.Status().speed(), 0);
  });
}

TEST(SimFrame, AutoReportGivesOneFrameATickAndOneBehind) {
  UnderVirtualTime([] {
    SimSet set;
    set.WaitUntil(1250);
    EXPECT_EQ(set.Ask("CAR01").switches(), 0x80);
    set.WaitUntil(3250);
    const std::vector<Heard> on = set.line.Rest();
    ASSERT_EQ(on.size(), 4u);
    for (size_t i = 0; i < on.size(); ++i) {
      EXPECT_EQ(on[i].intCount(), static_cast<int>(3 + i));
      EXPECT_EQ(on[i].ms, static_cast<int64_t>(1500 + 500 * i));
      EXPECT_EQ(on[i].switches(), 0x80);
    }
    EXPECT_EQ(set.Ask("CAR00").switches(), 0x00);
    set.WaitUntil(10000);
    const std::vector<Heard> off = set.line.Rest();
    ASSERT_EQ(off.size(), 1u);
    EXPECT_EQ(off[0].ms, 3500);
    EXPECT_EQ(off[0].switches(), 0x00);
  });
}

}  // namespace
}  // namespace rvx::simulator
