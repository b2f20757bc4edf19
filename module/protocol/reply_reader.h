// The reply frames of the wire protocol, read byte by byte.
//
// Reply frame, instrument to module:
//
//   offset  size  content
//   0       1     "-"
//   1       1     address character of the sender
//   2       1     kind, always "Q"
//   3       2     tag: "ST", "TR" or "MT"
//   5       2n    n data bytes in hex (tags "ST", "TR"); with "MT" n plain characters
//   end     1     CR
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace rvx {

// Bytes of a frame after the address character, decoded: kind, tag and data.
inline constexpr size_t kReplyCapacity = 25;
// Bytes of kind and tag, which are never in hex.
inline constexpr size_t kReplyHead = 3;

// Hears of each complete frame.
class FrameHandler {
 public:
  virtual ~FrameHandler() = default;
  // `frame`: kind, tag and decoded data, 0 to kReplyCapacity bytes, valid during the call.
  virtual void FrameReceived(std::span<const uint8_t> frame) = 0;
};

// The state machine. It has no lock: it belongs to the thread that feeds it. After any CR it waits
// for the next frame, so noise costs at most the frame in which it occurs.
class ReplyReader {
 public:
  // `handler` is not owned and must outlive the reader.
  ReplyReader(uint8_t address, FrameHandler* handler) : address_(address), handler_(handler) {}

  // Takes what has been received and calls the handler for each frame that ends in it. Frames of
  // other senders, with more than kReplyCapacity bytes, or with a wrong digit are dropped silently.
  void Feed(std::span<const uint8_t> bytes);

 private:
  enum class State {
    Waiting,  // for "-"; everything else is skipped
    Address,  // for the address character: this instrument's leads to Data, any other to Waiting
    Data      // kind, tag and data up to CR; CR and anything that breaks the frame lead to Waiting
  };
  void FeedByte(uint8_t c);
  void FeedData(uint8_t c);
  bool IsPlain() const { return fill_ < kReplyHead || buffer_[1] == 'M'; }

  uint8_t address_;
  FrameHandler* handler_;
  State state_ = State::Waiting;
  std::array<uint8_t, kReplyCapacity> buffer_{};
  size_t fill_ = 0;
  bool halfByte_ = false;  // the high nibble of buffer_[fill_] is there, the low one is due
};

// What a complete frame is.
enum class ReplyKind {
  Status,    // "ST"
  SelfTest,  // "TR"
  Identity,  // "MT"
  Unknown    // another kind or tag, or too short for one; ignored
};
ReplyKind ClassifyReply(std::span<const uint8_t> frame);

// The data after kind and tag; empty for a frame without any.
std::span<const uint8_t> ReplyData(std::span<const uint8_t> frame);

}  // namespace rvx
