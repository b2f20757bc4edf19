#include "tests/simulation/observer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "module/resources/string_table.h"
#include "tests/simulation/expected_result.h"
#include "tests/support/unseen_guard.h"

namespace rvx::soak {

using namespace std::chrono_literals;

namespace {

constexpr double kSameSpeed = 1e-9;  // rpm/1000
constexpr int64_t kSecond = 1'000'000;
constexpr size_t kKeptStarts = 4;
constexpr int kMaxAnswers = 2;
constexpr uint8_t kBusySwitches = 0x68;  // a move, a test, a motor run
constexpr int kMaxSends = 102;
constexpr int64_t kReplyTimeout = 2 * kSecond;
// Silence after which a report is due, microseconds, with room for threads that are held up.
constexpr int64_t kReportDue = 150 * kSecond;
// Longest time from making a record to storing it, microseconds: a watcher's call, and threads that
// are held up.
constexpr int64_t kStoreDue = 150 * kSecond;
// Longest time until an abort is sent, microseconds: on a bad line each command in the queue before
// it may time out.
constexpr int64_t kAbortDue = 150 * kSecond;

// The index of the test to which a record belongs. The tests of a sample differ in their rotor ON
// times.
size_t TestOf(const Sample& sample, const PlannedSample& plan) {
  size_t index = 0;
  while (index < plan.tests.size() &&
         (sample.constants[5] != plan.tests[index].temperature ||
          sample.constants[6] != static_cast<double>(plan.tests[index].rotorTime))) {
    ++index;
  }
  return index;
}

// True if the record has the right code. A message that is an unchanged text of the string table
// must have that text's code. Some error bytes have no text, and so no code.
bool HasItsCode(const ActionErrorRecord& error) {
  static const std::map<std::string, int32_t> kTexts = [] {
    std::map<std::string, int32_t> texts;
    for (int32_t id = 300; id <= 367; ++id) texts.emplace(LoadResourceString(id), id);
    return texts;
  }();
  const auto found = kTexts.find(error.message);
  return error.message.empty() || found == kTexts.end() ||
         MessageCodeOf(found->second) == error.code;
}

int64_t Now() { return platform::MonotonicTime().count(); }

}  // namespace

void Observer::Note(std::string_view text) {
  const UnseenScope scope;  // the page needs no lock, as one task runs at a time
  page_.Note(Now(), text);
}

void Observer::Break(std::string_view what) { page_.Break(Now(), what); }

// --- The line -----------------------------------------------------------------------------------

void Observer::FrameWritten(std::string_view frame) {
  const int64_t now = Now();
  if (frame.substr(0, 5) != "/0QST") Note(fmt::format("> {}", frame.substr(0, frame.size() - 1)));
  const std::string fault = WhyNoRequest(frame);
  if (!fault.empty()) Break(fmt::format("a frame that is none is sent ({}): {}", fault, frame));
  const UnseenGuard guard(lock_);
  CheckSpacing(now);
  CheckCabDue(now);
  lastWrite_ = now;
  const std::string_view command = frame.substr(2, 3);
  const std::string_view payload = frame.substr(5, frame.size() - 6);
  if (command == "CST" || command == "CPM" || command == "CMP") {
    runOpen_ = true;
    runSeen_ = false;
  }
  if (command == "CAB") {
    runOpen_ = false;
    cabDue_ = -1;
    ++openAborts_;
  } else if (command == "CSN") {
    CountOwnCommand(payload);
  } else if (command == "CST") {
    starts_.push_back(
        {FromHex(payload).value_or(std::vector<uint8_t>()), {}, false, openAborts_ > 0});
    if (starts_.size() > kKeptStarts) starts_.pop_front();
  }
}

// The module must wait with its next frame for any reply or for the time-out. The reply counts when
// the module has handled it, which may be long after its arrival, or just before the write that it
// seems to answer, so one extra frame is allowed.
void Observer::CheckSpacing(int64_t now) {
  if (lastWrite_ < 0 || now - lastWrite_ >= kReplyTimeout) return;
  if (--answers_ >= 0) return;
  answers_ = 0;
  if (frameUnderWay_) return;
  Break(fmt::format("a frame is sent {} us behind one that is not answered", now - lastWrite_));
}

void Observer::CheckCabDue(int64_t now) {
  if (cabDue_ >= 0 && now > cabDue_) Break("a run was ended and no CAB has gone out");
}

void Observer::BytesDelivered(std::span<const uint8_t> bytes) {
  const UnseenGuard guard(lock_);
  for (const uint8_t c : bytes) {
    const std::optional<SeenReply> reply = reader_.Feed(c);
    if (!reply) continue;
    const int64_t now = Now();
    CheckResponding(now);
    lastFrame_ = now;
    outageReported_ = false;
    frameUnderWay_ = true;
    outageExcused_ = false;
    if (!reply->IsStatus()) continue;
    const SeenStatus status(reply->data);
    if (status.tag() == "AB" && openAborts_ > 0) --openAborts_;
    // Without the counts, which change with every frame.
    const std::string line =
        fmt::format("< {} op {} sw {:02X} ms {:02X} error {:02X}", status.tag(), status.operation(),
                    status.switches(), status.machine(), status.error());
    if (line != lastNote_) Note(line);
    lastNote_ = line;
    FollowRun(status);
    std::array<uint8_t, 4> supplies{};
    std::copy_n(status.bytes.begin() + 6, 4, supplies.begin());
    if (supplies_ != supplies && supplies_ != std::array<uint8_t, 4>{}) suppliesSteady_ = false;
    supplies_ = supplies;
    if (!starts_.empty()) starts_.back().frames.push_back(status);
  }
}

// A run that has ended by itself needs no CAB.
void Observer::FollowRun(const SeenStatus& status) {
  const bool isBusy = (status.switches() & kBusySwitches) != 0;
  if (!isBusy && runSeen_) runOpen_ = false;
  runSeen_ = isBusy;
}

void Observer::BytesTaken() {
  const UnseenGuard guard(lock_);
  if (!std::exchange(frameUnderWay_, false)) return;
  answers_ = std::min(answers_ + 1, kMaxAnswers);
  if (!outageExcused_) outageReported_ = false;
}

// An unreported silence would leave a laboratory waiting for a dead instrument.
void Observer::CheckResponding(int64_t now) {
  if (lastWrite_ < 0 || outageReported_ || now - lastFrame_ < kReportDue) return;
  Break(fmt::format("{} s of silence were not reported", (now - lastFrame_) / kSecond));
}

platform::Microseconds Observer::lastDelivered() {
  const UnseenGuard guard(lock_);
  return platform::Microseconds(lastFrame_);
}

// --- The host -----------------------------------------------------------------------------------

void Observer::SampleMade(const std::string& sampleId, const PlannedSample& plan) {
  const UnseenGuard guard(lock_);
  samples_[sampleId] = std::make_shared<KnownSample>(KnownSample{plan});
}

void Observer::SampleRenamed(const std::string& oldId, const std::string& newId) {
  const UnseenGuard guard(lock_);
  const auto found = samples_.find(oldId);
  if (found != samples_.end()) samples_[newId] = found->second;
}

void Observer::TrayEdited() {
  const UnseenGuard guard(lock_);
  ++edits_;
}

int Observer::edits() {
  const UnseenGuard guard(lock_);
  return edits_;
}

void Observer::StoreBegun(const Sample& sample) {
  Note(fmt::format("store {} position {} speed {} temperature {:.3f}", sample.sampleId,
                   sample.position, sample.speed, sample.averageTemperature));
  PlannedSample plan;
  size_t index = 0;
  {
    const UnseenGuard guard(lock_);
    const auto found = samples_.find(sample.sampleId);
    Require(found != samples_.end(), "a sample of nobody is stored: " + sample.sampleId);
    KnownSample& known = *found->second;
    plan = known.plan;
    index = TestOf(sample, plan);
    Require(index < plan.tests.size(), "a sample is stored of a test that nobody asked for");
    // The tests are stored in order. A position that was stopped begins with its first test again.
    if (!known.isUnsure) {
      Require(known.stores < plan.tests.size(), "a finished sample is stored again");
      Require(index == known.stores || index == 0, "tests are stored out of their order");
    }
    known.isUnsure = false;
    known.stores = index + 1;
  }
  CheckIdentity(sample, plan);
  CheckMeasured(sample, plan.tests[index]);
  CheckViscosity(sample);
  CheckTime(sample);
}

// A sample is stored soon after its time stamp is taken. If the clock jumps in between, nothing can
// be checked.
void Observer::CheckTime(const Sample& sample) {
  const UnseenGuard guard(lock_);
  if (Now() - lastJump_ < kStoreDue) return;
  const int64_t age = platform::LocalNow().ToMilliseconds() - sample.timestamp.ToMilliseconds();
  Require(age >= 0 && age * 1000 < kStoreDue, "a sample does not bear the time of day");
}

void Observer::ClockJumps() {
  const UnseenGuard guard(lock_);
  lastJump_ = Now();
}

void Observer::WatcherThrows() {
  const UnseenGuard guard(lock_);
  ++watcherThrows_;
}

void Observer::CheckIdentity(const Sample& sample, const PlannedSample& plan) {
  Require(sample.position == plan.position + 1, "a sample is stored for another position");
  Require(sample.tray == 1 && sample.valid == 1 && sample.kind == 1, "a sample's fixed fields");
  Require(
      sample.operatorName == "tester" && sample.typeName == "RVX" && sample.knownViscosity == -2.0,
      "a sample's operator, type or mark");
  Require(sample.constants[4] == (plan.verifies ? kKnownViscosity : 0.0),
          "a sample has a wrong known viscosity");
}

// The latest started test with the sample's position and rotor ON time for which nothing was
// stored.
Observer::StartedTest* Observer::FindStart(const Sample& sample) {
  for (auto start = starts_.rbegin(); start != starts_.rend(); ++start) {
    if (!start->isStored && start->payload.size() == 15 &&
        start->payload[0] == sample.position - 1 && start->payload[6] == sample.constants[6]) {
      return &*start;
    }
  }
  return nullptr;
}

// Compares the record with the status frames that reached the module since the test was started.
void Observer::CheckMeasured(const Sample& sample, const PlannedTest& test) {
  // A simulating module has no line.
  if (scenario_.controller == ControllerKind::SimulatedInside) return;
  const UnseenGuard guard(lock_);
  StartedTest* start = FindStart(sample);
  Require(start != nullptr, "a sample is stored and no test was started for it");
  start->isStored = true;
  const ExpectedResult expected =
      ExpectResult(start->frames, test.rotorTime, scenario_.modelCode, suppliesSteady_);
  Require(expected.hasRun, "a sample is stored and no readings came for it");
  if (std::abs(sample.speed - expected.speed) > kSameSpeed) {
    Break(fmt::format("stored speed {} where the frames say {}", sample.speed, expected.speed));
  }
  if (suppliesSteady_ && std::abs(sample.averageTemperature - expected.temperature) > 1e-6) {
    Break(fmt::format("stored temperature {} where the frames say {}", sample.averageTemperature,
                      expected.temperature));
  }
  if (scenario_.rates.TouchesLine()) return;
  // Two runs at once end each other's tests, so their results need not be complete. Nor can the
  // module tell to which test a frame belongs that comes after the CAB which was to end the test
  // before. It stores what has come when the instrument is idle.
  Require(expected.isWhole || ownRuns_ > 0 || start->abortsOpen,
          "a run that was cut short is stored as a result");
  if (!expected.isWhole) return;
  // On a perfect line the record must also agree with the instrument itself.
  if (std::abs(sample.averageTemperature - test.temperature) > kSettled) {
    Break(fmt::format("stored temperature {} for a test at {}", sample.averageTemperature,
                      test.temperature));
  }
  const double speed = scenario_.controller == ControllerKind::Scripted
                           ? SpeedCountsOf(sample.position - 1) * 6e-5
                           : 4000 * 6e-5;
  if (std::abs(sample.speed - speed) > 1e-5) {
    Break(fmt::format("stored speed {} where the instrument turned at {}", sample.speed, speed));
  }
}

void Observer::CheckViscosity(const Sample& sample) {
  // Damaged supply readings give a temperature that is not a number, and so no slot.
  if (std::isnan(sample.averageTemperature)) return;
  const size_t slot = SlotOf(sample.averageTemperature);
  const double b0 = kB0 + static_cast<double>(slot);
  Require(sample.constants[0] == b0 && sample.constants[1] == kB1 && sample.constants[2] == kB2,
          "a sample has the constants of another temperature");
  const double viscosity = sample.speed == 0.0 ? 0.0 : b0 / sample.speed + kB1 + kB2 * sample.speed;
  Require(std::abs(sample.viscosity - viscosity) < 1e-9 * (1.0 + std::abs(viscosity)),
          "a sample's viscosity does not follow from its record");
}

void Observer::StoreEnded(const Sample& sample, bool thrown) {
  Note(fmt::format("{} {}", thrown ? "archive failed for" : "stored", sample.sampleId));
  const UnseenGuard guard(lock_);
  if (thrown) {
    ++thrown_;
  } else {
    ++stored_;
  }
}

void Observer::ErrorReported(const ActionErrorRecord& error) {
  Note(fmt::format("error: {} (kind {}, sample {})", error.message, error.kind, error.sampleId));
  platform::OpenScheduleWindow();
  const UnseenGuard guard(lock_);
  if (error.message.starts_with("The host failed when it was told of ")) {
    ++watcherErrors_;
    return;
  }
  ++errors_;
  Require(HasItsCode(error), "a message is reported without its code: " + error.message);
  if (error.message.find(kArchiveFailure) != std::string::npos) ++archiveErrors_;
  if (error.message == "Instrument not responding.") {
    // A simulating module shows no frames between two outages.
    const bool sees = scenario_.controller != ControllerKind::SimulatedInside;
    // A frame that the module is just receiving may fall between the two reports, which are then
    // two outages.
    const bool excused = frameUnderWay_ && !outageExcused_;
    Require(!outageReported_ || excused || !sees, "an outage is reported twice");
    outageExcused_ = outageReported_;
    outageReported_ = true;
  }
}

void Observer::OwnRunStarted() {
  const UnseenGuard guard(lock_);
  ++ownRuns_;
}

int Observer::errors() {
  const UnseenGuard guard(lock_);
  return errors_;
}

void Observer::CheckFinishedSample(const std::string& sampleId, int edits, int errors) {
  const UnseenGuard guard(lock_);
  if (edits_ != edits || errors_ > errors) return;
  const auto found = samples_.find(sampleId);
  if (found == samples_.end()) return;
  const size_t stores = found->second->stores;
  const size_t tests = found->second->plan.tests.size();
  if (stores == tests) return;
  Break(fmt::format("{} is told as finished with {} of {} tests stored, and nothing reported",
                    sampleId, stores, tests));
}

// --- The runs of a tray -------------------------------------------------------------------------

TrayRecord* Observer::MakeWatcher() {
  const UnseenGuard guard(lock_);
  records_.push_back(std::make_unique<TrayRecord>(*this, static_cast<int>(records_.size())));
  return records_.back().get();
}

bool Observer::IsRunOpen() {
  const UnseenGuard guard(lock_);
  return runOpen_;
}

void Observer::RunEnded() {
  // A damaged frame may have shown an idle instrument, and then no CAB is due.
  if (scenario_.rates.TouchesLine()) return;
  const UnseenGuard guard(lock_);
  if (runOpen_ && cabDue_ < 0) cabDue_ = Now() + kAbortDue;
}

// --- Commands of the operators ------------------------------------------------------------------

int Observer::CommandMade(int who) {
  const UnseenGuard guard(lock_);
  commands_.push_back({who});
  return static_cast<int>(commands_.size()) - 1;
}

// Commands are first sent in the order in which their operator queued them. Repetitions may come
// later.
void Observer::CountOwnCommand(std::string_view payload) {
  const auto text = FromHex(payload).value_or(std::vector<uint8_t>());
  const int number = std::atoi(std::string(text.begin() + 1, text.end()).c_str());
  OwnCommand& command = commands_.at(static_cast<size_t>(number));
  if (++command.sends > kMaxSends) Break("a command is sent for the 103rd time");
  if (command.sends > 1) return;
  int& last = lastCommand_.at(static_cast<size_t>(command.who));
  Require(number > last, "commands overtake each other");
  last = number;
}

void Observer::ClientCalled(int number, const std::string& tag) {
  Note(fmt::format("command {} answered \"{}\"", number, tag));
  const UnseenGuard guard(lock_);
  OwnCommand& command = commands_.at(static_cast<size_t>(number));
  Require(!command.gone, "a client is called behind its end");
  Require(++command.calls == 1, "a client is called twice");
}

void Observer::ClientGone(int number) {
  const UnseenGuard guard(lock_);
  commands_.at(static_cast<size_t>(number)).gone = true;
}

// --- The life of an instrument ------------------------------------------------------------------

void Observer::InstrumentOpened() {
  const UnseenGuard guard(lock_);
  lastWrite_ = -1;
  answers_ = 0;
  frameUnderWay_ = false;
  reader_ = ReplyWatcher();
  runOpen_ = false;
  lastFrame_ = Now();
  outageReported_ = false;
  cabDue_ = -1;
}

void Observer::InstrumentClosed(bool lineWasAlive) {
  const UnseenGuard guard(lock_);
  if (lineWasAlive) Require(cabDue_ < 0, "the instrument was closed and no CAB has gone out");
  if (thrown_ != archiveErrors_) {
    Break(fmt::format("{} failures of the archive, {} reported", thrown_, archiveErrors_));
  }
  Require(watcherThrows_ == watcherErrors_, "a watcher failed and that was not reported once");
  for (const auto& record : records_) {
    Require(!record->isOpen(), "a tray that was started has no TrayFinished");
  }
}

void Observer::TrayReloaded() {
  const UnseenGuard guard(lock_);
  for (const auto& [name, sample] : samples_) sample->isUnsure = true;
}

}  // namespace rvx::soak
