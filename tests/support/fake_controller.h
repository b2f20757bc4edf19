// The other end of a fake port: an instrument's controller that answers requests as told, without a
// sequence of its own. A test moves its status by hand.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "module/protocol/status_record.h"
#include "platform/lock.h"
#include "tests/support/fake_port.h"

namespace rvx {

// The bytes of a status record, big-endian as an instrument sends them.
using StatusBytes = std::array<uint8_t, kStatusRecordSize>;

// "-", address character, "QST", the record in hex, CR.
std::string StatusReply(char addressCharacter, const StatusBytes& status);

// Replies to QST and every command with a status frame, to QTR with the self-test word, to QMT with
// the identification. Any thread may call it. The port must outlive it or get another script.
class FakeController {
 public:
  explicit FakeController(FakePort& port, uint8_t address = 0);

  // Changes the status under the lock; the next frame shows it.
  void Update(const std::function<void(StatusBytes&)>& change);
  // A 16-bit field by its offset (0 int count, 2 actual, 4 target, 6 +VSS, 8 -VSS, 10 speed).
  void SetWord(size_t offset, uint16_t value);
  void SetByte(size_t offset, uint8_t value);
  // What the status shows; the error byte and the last tag belong to the single reply.
  StatusBytes status();
  // The data of the identity reply after "QMT": "RVX 4" ...
  void SetIdentification(const std::string& data);
  void SetSelfTestWord(uint16_t word);
  // While silent it receives everything and replies to nothing.
  void SetSilent(bool silent);
  void SetReplyDelay(platform::Milliseconds delay);
  // The next `count` requests with this tag are answered with the error code; -1: all.
  void Refuse(const std::string& tag, uint8_t code, int count);
  // Called for each accepted command, before its reply, on the writer's thread without a lock; it
  // may call Update. `payload` in hex.
  void OnCommand(std::function<void(const std::string& tag, const std::string& payload)> hook);
  // Sends a status frame that nobody asked for.
  void SendStatus();
  // The texts of the commands so far (without "/" and CR; queries are left out).
  std::vector<std::string> commands();

 private:
  struct Refusal {
    uint8_t code = 0;
    int remaining = 0;
  };
  void Answer(std::span<const uint8_t> bytes);
  uint8_t TakeRefusal(const std::string& tag);
  std::string MakeReply(char kind, const std::string& tag, uint8_t code);

  FakePort& port_;
  const uint8_t address_;
  platform::PlainLock lock_{"fake controller", 5800};
  StatusBytes status_ GUARDED_BY(lock_){};
  std::string identification_ GUARDED_BY(lock_) = "RVX 4102.17FAKE-1";
  uint16_t selfTestWord_ GUARDED_BY(lock_) = 0;
  bool silent_ GUARDED_BY(lock_) = false;
  platform::Milliseconds delay_ GUARDED_BY(lock_){5};
  std::map<std::string, Refusal> refusals_ GUARDED_BY(lock_);
  std::function<void(const std::string&, const std::string&)> hook_ GUARDED_BY(lock_);
  std::vector<std::string> commands_ GUARDED_BY(lock_);
};

}  // namespace rvx
