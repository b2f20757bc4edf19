#include "module/protocol/reply_reader.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "module/protocol/frames.h"

namespace rvx {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes FromText(std::string_view text) { return Bytes(text.begin(), text.end()); }

// A reader that records the frames it has read.
class Line : public FrameHandler {
 public:
  explicit Line(uint8_t address = 0) : reader_(address, this) {}
  void FrameReceived(std::span<const uint8_t> frame) override {
    frames.emplace_back(frame.begin(), frame.end());
  }
  Line& Feed(std::span<const uint8_t> bytes) {
    reader_.Feed(bytes);
    return *this;
  }
  Line& Feed(std::string_view text) { return Feed(FromText(text)); }

  std::vector<Bytes> frames;

 private:
  ReplyReader reader_;
};

Bytes Frame(std::string_view head, const Bytes& data) {
  Bytes frame = FromText(head);
  frame.insert(frame.end(), data.begin(), data.end());
  return frame;
}

const char kStatus[] = "-0QST00010203040506070809AABBCCDDEEFF005443\r";
const Bytes kStatusData = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09,
                           0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 0x00, 'T',  'C'};
const char kIdentity[] = "-0QMTRVX 4102.17SN-12345\r";
const char kSelfTest[] = "-0QTR0140\r";

TEST(ReplyReader, ReadsEachReply) {
  ASSERT_EQ(std::string_view(kStatus).size(), 44u);
  Line line;
  line.Feed(kStatus).Feed(kIdentity).Feed(kSelfTest);
  const std::vector<Bytes> expected = {
      Frame("QST", kStatusData), FromText("QMTRVX 4102.17SN-12345"), Frame("QTR", {0x01, 0x40})};
  EXPECT_EQ(line.frames, expected);
}

TEST(ReplyReader, CutsDoNotMatter) {
  const Bytes stream = FromText(std::string("noise") + kStatus + kIdentity + "\r\n" + kSelfTest);
  const std::vector<Bytes> expected = Line().Feed(stream).frames;
  ASSERT_EQ(expected.size(), 3u);
  for (size_t cut = 0; cut <= stream.size(); ++cut) {
    Line line;
    line.Feed(std::span(stream).first(cut)).Feed(std::span(stream).subspan(cut));
    EXPECT_EQ(line.frames, expected) << "cut at " << cut;
  }
  Line line;
  for (const uint8_t c : stream) line.Feed(std::span(&c, 1));
  EXPECT_EQ(line.frames, expected) << "byte by byte";
}

TEST(ReplyReader, ForeignAddressIsNoise) {
  EXPECT_TRUE(Line(0).Feed("-1QTR0140\r").frames.empty());
  EXPECT_EQ(Line(1).Feed("-1QTR0140\r").frames.size(), 1u);
  EXPECT_EQ(Line(1).Feed("-BQTR0140\r").frames.size(), 1u);
  EXPECT_EQ(Line(11).Feed("-BQTR0140\r").frames.size(), 1u);
}

TEST(ReplyReader, TwentyFiveBytesFit) {
  const std::string most(22, 'x');
  const Bytes expected = FromText("QMT" + most);
  EXPECT_EQ(Line().Feed("-0QMT" + most + "\r").frames, std::vector<Bytes>{expected});
  EXPECT_TRUE(Line().Feed("-0QMT" + most + "y\r").frames.empty());
  const std::string hex(44, '7');
  EXPECT_EQ(Line().Feed("-0QST" + hex + "\r").frames.at(0).size(), 25u);
  EXPECT_TRUE(Line().Feed("-0QST" + hex + "7\r").frames.empty());
}

TEST(ReplyReader, BadDigitAbandonsTheFrame) {
  for (const char* bad : {"-0QTR0a40\r", "-0QTR01G0\r", "-0QTR01/0\r", "-0QTR01@0\r",
                          "-0QTR01-0QTR0140\r", "-0QTR01 40\r",
                          "-0QTR01\xFF"
                          "40\r"}) {
    Line line;
    line.Feed(bad);
    EXPECT_TRUE(line.frames.empty()) << bad;
    line.Feed(kSelfTest);
    EXPECT_EQ(line.frames.size(), 1u) << "behind " << bad;
  }
  // The characters between "9" and "A" go on counting.
  EXPECT_EQ(Line().Feed("-0QTR:?00\r").frames, std::vector<Bytes>{Frame("QTR", {0xAF, 0x00})});
}

