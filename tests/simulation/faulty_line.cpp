#include "tests/simulation/faulty_line.h"

#include <fmt/format.h>

#include <algorithm>

#include "tests/support/unseen_guard.h"

namespace rvx::soak {

using platform::Milliseconds;
using namespace std::chrono_literals;

namespace {

constexpr size_t kMachine = 12;
constexpr size_t kSwitches = 13;
constexpr size_t kOperation = 14;
constexpr size_t kError = 16;
constexpr size_t kTag = 17;
constexpr uint8_t kCooldown = 11;
constexpr uint8_t kTestUnderReport = 0xA0;
constexpr uint8_t kNotReady = 0x02;
constexpr uint8_t kInitSteppers = 0x04;
constexpr uint8_t kNotHomed = 0x42;
constexpr uint8_t kCodes[] = {0x40, 0x41, 0x42, 0x43, 0x80, 0x80, 0x82, 0x87, 0x87, 0xE0, 0xE1};

std::string StatusFrame(const std::array<uint8_t, 19>& status) {
  std::string frame = "-0QST";
  for (const uint8_t byte : status) frame += fmt::format("{:02X}", byte);
  return frame + '\r';
}

bool IsStatusFrame(std::string_view frame) {
  return frame.size() == 44 && frame.substr(2, 3) == "QST";
}

}  // namespace

FaultyLine::FaultyLine(FakePort& port, const Scenario& scenario, Observer& observer)
    : port_(port),
      scenario_(scenario),
      observer_(observer),
      frameDraws_(scenario.seed, platform::StreamId::Line, "frames"),
      byteDraws_(scenario.seed, platform::StreamId::Line, "bytes") {
  port_.KeepWritten(false);
  port_.SetFilter(this);
}

FaultyLine::~FaultyLine() { port_.SetFilter(nullptr); }

bool FaultyLine::Happens(Fault fault) {
  const double rate = scenario_.rates[fault];
  return rate > 0.0 && !calm_ && frameDraws_.Chance(rate);
}

bool FaultyLine::IsUnder(Fault fault) {
  return platform::MonotonicTime().count() < until_.at(static_cast<size_t>(fault));
}

bool FaultyLine::IsBusy() {
  const UnseenGuard guard(lock_);
  return (lastStatus_[kSwitches] & 0x68) != 0;  // a move, a test, a motor run
}

bool FaultyLine::IsDead() {
  return IsUnder(Fault::CutLine) || IsUnder(Fault::Silent) || IsUnder(Fault::PowerCycle);
}

bool FaultyLine::IsAlive() {
  const UnseenGuard guard(lock_);
  return !IsDead();
}

void FaultyLine::EndFaults() {
  observer_.Note("the faults end");
  const UnseenGuard guard(lock_);
  calm_ = true;
  until_.fill(0);
  refusals_ = 0;
  heldCount_.reset();
}

void FaultyLine::Begin(const Mishap& mishap) {
  observer_.Note(fmt::format("{} for {} ms", KindOf(mishap.fault).name, mishap.lasts.count()));
  const UnseenGuard guard(lock_);
  const int64_t end = platform::MonotonicTime().count() + mishap.lasts.count() * 1000;
  until_.at(static_cast<size_t>(mishap.fault)) = end;
  switch (mishap.fault) {
    case Fault::Refuses:
      refusalCode_ = kCodes[static_cast<size_t>(mishap.value) % std::size(kCodes)];
      // The controller refuses a frame that arrives damaged, and the module sends it again. Some
      // are refused every time.
      refusals_ = mishap.value % 5 == 0 ? 1000 : 1 + mishap.value % 3;
      break;
    case Fault::GoesIdle:
      ownAbort_ = true;
      break;
    case Fault::PowerCycle:
      ownAbort_ = true;
      countOffset_ = static_cast<uint16_t>(mishap.value);
      until_.at(static_cast<size_t>(Fault::SteppersLost)) = end + mishap.lasts.count() * 1000;
      break;
    case Fault::CountJumps:
      countOffset_ = static_cast<uint16_t>(countOffset_ + mishap.value);
      break;
    case Fault::CountRepeats:
      heldCount_ = static_cast<uint16_t>((lastStatus_[0] << 8 | lastStatus_[1]) + countOffset_);
      break;
    default:
      break;
  }
}

// --- From the module to the controller ----------------------------------------------------------

void FaultyLine::FromHost(std::span<const uint8_t> bytes, const LineFilter::Hear& hear) {
  const std::string written(bytes.begin(), bytes.end());
  observer_.FrameWritten(written);
  Heard heard;
  {
    const UnseenGuard guard(lock_);
    heard = Hearing(written);
  }
  for (const std::string& frame : heard.frames) {
    if (onStart && frame.substr(2, 3) == "CST") {
      const auto payload = FromHex(std::string_view(frame).substr(5, frame.size() - 6));
      if (payload && payload->size() == 15) onStart(*payload);
    }
    hear({reinterpret_cast<const uint8_t*>(frame.data()), frame.size()});
  }
  for (const std::string& answer : heard.answers) port_.Reply(answer, 5ms);
}

FaultyLine::Heard FaultyLine::Hearing(std::string bytes) {
  Heard heard;
  if (ownAbort_) {
    ownAbort_ = false;
    ++swallowed_;
    heard.frames.emplace_back("/0CAB\r");
  }
  if (IsUnder(Fault::CutLine) || IsUnder(Fault::PowerCycle)) return heard;
  if (Happens(Fault::ShortWrite)) bytes.resize(frameDraws_.Next() % bytes.size());
  for (const char c : DamageBytes(bytes)) {
    if (c == '/') request_.clear();
    request_ += c;
    if (c != '\r') continue;
    if (request_.size() >= 6 && request_[0] == '/' && request_[1] == '0') Hear(request_, heard);
    request_.clear();
  }
  return heard;
}

void FaultyLine::Hear(const std::string& frame, Heard& heard) {
  const std::string request = frame.substr(2, 3);
  if (request == "CAB") until_.at(static_cast<size_t>(Fault::NeverSettles)) = 0;
  const bool refuses = IsUnder(Fault::Refuses) && refusals_ > 0 && request[0] == 'C';
  const bool isLost = IsUnder(Fault::SteppersLost) && (request == "CST" || request == "CMP");
  if (IsUnder(Fault::Silent) || (!refuses && !isLost)) {
    heard.frames.push_back(frame);
    return;
  }
  if (refuses) --refusals_;
  std::array<uint8_t, 19> status = lastStatus_;
  status[kError] = refuses ? refusalCode_ : kNotHomed;
  status[kTag] = static_cast<uint8_t>(request[1]);
  status[kTag + 1] = static_cast<uint8_t>(request[2]);
  heard.answers.push_back(StatusFrame(status));
}

// --- From the controller to the module ----------------------------------------------------------

void FaultyLine::FromInstrument(std::string_view bytes, Milliseconds delay,
                                const Deliver& deliver) {
  std::vector<Piece> pieces;
  {
    const UnseenGuard guard(lock_);
    if (const std::optional<std::string> frame = Leaving(bytes)) pieces = Arriving(*frame, delay);
  }
  for (const Piece& piece : pieces) deliver(piece.bytes, piece.delay);
}

std::optional<std::string> FaultyLine::Leaving(std::string_view frame) {
  if (!IsStatusFrame(frame)) return IsDead() ? std::nullopt : std::optional(std::string(frame));
  const auto data = FromHex(frame.substr(5, 38));
  if (!data) return std::nullopt;
  std::array<uint8_t, 19> status{};
  std::copy_n(data->begin(), status.size(), status.begin());
  lastStatus_ = status;
  if (swallowed_ > 0 && status[kTag] == 'A' && status[kTag + 1] == 'B') {
    --swallowed_;
    return std::nullopt;
  }
  if (IsDead()) return std::nullopt;
  Disguise(status);
  return StatusFrame(status);
}

void FaultyLine::Disguise(std::array<uint8_t, 19>& status) {
  if (IsUnder(Fault::NotReady)) status[kMachine] |= kNotReady;
  if (IsUnder(Fault::SteppersLost)) status[kMachine] |= kInitSteppers;
  unsettled_ = IsUnder(Fault::NeverSettles) && (unsettled_ || status[kOperation] >= kCooldown);
  if (unsettled_) {
    status[kOperation] = kCooldown;
    status[kSwitches] = kTestUnderReport;
  }
  const bool isHeld = heldCount_ && IsUnder(Fault::CountRepeats);
  const auto count = static_cast<uint16_t>((status[0] << 8 | status[1]) + countOffset_);
  const uint16_t shown = isHeld ? *heldCount_ : count;
  status[0] = static_cast<uint8_t>(shown >> 8);
  status[1] = static_cast<uint8_t>(shown);
}

std::vector<FaultyLine::Piece> FaultyLine::Arriving(const std::string& frame, Milliseconds delay) {
  std::vector<Piece> pieces;
  if (Happens(Fault::Babble)) {
    std::string noise(static_cast<size_t>(frameDraws_.Between(1, 80)), ' ');
    for (char& c : noise) c = "-0QST/AF\r\0\xFF"[frameDraws_.Below(11)];
    pieces.push_back({noise, delay});
  }
  if (Happens(Fault::OldReply) && !lastReply_.empty()) pieces.push_back({lastReply_, delay});
  lastReply_ = frame;
  if (Happens(Fault::LostReply)) return pieces;
  if (Happens(Fault::LateReply)) delay = DrawLateness();
  const std::string bytes = DamageBytes(frame);
  if (Happens(Fault::Gap) && bytes.size() > 1) {
    const size_t cut = 1 + frameDraws_.Next() % (bytes.size() - 1);
    pieces.push_back({bytes.substr(0, cut), delay});
    pieces.push_back({bytes.substr(cut), delay + frameDraws_.LogUniform(1ms, 3000ms)});
  } else {
    pieces.push_back({bytes, delay});
  }
  if (Happens(Fault::DoubledReply)) pieces.push_back({frame, delay + 1ms});
  return pieces;
}

// A reply has 2000 ms.
Milliseconds FaultyLine::DrawLateness() {
  switch (frameDraws_.Below(4)) {
    case 0:
      return Milliseconds(1999);
    case 1:
      return Milliseconds(2000);
    case 2:
      return Milliseconds(2001);
    default:
      return frameDraws_.LogUniform(100ms, 6000ms);
  }
}

std::string FaultyLine::DamageBytes(std::string_view bytes) {
  const FaultRates& rates = scenario_.rates;
  const double all = rates[Fault::LostByte] + rates[Fault::FlippedByte] +
                     rates[Fault::DoubledByte] + rates[Fault::InsertedByte];
  if (calm_ || all <= 0.0) return std::string(bytes);
  std::string damaged;
  for (char c : bytes) {
    // One draw for each byte; its range decides what happens.
    double draw = byteDraws_.Unit();
    const auto hits = [&](Fault fault) {
      const bool hit = draw >= 0.0 && draw < rates[fault];
      draw -= rates[fault];
      return hit;
    };
    if (hits(Fault::LostByte)) continue;
    if (hits(Fault::FlippedByte)) c = static_cast<char>(c ^ 1 << byteDraws_.Below(8));
    if (hits(Fault::DoubledByte)) damaged += c;
    if (hits(Fault::InsertedByte)) damaged += "\r-/\0A"[byteDraws_.Below(5)];
    damaged += c;
  }
  return damaged;
}

}  // namespace rvx::soak
