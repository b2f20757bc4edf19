// What an instrument sends, from the line's bytes to the status record. The first byte of the input
// is the instrument's address, the second how the rest is cut into pieces.
#include <algorithm>
#include <vector>

#include "fuzz/require.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "module/protocol/reply_reader.h"
#include "module/protocol/status_record.h"

namespace {

using rvx::ReplyReader;
using Bytes = std::vector<uint8_t>;

class Frames : public rvx::FrameHandler {
 public:
  void FrameReceived(std::span<const uint8_t> frame) override {
    all.emplace_back(frame.begin(), frame.end());
  }
  std::vector<Bytes> all;
};

void Look(const Bytes& frame) {
  fuzz::Require(frame.size() <= rvx::kReplyCapacity, "a frame fits into its buffer");
  const rvx::ReplyKind kind = rvx::ClassifyReply(frame);
  const std::span<const uint8_t> data = rvx::ReplyData(frame);
  fuzz::Require(data.size() + rvx::kReplyHead == std::max(frame.size(), rvx::kReplyHead),
                "what is behind kind and tag is the data");
  if (kind == rvx::ReplyKind::Identity) {
    const std::string text = rvx::IdentificationText('0', frame);
    fuzz::Require(text.compare(1, frame.size(), std::string(frame.begin(), frame.end())) == 0,
                  "an identification is what was sent");
    const rvx::Identification found = rvx::ParseIdentification(text);
    fuzz::Require(found.firmwareVersion.size() <= 5 && found.serialNumber.size() <= 10,
                  "a field keeps to its place");
  }
  if (kind == rvx::ReplyKind::SelfTest) {
    const auto word = rvx::ParseSelfTestWord(data);
    fuzz::Require(word.has_value() == (data.size() >= 2), "a self test is two bytes");
    if (word) rvx::SelfTestFailures(*word);
  }
  const auto record = rvx::StatusRecord::FromData(data);
  fuzz::Require(record.has_value() == (data.size() >= rvx::kStatusRecordSize),
                "a status record is whole or none");
  if (!record) return;
  fuzz::Require(std::equal(record->bytes().begin(), record->bytes().end(), data.begin()),
                "a status record is what was sent");
  rvx::OperationTextId(record->operation());
  rvx::ErrorTextId(record->errorCode());
  rvx::MachineStatusTextIds(record->machineStatus());
  fuzz::Require(record->lastTag().size() % 2 == 0, "a tag has two letters or none");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const uint8_t address = data[0] & 15;
  const size_t step = data[1] % 8 + 1;
  const std::span<const uint8_t> line(data + 2, size - 2);

  Frames whole;
  ReplyReader reader(address, &whole);
  reader.Feed(line);
  Frames pieces;
  ReplyReader pieceReader(address, &pieces);
  for (size_t at = 0; at < line.size(); at += step) {
    pieceReader.Feed(line.subspan(at, std::min(step, line.size() - at)));
  }
  fuzz::Require(whole.all == pieces.all, "frames do not depend on how the bytes arrive");
  for (const Bytes& frame : whole.all) Look(frame);

  // Whatever came, a line end and a good frame after it are understood.
  Bytes status(rvx::kStatusRecordSize);
  for (size_t i = 0; i < status.size(); ++i) status[i] = static_cast<uint8_t>(i * 13);
  const std::string good = std::string("\r-") + static_cast<char>('0' + address) + "QST" +
                           rvx::HexPayload(status) + "\r";
  reader.Feed(Bytes(good.begin(), good.end()));
  const auto read = rvx::StatusRecord::FromData(rvx::ReplyData(whole.all.back()));
  fuzz::Require(read && std::equal(status.begin(), status.end(), read->bytes().begin()),
                "the next good frame is understood");
  return 0;
}