TEST(ReplyReader, HalfAByteIsNotCounted) {
  EXPECT_EQ(Line().Feed("-0QTR014\r").frames, std::vector<Bytes>{Frame("QTR", {0x01})});
  // And it does not leak into the next frame.
  EXPECT_EQ(Line().Feed("-0QTR0\r").Feed(kSelfTest).frames.at(1), Frame("QTR", {0x01, 0x40}));
}

TEST(ReplyReader, ShortFramesAreHandedOver) {
  EXPECT_EQ(Line().Feed("-0\r").frames, std::vector<Bytes>{Bytes{}});
  EXPECT_EQ(Line().Feed("-0QS\r").frames, std::vector<Bytes>{FromText("QS")});
  EXPECT_TRUE(Line().Feed("-\r\r").frames.empty());
}

// Noise of mostly those characters that have a meaning for the reader.
rc::Gen<Bytes> Noise() {
  const auto meaningful = rc::gen::elementOf(FromText("-0QSTMR\r/1AaF:9"));
  return rc::gen::container<Bytes>(
      rc::gen::oneOf(meaningful, meaningful, rc::gen::arbitrary<uint8_t>()));
}

RC_GTEST_PROP(ReplyReaderProperty, FirstFrameBehindACarriageReturnIsUnderstood, ()) {
  const Bytes noise = *Noise();
  Line line;
  line.Feed(noise);
  for (const Bytes& frame : line.frames) RC_ASSERT(frame.size() <= kReplyCapacity);
  line.Feed("\r");
  const size_t before = line.frames.size();
  line.Feed(kStatus);
  RC_ASSERT(line.frames.size() == before + 1);
  RC_ASSERT(line.frames.back() == Frame("QST", kStatusData));
}

RC_GTEST_PROP(ReplyReaderProperty, SecondFrameBehindAnyNoiseIsUnderstood, ()) {
  const Bytes noise = *Noise();
  Line line;
  // The first of the two ends a frame that the noise began, with its CR at the latest.
  line.Feed(noise).Feed(kStatus).Feed(kStatus);
  RC_ASSERT(!line.frames.empty());
  RC_ASSERT(line.frames.back() == Frame("QST", kStatusData));
}

RC_GTEST_PROP(ReplyReaderProperty, EveryFrameComesBackWhole, ()) {
  const auto data = *rc::gen::container<Bytes>(rc::gen::arbitrary<uint8_t>());
  const Bytes fitting(data.begin(),
                      data.begin() + static_cast<long>(std::min<size_t>(22, data.size())));
  const auto address = *rc::gen::inRange<uint8_t>(0, 16);
  const std::string text =
      std::string("-") + AddressCharacter(address) + "QST" + HexPayload(fitting) + "\r";
  Line line(address);
  line.Feed(text);
  RC_ASSERT(line.frames == std::vector<Bytes>{Frame("QST", fitting)});
}

TEST(ReplyClass, ByKindAndTag) {
  EXPECT_EQ(ClassifyReply(FromText("QST")), ReplyKind::Status);
  EXPECT_EQ(ClassifyReply(FromText("QTR\x01")), ReplyKind::SelfTest);
  EXPECT_EQ(ClassifyReply(FromText("QMTRVX")), ReplyKind::Identity);
  for (const char* unknown : {"", "Q", "QS", "CST", "QXX", "qst"}) {
    EXPECT_EQ(ClassifyReply(FromText(unknown)), ReplyKind::Unknown) << unknown;
  }
  EXPECT_TRUE(ReplyData(FromText("QS")).empty());
  EXPECT_TRUE(ReplyData(FromText("QST")).empty());
  const Bytes frame = FromText("QSTxy");
  EXPECT_EQ(ReplyData(frame).size(), 2u);
}

}  // namespace
}  // namespace rvx
