#include "module/protocol/status_record.h"

#include <gtest/gtest.h>

#include <numeric>

namespace rvx {
namespace {

std::array<uint8_t, kStatusRecordSize> Counting() {
  std::array<uint8_t, kStatusRecordSize> bytes{};
  std::iota(bytes.begin(), bytes.end(), uint8_t{0x10});
  bytes[17] = 'S';
  bytes[18] = 'T';
  return bytes;
}

TEST(StatusRecord, FieldsAreBigEndian) {
  const auto record = StatusRecord::FromData(Counting());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->intCount(), 0x1011);
  EXPECT_EQ(record->temperatureCounts(), 0x1213);
  EXPECT_EQ(record->targetCounts(), 0x1415);
  EXPECT_EQ(record->plusVssCounts(), 0x1617);
  EXPECT_EQ(record->minusVssCounts(), 0x1819);
  EXPECT_EQ(record->speedCounts(), 0x1A1B);
  EXPECT_EQ(record->machineStatus(), 0x1C);
  EXPECT_EQ(record->switchByte(), 0x1D);
  EXPECT_EQ(record->operation(), 0x1E);
  EXPECT_EQ(record->promptFlag(), 0x1F);
  EXPECT_EQ(record->errorCode(), 0x20);
  EXPECT_EQ(record->lastTag(), "ST");
}

TEST(StatusRecord, SimulatorsPairsAreSwapped) {
  const auto record = StatusRecord::FromSimulatorData(Counting());
  ASSERT_TRUE(record);
  const std::array<uint8_t, kStatusRecordSize> expected = {0x11, 0x10, 0x13, 0x12, 0x15, 0x14, 0x17,
                                                           0x16, 0x19, 0x18, 0x1B, 0x1A, 0x1C, 0x1D,
                                                           0x1E, 0x1F, 0x20, 'T',  'S'};
  EXPECT_EQ(record->bytes(), expected);
}

TEST(StatusRecord, ShortFrameIsNone) {
  const auto bytes = Counting();
  EXPECT_FALSE(StatusRecord::FromData(std::span(bytes).first(18)));
  EXPECT_FALSE(StatusRecord::FromSimulatorData({}));
}

TEST(StatusRecord, LastTag) {
  StatusRecord record;
  EXPECT_EQ(record.lastTag(), "");
  record.SetLastTag("MT");
  EXPECT_EQ(record.lastTag(), "MT");
}

TEST(StatusTexts, MachineStatusJoinsTheSetBits) {
  const StatusTexts texts = StatusTexts::Load();
  EXPECT_EQ(texts.MachineStatusText(0x00), "Ready");
  EXPECT_EQ(texts.MachineStatusText(0x07), "FAULT,Not Ready, Init Steppers,");
  EXPECT_EQ(texts.MachineStatusText(0x78), "Not Defined, Not Defined, Self Test, Not Defined, ");
  EXPECT_EQ(texts.MachineStatusText(0x80), "");
}

TEST(StatusTexts, Operations) {
  const StatusTexts texts = StatusTexts::Load();
  EXPECT_EQ(texts.OperationText(0), "IDLE");
  EXPECT_EQ(texts.OperationText(static_cast<uint8_t>(Operation::LowerTube)), "Lower Tube");
  EXPECT_EQ(texts.OperationText(13), "Run Test");
  EXPECT_EQ(texts.OperationText(14), "Unknown Op");
  EXPECT_EQ(texts.OperationText(0xFF), "Unknown Op");
}

TEST(StatusTexts, Errors) {
  const StatusTexts texts = StatusTexts::Load();
  EXPECT_EQ(texts.ErrorText(0), "");
  EXPECT_EQ(texts.ErrorText(0x43), "");
  EXPECT_EQ(texts.ErrorText(0x40),
            "The instrument must be idle to initiate the requested operation.");
  EXPECT_EQ(texts.ErrorText(0x87), "The instrument received an invalid packet.");
  EXPECT_EQ(texts.ErrorText(0xE1),
            "The instrument self tests failed. Open the Service/Diagnostics screen for details.");
  EXPECT_EQ(texts.ErrorText(0x9C),
            "An invalid error code was received from the instrument (0x9c).");
  EXPECT_EQ(ErrorTextId(0x01), kUnknownErrorTextId);
}

TEST(ErrorCodes, OnlyTwoAskForAResend) {
  for (int code = 0; code < 256; ++code) {
    EXPECT_EQ(AsksForResend(static_cast<uint8_t>(code)), code == 0x80 || code == 0x87) << code;
  }
}

TEST(SelfTest, WordAndFailures) {
  EXPECT_EQ(ParseSelfTestWord(std::array<uint8_t, 2>{0x01, 0x40}), 0x0140);
  EXPECT_FALSE(ParseSelfTestWord(std::array<uint8_t, 1>{0x01}));
  EXPECT_TRUE(SelfTestFailures(0).empty());
  EXPECT_EQ(SelfTestFailures(0x0141),
            (std::vector<std::string>{"+ VSS Low", "AD Consistency Failed", "RAM Test Failed"}));
  EXPECT_TRUE(SelfTestFailures(0xFE00).empty());
}

}  // namespace
}  // namespace rvx
