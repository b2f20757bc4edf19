#include "tests/support/scripted_controller.h"

#include <utility>

#include "module/protocol/conversions.h"
#include "module/protocol/frames.h"

namespace rvx {

using platform::PlainGuard;

namespace {

constexpr platform::Milliseconds kTick{500};
constexpr platform::Milliseconds kReplyDelay{5};
constexpr size_t kActualOffset = 2;
constexpr size_t kTargetOffset = 4;
constexpr size_t kSpeedOffset = 10;
constexpr size_t kMachineOffset = 12;
constexpr size_t kSwitchOffset = 13;
constexpr size_t kOperationOffset = 14;
constexpr size_t kPromptOffset = 15;
constexpr size_t kErrorOffset = 16;
constexpr size_t kTagOffset = 17;
// 15 V and -15 V, a cell of some -2 degrees C, control off.
constexpr StatusBytes kStartStatus = {0, 1, 0xE2, 0, 0xFF, 0xFF, 0xE0, 0, 0x20, 0};
constexpr int kMoveTicks = 2;
constexpr int kCoolTicks = 4;

uint16_t Counts(double celsius) {
  return TruncatedCounts(TemperatureToCounts(celsius, ProbeConstants{}, SupplyPair{}, '1', 0.0));
}

std::vector<uint8_t> ParseHex(std::string_view text) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

int Word(const std::vector<uint8_t>& payload, size_t offset) {
  return payload.at(offset) << 8 | payload.at(offset + 1);
}

// How many bytes follow a command's tag, where it matters here; -1 for any number.
int PayloadSize(std::string_view tag) {
  static const std::map<std::string_view, int> kSizes = {
      {kAbortTag, 0},          {kStartTestTag, 15},         {kPreconditionTag, 3},
      {kMoveToPositionTag, 1}, {kTemperatureControlTag, 3}, {kUserAcknowledgeTag, 0}};
  const auto found = kSizes.find(tag);
  return found != kSizes.end() ? found->second : -1;
}

// Damage on the line shows as a character that is no digit or as a wrong length.
uint8_t CheckPayload(std::string_view tag, std::string_view hex) {
  if (hex.find_first_not_of("0123456789ABCDEF") != std::string_view::npos || hex.size() % 2 != 0) {
    return static_cast<uint8_t>(ErrorCode::InvalidPacket);
  }
  const int size = PayloadSize(tag);
  if (size >= 0 && hex.size() != 2 * static_cast<size_t>(size)) {
    return static_cast<uint8_t>(ErrorCode::InvalidCommand);
  }
  return 0;
}

bool IsManualModel(char modelCode) { return modelCode == '1' || modelCode == '3'; }

}  // namespace

ScriptedController::ScriptedController(FakePort& port, char modelCode, uint8_t address)
    : port_(port), modelCode_(modelCode), address_(address), status_(kStartStatus) {
  lastTick_ = platform::MonotonicTime();
  port_.SetScript([this](FakePort&, std::span<const uint8_t> bytes) { Hear(bytes); });
  thread_ = platform::StartThread("scripted controller", [this] { RunThread(); });
}

ScriptedController::~ScriptedController() {
  {
    const PlainGuard guard(lock_);
    stop_ = true;
  }
  changed_.Set();
  thread_->Join();
  port_.SetScript([](FakePort&, std::span<const uint8_t>) {});
}

std::string ScriptedController::identification() const {
  return std::string(1, AddressCharacter(address_)) + "QMTRVX " + modelCode_ + " 02.17SCRIPT-1  ";
}

// --- Status -------------------------------------------------------------------------------------

void ScriptedController::SetByte(size_t offset, uint8_t value) {
  const PlainGuard guard(lock_);
  status_[offset] = value;
}

void ScriptedController::SetWord(size_t offset, uint16_t value) {
  status_[offset] = static_cast<uint8_t>(value >> 8);
  status_[offset + 1] = static_cast<uint8_t>(value);
}

void ScriptedController::SetTemperature(double celsius) {
  const PlainGuard guard(lock_);
  SetWord(kActualOffset, Counts(celsius));
}

void ScriptedController::SetTarget(double celsius) {
  const PlainGuard guard(lock_);
  SetWord(kTargetOffset, celsius == kCountsOffValue ? kCountsOff : Counts(celsius));
}

void ScriptedController::SetSpeedCounts(uint16_t counts) {
  const PlainGuard guard(lock_);
  speedCounts_ = counts;
  if (play_.empty() || status_[kSpeedOffset] != 0 || status_[kSpeedOffset + 1] != 0) {
    SetWord(kSpeedOffset, counts);
  }
}

void ScriptedController::SetOperation(uint8_t operation) { SetByte(kOperationOffset, operation); }
void ScriptedController::SetSwitchByte(uint8_t bits) { SetByte(kSwitchOffset, bits); }
void ScriptedController::SetMachineStatus(uint8_t bits) { SetByte(kMachineOffset, bits); }
void ScriptedController::SetPromptFlag(uint8_t flag) { SetByte(kPromptOffset, flag); }

void ScriptedController::SetIntCount(uint16_t count) {
  const PlainGuard guard(lock_);
  countHeld_ = true;
  SetWord(0, count);
}

void ScriptedController::SetStartCount(uint16_t count) {
  const PlainGuard guard(lock_);
  countHeld_ = false;
  SetWord(0, count);
}

void ScriptedController::Report() { RaiseError(0); }

void ScriptedController::RaiseError(uint8_t code) {
  const PlainGuard guard(lock_);
  CatchUp();
  port_.Reply(MakeStatus(code, ""));
}

StatusBytes ScriptedController::status() {
  const PlainGuard guard(lock_);
  return status_;
}

std::string ScriptedController::MakeStatus(uint8_t code, const std::string& tag) {
  StatusBytes status = status_;
  status[kErrorOffset] = code;
  if (tag.size() == 2) {
    status[kTagOffset] = static_cast<uint8_t>(tag[0]);
    status[kTagOffset + 1] = static_cast<uint8_t>(tag[1]);
  }
  return StatusReply(AddressCharacter(address_), status);
}

// --- Disturbances -------------------------------------------------------------------------------

void ScriptedController::Disturb(const std::string& tag, Disturbance disturbance) {
  const PlainGuard guard(lock_);
  disturbances_[tag] = disturbance;
}

void ScriptedController::Ignore(const std::string& tag, int count) {
  Disturb(tag, {Disturbance::Kind::Ignore, 0, kReplyDelay, count});
}

void ScriptedController::Refuse(const std::string& tag, uint8_t code, int count) {
  Disturb(tag, {Disturbance::Kind::Refuse, code, kReplyDelay, count});
}

void ScriptedController::Delay(const std::string& tag, platform::Milliseconds delay, int count) {
  Disturb(tag, {Disturbance::Kind::Delay, 0, delay, count});
}

void ScriptedController::SetSilent(bool silent) {
  const PlainGuard guard(lock_);
  silent_ = silent;
}

void ScriptedController::SetPlaying(bool playing) {
  const PlainGuard guard(lock_);
  playing_ = playing;
}

void ScriptedController::SetFollowing(bool following) {
  const PlainGuard guard(lock_);
  following_ = following;
}

void ScriptedController::AtOperation(uint8_t operation, std::function<void()> hook) {
  const PlainGuard guard(lock_);
  hooks_.emplace(operation, std::move(hook));
}

void ScriptedController::GoIdle() {
  {
    const PlainGuard guard(lock_);
    EndPlay();
  }
  Report();
}

// --- What was heard -----------------------------------------------------------------------------

std::vector<std::string> ScriptedController::commands() {
  const PlainGuard guard(lock_);
  std::vector<std::string> texts;
  for (const auto& command : commands_) texts.push_back(command.second);
  return texts;
}

int ScriptedController::CountCommands(const std::string& tag) {
  return static_cast<int>(CommandTimes(tag).size());
}

std::vector<platform::Microseconds> ScriptedController::CommandTimes(const std::string& tag) {
  const PlainGuard guard(lock_);
  std::vector<platform::Microseconds> times;
  for (const auto& [time, text] : commands_) {
    if (text.substr(2, 2) == tag) times.push_back(time);
  }
  return times;
}

bool ScriptedController::WaitForCommands(const std::string& tag, int count,
                                         platform::Milliseconds timeout) {
  const platform::Deadline deadline = platform::Deadline::After(timeout);
  while (CountCommands(tag) < count) {
    if (!heard_.Wait(deadline)) return CountCommands(tag) >= count;
  }
  return true;
}

void ScriptedController::ForgetCommands() {
  const PlainGuard guard(lock_);
  commands_.clear();
}

// --- Requests, on the writer's thread -----------------------------------------------------------

void ScriptedController::Hear(std::span<const uint8_t> bytes) {
  const std::string frame(bytes.begin(), bytes.end());
  if (frame.size() < 6 || frame[0] != kRequestStart || frame.back() != kFrameEnd) return;
  if (frame[1] != AddressCharacter(address_)) return;
  const std::string text = frame.substr(1, frame.size() - 2);
  const bool isCommand = text[1] == kCommandKind;
  const std::string tag = text.substr(2, 2);
  if (isCommand) {
    {
      const PlainGuard guard(lock_);
      commands_.emplace_back(platform::MonotonicTime(), text);
    }
    heard_.Set();
  }
  {
    const PlainGuard guard(lock_);
    if (silent_) return;
    std::string reply;
    platform::Milliseconds delay = kReplyDelay;
    CatchUp();
    uint8_t code = 0;
    const auto found = isCommand ? disturbances_.find(tag) : disturbances_.find("Q" + tag);
    if (found != disturbances_.end() && found->second.remaining != 0) {
      Disturbance& disturbance = found->second;
      if (disturbance.remaining > 0) --disturbance.remaining;
      if (disturbance.kind == Disturbance::Kind::Ignore) return;
      code = disturbance.code;
      delay = disturbance.delay;
    }
    if (isCommand) {
      const std::string_view payload = std::string_view(text).substr(4);
      if (code == 0) code = CheckPayload(tag, payload);
      if (code == 0) code = ReasonToRefuse(tag);
      if (code == 0) Obey(tag, ParseHex(std::string_view(text).substr(4)));
      reply = MakeStatus(code, tag);
    } else if (tag == kIdentityTag) {
      reply = kReplyStart + identification() + kFrameEnd;
    } else if (tag == kSelfTestTag) {
      reply = std::string{kReplyStart, AddressCharacter(address_)} + "QTR0000" + kFrameEnd;
    } else {
      reply = MakeStatus(code, "");
    }
    if (delay > kReplyDelay) {
      lateReplies_.emplace(platform::MonotonicTime() + delay, reply);
    } else {
      port_.Reply(reply, delay);
    }
  }
  changed_.Set();
}

uint8_t ScriptedController::ReasonToRefuse(const std::string& tag) {
  if (!playing_) return 0;
  const uint8_t switches = status_[kSwitchOffset];
  const bool starts = tag == kStartTestTag || tag == kPreconditionTag || tag == kMoveToPositionTag;
  if (starts && switches != 0) return static_cast<uint8_t>(ErrorCode::NotIdle);
  const bool runs = (switches & (kSwitchTestRunning | kSwitchMotorRun)) != 0;
  if (tag == kTemperatureControlTag && runs) {
    return static_cast<uint8_t>(ErrorCode::ManualWhileTesting);
  }
  return 0;
}

void ScriptedController::Obey(const std::string& tag, const std::vector<uint8_t>& payload) {
  if (tag == kTemperatureControlTag) {
    const int target = Word(payload, 1);
    SetWord(kTargetOffset, static_cast<uint16_t>(target));
    if (following_ && payload.at(0) != 0) SetWord(kActualOffset, static_cast<uint16_t>(target));
    return;
  }
  if (!playing_) return;
  if (tag == kAbortTag) {
    EndPlay();
  } else if (tag == kStartTestTag) {
    PlayTest(payload);
  } else if (tag == kPreconditionTag) {
    Play(kSwitchMotorRun | kSwitchAutoReport,
         {{2, kMoveTicks, speedCounts_}, {3, payload.at(0) * 120, speedCounts_}});
  } else if (tag == kMoveToPositionTag) {
    Play(kSwitchStepperMoving, {{4, 3 * kMoveTicks}});
  } else if (tag == kUserAcknowledgeTag) {
    status_[kPromptOffset] = 0;
  }
}

void ScriptedController::PlayTest(const std::vector<uint8_t>& payload) {
  const int injection = payload.at(1);
  const int testCounts = Word(payload, 7);
  std::vector<PlayStep> steps;
  if (injection > 0) {
    steps.push_back({7, kMoveTicks, 0, Word(payload, 9)});
    steps.push_back({4, kMoveTicks});
    PlayStep lower{5, kMoveTicks};
    lower.waitsForUser = IsManualModel(modelCode_);
    steps.push_back(lower);
    steps.push_back({8, 2 * injection, speedCounts_});
    steps.push_back({6, kMoveTicks});
  }
  steps.push_back({11, kCoolTicks, 0, testCounts});
  steps.push_back({12, 2 * payload.at(5)});
  steps.push_back({13, 2 * payload.at(6) + 1, speedCounts_, testCounts});
  Play(kSwitchTestRunning | kSwitchAutoReport, std::move(steps));
}

void ScriptedController::Play(uint8_t switchByte, std::vector<PlayStep> steps) {
  play_ = std::move(steps);
  playStep_ = 0;
  entered_ = false;
  status_[kSwitchOffset] = switchByte;
  lastTick_ = platform::MonotonicTime();
}

void ScriptedController::EndPlay() {
  play_.clear();
  status_[kSwitchOffset] = 0;
  status_[kOperationOffset] = 0;
  status_[kPromptOffset] = 0;
  SetWord(kSpeedOffset, 0);
}

// --- The play, on the controller's thread -------------------------------------------------------

void ScriptedController::AdvanceIntCount(int64_t ticks) {
  lastTick_ += ticks * platform::Microseconds(kTick);
  if (!countHeld_) SetWord(0, static_cast<uint16_t>((status_[0] << 8 | status_[1]) + ticks));
}

void ScriptedController::CatchUp() {
  // While something is played its thread counts the ticks.
  if (!play_.empty()) return;
  AdvanceIntCount((platform::MonotonicTime() - lastTick_) / platform::Microseconds(kTick));
}

void ScriptedController::RunThread() {
  for (;;) {
    Tick tick;
    std::vector<std::string> frames;
    platform::Deadline next = platform::Deadline::Never();
    {
      const PlainGuard guard(lock_);
      if (stop_) return;
      tick = TickIfDue();
      frames = TakeDueReplies();
    }
    for (const auto& hook : tick.hooks) hook();
    {
      const PlainGuard guard(lock_);
      if (tick.reports && !silent_) frames.push_back(MakeStatus(0, ""));
      for (const std::string& frame : frames) port_.Reply(frame);
      next = NextDeadline();
    }
    changed_.Wait(next);
  }
}

platform::Deadline ScriptedController::NextDeadline() {
  platform::Deadline next = platform::Deadline::Never();
  if (!play_.empty()) next = platform::Deadline::At(lastTick_ + kTick);
  if (lateReplies_.empty()) return next;
  return platform::Deadline::Earliest(next, platform::Deadline::At(lateReplies_.begin()->first));
}

std::vector<std::string> ScriptedController::TakeDueReplies() {
  std::vector<std::string> due;
  while (!lateReplies_.empty() && lateReplies_.begin()->first <= platform::MonotonicTime()) {
    due.push_back(std::move(lateReplies_.begin()->second));
    lateReplies_.erase(lateReplies_.begin());
  }
  return due;
}

ScriptedController::Tick ScriptedController::TickIfDue() {
  if (play_.empty() || platform::MonotonicTime() < lastTick_ + kTick) return {};
  AdvanceIntCount(1);
  return PlayTick();
}

ScriptedController::Tick ScriptedController::PlayTick() {
  Tick tick;
  tick.reports = (status_[kSwitchOffset] & kSwitchAutoReport) != 0;
  if (status_[kPromptOffset] != 0) return tick;  // the user's turn
  if (!entered_) {
    entered_ = true;
  } else if (--ticksLeft_ > 0) {
    return tick;
  } else if (++playStep_ == play_.size()) {
    EndPlay();
    return tick;
  }
  EnterStep(tick);
  return tick;
}

void ScriptedController::EnterStep(Tick& tick) {
  const PlayStep& step = play_[playStep_];
  ticksLeft_ = step.ticks;
  status_[kOperationOffset] = step.operation;
  status_[kPromptOffset] = step.waitsForUser ? 1 : 0;
  SetWord(kSpeedOffset, step.speedCounts);
  if (step.temperatureCounts >= 0) {
    SetWord(kActualOffset, static_cast<uint16_t>(step.temperatureCounts));
    SetWord(kTargetOffset, static_cast<uint16_t>(step.temperatureCounts));
  }
  const auto [first, last] = hooks_.equal_range(step.operation);
  for (auto hook = first; hook != last; ++hook) tick.hooks.push_back(std::move(hook->second));
  hooks_.erase(first, last);
}

}  // namespace rvx
