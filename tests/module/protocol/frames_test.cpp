#include "module/protocol/frames.h"

#include <gtest/gtest.h>

#include <limits>

namespace rvx {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Frames, AddressIsOneCharacter) {
  EXPECT_EQ(AddressCharacter(0), '0');
  EXPECT_EQ(AddressCharacter(9), '9');
  EXPECT_EQ(AddressCharacter(10), 'A');
  EXPECT_EQ(AddressCharacter(15), 'F');
}

TEST(Frames, ReplyAddressMayStandInEitherRow) {
  EXPECT_TRUE(IsOwnAddress('0', 0));
  EXPECT_TRUE(IsOwnAddress('A', 0));
  EXPECT_TRUE(IsOwnAddress('9', 9));
  EXPECT_TRUE(IsOwnAddress('J', 9));
  EXPECT_FALSE(IsOwnAddress('1', 0));
  EXPECT_FALSE(IsOwnAddress('B', 0));
  EXPECT_FALSE(IsOwnAddress('\r', 0));
}

TEST(Frames, ReplyAddressAboveNineMayRepeatTheRequest) {
  EXPECT_TRUE(IsOwnAddress(';', 11));
  EXPECT_TRUE(IsOwnAddress('L', 11));
  EXPECT_TRUE(IsOwnAddress('B', 11));
  EXPECT_FALSE(IsOwnAddress('C', 11));
  EXPECT_FALSE(IsOwnAddress('1', 11));
}

TEST(Frames, FrameIsStartTextEnd) {
  const std::vector<uint8_t> expected = {'/', '0', 'Q', 'S', 'T', '\r'};
  EXPECT_EQ(MakeFrame(StatusQuery(0)), expected);
}

TEST(Frames, HexKeepsZeroBytes) {
  const std::vector<uint8_t> bytes = {0x00, 0x0A, 0xF0, 0x00, 0xFF};
  EXPECT_EQ(HexPayload(bytes), "000AF000FF");
  EXPECT_EQ(HexPayload({}), "");
}

TEST(Frames, CommandsWithoutPayload) {
  EXPECT_EQ(AbortCommand(0), "0CAB");
  EXPECT_EQ(HomeFlagCommand(3), "3CHO");
  EXPECT_EQ(UserAcknowledgeCommand(9), "9CUA");
  EXPECT_EQ(IdentityQuery(10), "AQMT");
  EXPECT_EQ(StatusQuery(15), "FQST");
  EXPECT_EQ(SelfTestQuery(0), "0QTR");
}

TEST(Frames, Switches) {
  EXPECT_EQ(InjectionCommand(0, true), "0CAI01");
  EXPECT_EQ(AutoReportCommand(0, false), "0CAR00");
  EXPECT_EQ(TestMotorCommand(0, true), "0CAS01");
  EXPECT_EQ(CoolingCommand(0, false), "0CAV00");
}

TEST(Frames, MovesCarryWhatTheInstrumentCanRefuse) {
  EXPECT_EQ(MoveToPositionCommand(0, 5), "0CMP05");
  EXPECT_EQ(MoveToPositionCommand(0, 29), "0CMP1D");
  // 256 must not become a move to position 0.
  EXPECT_EQ(MoveToPositionCommand(0, 256), "0CMPFF");
  EXPECT_EQ(MoveToPositionCommand(0, -1), "0CMPFF");
  EXPECT_EQ(MoveStepperCommand(0, static_cast<uint8_t>(StepperSelector::Tube), 942), "0CMM0803AE");
  EXPECT_EQ(MoveStepperCommand(0, static_cast<uint8_t>(StepperSelector::Trolley), 1620),
            "0CMM200654");
}

// The counts of -20.0, -5.0, -19.8 and -19.9 degrees C with the default probe.
constexpr double kTest = 44349.4826;
constexpr double kInjection = 56523.3981;
constexpr double kUndershoot = 44583.9977;
constexpr double kTolerance = 44467.0554;

StartTestPayload DefaultTest() {
  return {.position = 0,
          .injectionTime = 240,
          .burstTime = 25,
          .pauseTime = 30,
          .purgeTime = 15,
          .coolDownTime = 180,
          .rotorOnTime = 60,
          .testCounts = kTest,
          .injectionCounts = kInjection,
          .undershootCounts = kUndershoot,
          .toleranceCounts = kTolerance};
}

