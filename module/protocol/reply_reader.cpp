#include "module/protocol/reply_reader.h"

#include <algorithm>
#include <string_view>

#include "module/protocol/frames.h"

namespace rvx {
namespace {

// The value of a hex digit; above 15 for other characters, lower-case letters included. The
// characters between "9" and "A" count as the values after 9, as the controllers read them.
unsigned DigitValue(uint8_t c) { return static_cast<unsigned>(c) - (c < 0x41 ? 0x30u : 0x37u); }

bool HasTag(std::span<const uint8_t> frame, std::string_view tag) {
  return std::equal(tag.begin(), tag.end(), frame.begin() + 1,
                    [](char letter, uint8_t byte) { return static_cast<uint8_t>(letter) == byte; });
}

}  // namespace

void ReplyReader::Feed(std::span<const uint8_t> bytes) {
  for (const uint8_t c : bytes) FeedByte(c);
}

void ReplyReader::FeedByte(uint8_t c) {
  switch (state_) {
    case State::Waiting:
      if (c == static_cast<uint8_t>(kReplyStart)) state_ = State::Address;
      return;
    case State::Address:
      if (!IsOwnAddress(c, address_)) {
        state_ = State::Waiting;
        return;
      }
      fill_ = 0;
      halfByte_ = false;
      state_ = State::Data;
      return;
    case State::Data:
      FeedData(c);
      return;
  }
}

void ReplyReader::FeedData(uint8_t c) {
  if (c == static_cast<uint8_t>(kFrameEnd)) {
    state_ = State::Waiting;
    handler_->FrameReceived(std::span<const uint8_t>(buffer_.data(), fill_));
    return;
  }
  if (fill_ >= kReplyCapacity) {
    state_ = State::Waiting;
    return;
  }
  if (IsPlain()) {
    buffer_[fill_++] = c;
    return;
  }
  const unsigned digit = DigitValue(c);
  if (digit > 15) {
    state_ = State::Waiting;
    return;
  }
  if (!halfByte_) {
    buffer_[fill_] = static_cast<uint8_t>(digit << 4);
  } else {
    buffer_[fill_++] |= static_cast<uint8_t>(digit);
  }
  halfByte_ = !halfByte_;
}

ReplyKind ClassifyReply(std::span<const uint8_t> frame) {
  if (frame.size() < kReplyHead || frame[0] != static_cast<uint8_t>(kQueryKind)) {
    return ReplyKind::Unknown;
  }
  if (HasTag(frame, kStatusTag)) return ReplyKind::Status;
  if (HasTag(frame, kSelfTestTag)) return ReplyKind::SelfTest;
  if (HasTag(frame, kIdentityTag)) return ReplyKind::Identity;
  return ReplyKind::Unknown;
}

std::span<const uint8_t> ReplyData(std::span<const uint8_t> frame) {
  return frame.size() > kReplyHead ? frame.subspan(kReplyHead) : std::span<const uint8_t>();
}

}  // namespace rvx
