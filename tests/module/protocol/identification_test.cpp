#include "module/protocol/identification.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "module/protocol/frames.h"

namespace rvx {
namespace {

using std::string_literals::operator""s;

TEST(Identification, Simulator) {
  ASSERT_EQ(kSimulatorIdentification,
            "FQMTRVX 4\x02"
            "02.17Simulator "s);
  const Identification id = ParseIdentification(kSimulatorIdentification);
  EXPECT_EQ(id.modelCode, '4');
  EXPECT_EQ(id.optionByte, 0x02);
  EXPECT_EQ(id.firmwareVersion, "02.17");
  EXPECT_EQ(id.serialNumber, "Simulator");
}

TEST(Identification, BlankOptionIsNone) {
  const Identification id = ParseIdentification("0QMTRVX 1 02.10  AB 12   ");
  EXPECT_EQ(id.optionByte, 0);
  EXPECT_EQ(id.serialNumber, "  AB 12");
}

TEST(Identification, SerialNumberEndsAtZeroAndAtTenCharacters) {
  EXPECT_EQ(ParseIdentification("0QMTRVX 2 02.10AB\0CD"s).serialNumber, "AB");
  EXPECT_EQ(ParseIdentification("0QMTRVX 2 02.101234567890X"s).serialNumber, "1234567890");
}

TEST(Identification, ShortTextLacksItsEnd) {
  const std::string whole(kSimulatorIdentification);
  for (size_t size = 0; size < 10; ++size) {
    const Identification id = ParseIdentification(whole.substr(0, size));
    EXPECT_EQ(id.modelCode, size > 8 ? '4' : 0);
    EXPECT_EQ(id.optionByte, 0);
    EXPECT_TRUE(id.firmwareVersion.empty());
    EXPECT_TRUE(id.serialNumber.empty());
  }
  EXPECT_EQ(ParseIdentification(whole.substr(0, 12)).firmwareVersion, "02");
}

TEST(Identification, TextOfAFrame) {
  const std::string frame = "QMTRVX 3102.20S1";
  const std::string text =
      IdentificationText('0', std::vector<uint8_t>(frame.begin(), frame.end()));
  EXPECT_EQ(text, "0" + frame + std::string(9, '\0'));
  const Identification id = ParseIdentification(text);
  EXPECT_EQ(id.optionByte, '1');
  EXPECT_EQ(id.serialNumber, "S1");
}

TEST(Identification, Names) {
  EXPECT_EQ(ModelName('1', 0xFF), "RVX-A Mark 2");
  EXPECT_EQ(ModelName('2', 0), "RVX-B Mark 2");
  EXPECT_EQ(ModelName('3', 0x02), "RVX-C TX");
  EXPECT_EQ(ModelName('4', 0x01), "RVX-D TX");
  EXPECT_EQ(ModelName('4', '2'), "RVX-D LX");
  EXPECT_EQ(ModelName('5', 0), "");
  EXPECT_TRUE(OptionNames('0').empty());
  EXPECT_EQ(OptionNames('3').size(), 2u);
}

TEST(Identification, FirmwareNumberHasAPoint) {
  EXPECT_EQ(FirmwareNumber("02.17"), kFirmwareWithOptions);
  EXPECT_LT(FirmwareNumber("02.16"), kFirmwareWithOptions);
  EXPECT_EQ(FirmwareNumber("x"), 0.0);
}

// The identifications that a listener finds in a stream of bytes.
std::vector<std::string> Hear(std::string_view stream) {
  IdentificationListener listener;
  std::vector<std::string> heard;
  for (const char c : stream) {
    if (auto reply = listener.Feed(static_cast<uint8_t>(c))) heard.push_back(*reply);
  }
  return heard;
}

TEST(Listener, HearsTheFamilyOnly) {
  EXPECT_EQ(Hear("-0QMTRVX 4102.17SERIAL-123\r"),
            std::vector<std::string>{"0QMTRVX 4102.17SERIAL-123"});
  EXPECT_TRUE(Hear("-0QMTXYZ 4102.17SERIAL-123\r").empty());
  EXPECT_TRUE(Hear("0QMTRVX 4102.17SERIAL-123\r").empty());
}

TEST(Listener, ShortReplyIsFilledWithZeros) {
  const auto heard = Hear("-0QMTRVX 4102.17S\r");
  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0], "0QMTRVX 4102.17S" + std::string(9, '\0'));
}

TEST(Listener, LongFrameIsDropped) {
  EXPECT_TRUE(Hear("-0QMTRVX 4102.17SERIAL-1234\r").empty());
  EXPECT_EQ(Hear("-0QMTRVX 4102.17SERIAL-1234\r-0QMTRVX 4102.17S\r").size(), 1u);
}

TEST(Listener, OldBytesDoNotCompleteAShortFrame) {
  EXPECT_EQ(Hear("-0QMTRVX 4102.17SERIAL-123\r-1\r").size(), 1u);
}

RC_GTEST_PROP(ListenerProperty, ReplyBehindACarriageReturnIsHeard, ()) {
  const auto noise = *rc::gen::container<std::string>(
      rc::gen::oneOf(rc::gen::elementOf("-\r0QMTRVX "s), rc::gen::arbitrary<char>()));
  const auto heard = Hear(noise + "\r-0QMTRVX 4102.17SERIAL-123\r");
  RC_ASSERT(!heard.empty());
  RC_ASSERT(heard.back() == "0QMTRVX 4102.17SERIAL-123");
}

}  // namespace
}  // namespace rvx
