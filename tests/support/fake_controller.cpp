#include "tests/support/fake_controller.h"

#include <utility>

#include "module/protocol/frames.h"

namespace rvx {

using platform::PlainGuard;

namespace {

constexpr size_t kErrorOffset = 16;
constexpr size_t kLastTagOffset = 17;

// 15 V and -15 V, a cell of some -2 degrees C, control off.
constexpr StatusBytes kStartStatus = {0, 1, 0xE2, 0, 0xFF, 0xFF, 0xE0, 0, 0x20, 0};

}  // namespace

std::string StatusReply(char addressCharacter, const StatusBytes& status) {
  std::string reply{kReplyStart, addressCharacter};
  reply += "QST" + HexPayload(status);
  reply += kFrameEnd;
  return reply;
}

FakeController::FakeController(FakePort& port, uint8_t address)
    : port_(port), address_(address), status_(kStartStatus) {
  port_.SetScript([this](FakePort&, std::span<const uint8_t> bytes) { Answer(bytes); });
}

void FakeController::Update(const std::function<void(StatusBytes&)>& change) {
  const PlainGuard guard(lock_);
  change(status_);
}

void FakeController::SetWord(size_t offset, uint16_t value) {
  Update([&](StatusBytes& status) {
    status[offset] = static_cast<uint8_t>(value >> 8);
    status[offset + 1] = static_cast<uint8_t>(value);
  });
}

void FakeController::SetByte(size_t offset, uint8_t value) {
  Update([&](StatusBytes& status) { status[offset] = value; });
}

StatusBytes FakeController::status() {
  const PlainGuard guard(lock_);
  return status_;
}

void FakeController::SetIdentification(const std::string& data) {
  const PlainGuard guard(lock_);
  identification_ = data;
}

void FakeController::SetSelfTestWord(uint16_t word) {
  const PlainGuard guard(lock_);
  selfTestWord_ = word;
}

void FakeController::SetSilent(bool silent) {
  const PlainGuard guard(lock_);
  silent_ = silent;
}

void FakeController::SetReplyDelay(platform::Milliseconds delay) {
  const PlainGuard guard(lock_);
  delay_ = delay;
}

void FakeController::Refuse(const std::string& tag, uint8_t code, int count) {
  const PlainGuard guard(lock_);
  refusals_[tag] = Refusal{code, count};
}

void FakeController::OnCommand(
    std::function<void(const std::string& tag, const std::string& payload)> hook) {
  const PlainGuard guard(lock_);
  hook_ = std::move(hook);
}

void FakeController::SendStatus() {
  port_.Reply(StatusReply(AddressCharacter(address_), status()));
}

std::vector<std::string> FakeController::commands() {
  const PlainGuard guard(lock_);
  return commands_;
}

uint8_t FakeController::TakeRefusal(const std::string& tag) {
  const PlainGuard guard(lock_);
  const auto found = refusals_.find(tag);
  if (found == refusals_.end() || found->second.remaining == 0) return 0;
  if (found->second.remaining > 0) --found->second.remaining;
  return found->second.code;
}

std::string FakeController::MakeReply(char kind, const std::string& tag, uint8_t code) {
  const PlainGuard guard(lock_);
  const std::string head{kReplyStart, AddressCharacter(address_), kQueryKind};
  if (kind == kQueryKind && tag == kIdentityTag) return head + tag + identification_ + kFrameEnd;
  if (kind == kQueryKind && tag == kSelfTestTag) {
    const std::array<uint8_t, 2> word = {static_cast<uint8_t>(selfTestWord_ >> 8),
                                         static_cast<uint8_t>(selfTestWord_)};
    return head + tag + HexPayload(word) + kFrameEnd;
  }
  StatusBytes status = status_;
  status[kErrorOffset] = code;
  if (kind == kCommandKind) {
    status[kLastTagOffset] = static_cast<uint8_t>(tag[0]);
    status[kLastTagOffset + 1] = static_cast<uint8_t>(tag[1]);
  }
  return StatusReply(AddressCharacter(address_), status);
}

void FakeController::Answer(std::span<const uint8_t> bytes) {
  const std::string frame(bytes.begin(), bytes.end());
  // "/", address, kind, tag, CR at the least; frames for other instruments are ignored.
  if (frame.size() < 6 || frame[1] != AddressCharacter(address_)) return;
  const char kind = frame[2];
  const std::string tag = frame.substr(3, 2);
  const std::string payload = frame.substr(5, frame.size() - 6);
  std::function<void(const std::string&, const std::string&)> hook;
  bool silent = false;
  platform::Milliseconds delay{0};
  {
    const PlainGuard guard(lock_);
    if (kind == kCommandKind) commands_.push_back(frame.substr(1, frame.size() - 2));
    silent = silent_;
    delay = delay_;
    hook = hook_;
  }
  if (silent) return;
  const uint8_t code = TakeRefusal(tag);
  if (code == 0 && kind == kCommandKind && hook) hook(tag, payload);
  port_.Reply(MakeReply(kind, tag, code), delay);
}

}  // namespace rvx