TEST(Frames, StartTest) {
  // The tolerance is 117.57 counts, so 117: of truncated counts it would be 118.
  EXPECT_EQ(StartTestCommand(0, DefaultTest()), "0CST00F0191E0FB43CAD3DDCCB00EA0075");
}

TEST(Frames, TimesStayWithinTheirByte) {
  StartTestPayload payload = DefaultTest();
  payload.position = 7;
  payload.injectionTime = 300;
  payload.burstTime = -1;
  EXPECT_EQ(StartTestCommand(2, payload), "2CST07FF001E0FB43CAD3DDCCB00EA0075");
}

TEST(Frames, DifferencesAreTruncatedTowardZero) {
  StartTestPayload payload = DefaultTest();
  payload.undershootCounts = kTest - 1.9;
  payload.toleranceCounts = kTest - 0.9;
  EXPECT_EQ(StartTestCommand(0, payload), "0CST00F0191E0FB43CAD3DDCCBFFFF0000");
}

TEST(Frames, MotorCurrentWithSampleAndWithout) {
  MotorCurrentPayload payload{.position = 5,
                              .injectionTime = 240,
                              .burstTime = 25,
                              .pauseTime = 30,
                              .purgeTime = 15,
                              .coolDownTime = 180,
                              .testCounts = kTest,
                              .injectionCounts = kInjection,
                              .undershootCounts = kUndershoot,
                              .toleranceCounts = kTolerance};
  EXPECT_EQ(MotorCurrentCommand(0, payload), "0CMC05AD3DDCCBF0191E0FB4F000EA0075");
  payload.position = 0;
  EXPECT_EQ(MotorCurrentCommand(0, payload), "0CMC00AD3DDCCB00191E0FB4F000EA0075");
}

TEST(Frames, PreconditionSpeedByScale) {
  EXPECT_EQ(PreconditionCommand(0, 2, 240, 0x00), "0CPM020FA0");
  EXPECT_EQ(PreconditionCommand(0, 2, 240, 0x01), "0CPM023E80");
  EXPECT_EQ(PreconditionCommand(0, 2, 240, 0x02), "0CPM020FA0");
  EXPECT_EQ(PreconditionCommand(0, 0, 100, 0x00), "0CPM000682");  // 1666.67 counts
}

TEST(Frames, OptionByteGoesToNewFirmwareOnly) {
  EXPECT_EQ(ModelCommand(0, '4', 0x03, 2.16), "0CSM34");
  EXPECT_EQ(ModelCommand(0, '4', 0x03, 2.17), "0CSM3433");
  EXPECT_EQ(ModelCommand(0, '1', 0x02, 10.0), "0CSM3132");
  EXPECT_EQ(ModelCommand(0, '1', '2', 2.17), "0CSM3132");
}

TEST(Frames, SerialNumberHasSixteenCharacters) {
  EXPECT_EQ(SerialNumberCommand(0, "A1z"), "0CSN41317A20202020202020202020202020");
  EXPECT_EQ(SerialNumberCommand(0, "ABCDEFGHIJKLMNOPQRST"), "0CSN4142434445464748494A4B4C4D4E4F50");
  EXPECT_EQ(SerialNumberCommand(0, ""), "0CSN20202020202020202020202020202020");
}

TEST(Frames, TemperatureControl) {
  EXPECT_EQ(TemperatureControlCommand(0, true, kTest), "0CTC01AD3D");
  EXPECT_EQ(TemperatureControlCommand(0, false, 64778.85), "0CTC00FD0A");
  EXPECT_EQ(TemperatureControlCommand(0, true, kCountsOffValue), "0CTC01FFFF");
}

TEST(Frames, CountsAreTruncatedWithinTheirRange) {
  EXPECT_EQ(TruncatedCounts(44349.999), 44349);
  EXPECT_EQ(TruncatedCounts(-0.5), 0);
  EXPECT_EQ(TruncatedCounts(1e9), 65535);
  EXPECT_EQ(TruncatedCounts(kNan), 0);
}

}  // namespace
}  // namespace rvx
