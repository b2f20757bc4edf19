#include "host/cli/run_view.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

#include "host/cli/sample_table.h"
#include "host/cli/terminal.h"
#include "host/tray/number_text.h"

namespace torvell {

namespace {

// Positions shown around the running one, so that the block fits on a small terminal.
constexpr int kPositionsBefore = 4;
constexpr int kPositionsBehind = 8;
constexpr int kBarWidth = 12;  // columns; leaves room for the expected end in 80 columns
constexpr platform::Milliseconds kRefresh{500};
// Under virtual time the clock jumps from event to event, so a shorter interval would make the
// program do nothing but draw.
constexpr platform::Milliseconds kVirtualRefresh{20000};

std::string Results(const RunPosition& position) {
  std::string text;
  for (const rvx::Sample& sample : position.samples) {
    const std::string viscosity = ViscosityText(sample);
    text +=
        fmt::format("{}{} degC: {} mPa*s", text.empty() ? "" : ", ",
                    FixedNumber(TestTemperature(sample), 1), viscosity.empty() ? "-" : viscosity);
  }
  return text;
}

std::string PositionText(const RunPosition& position, bool current) {
  const char* state = position.finished ? "done" : current ? "running" : "waiting";
  return fmt::format("{} {:>2}  {:<16} {:<22} {:<7} {}", current ? ">" : " ",
                     position.plan.position + 1, Printable(position.plan.sampleId),
                     position.plan.label, state, Results(position));
}

std::string ReadingsLine(const RunState& run, const rvx::InstrumentReadings& readings) {
  const std::string& operation =
      run.statusText().empty() ? readings.operationText : run.statusText();
  return fmt::format("     {}, {} s {}; cell {} degC, speed {} rpm/1000",
                     operation.empty() ? "-" : operation, readings.seconds,
                     readings.countsDown ? "remaining" : "elapsed",
                     FixedNumber(readings.temperature, 2), FixedNumber(readings.speed, 5));
}

// Returns the time of day, with the date if it is another day.
std::string EndText(const platform::Date& end, const platform::Date& now) {
  const platform::Date::Fields at = end.fields();
  std::string time = fmt::format("{:02}:{:02}", at.hour, at.minute);
  const platform::Date::Fields today = now.fields();
  if (at.day == today.day && at.month == today.month) return time;
  return fmt::format("{:02}-{:02} {}", at.month, at.day, time);
}

std::string ProgressLine(const RunState& run, platform::Microseconds now,
                         const platform::Date& timeOfDay) {
  const double part = run.PartDone(now);
  const int filled = static_cast<int>(std::lround(part * kBarWidth));
  const std::string bar = std::string(static_cast<size_t>(filled), '#') +
                          std::string(static_cast<size_t>(kBarWidth - filled), '.');
  std::string progress = fmt::format("[{}] {:.0f} %, {} of {} samples", bar, part * 100.0,
                                     run.samples(), run.SamplesDue());
  if (run.finished()) return progress;
  if (run.paused()) return progress + ", paused";
  const long left = std::lround(run.SecondsLeft(now));
  return progress + fmt::format(", {} left, expected end {}", DurationText(left),
                                EndText(timeOfDay.PlusMilliseconds(left * 1000), timeOfDay));
}

std::string Clipped(const std::string& line, size_t width) {
  if (DisplayWidth(line) < width) return line;
  std::string clipped;
  for (const char c : line) {
    // Cut between whole characters only.
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80 && DisplayWidth(clipped) + 1 >= width) break;
    clipped += c;
  }
  return clipped;
}

}  // namespace

std::vector<std::string> DescribeRun(const RunState& run, const rvx::InstrumentReadings& readings,
                                     platform::Microseconds now, const platform::Date& timeOfDay) {
  std::vector<std::string> lines;
  lines.push_back(
      fmt::format("{}: tray of {} positions", run.entry().Title(), run.positions().size()));
  const RunPosition* current = run.Current();
  int middle = 0;
  for (size_t i = 0; i < run.positions().size(); ++i) {
    if (&run.positions()[i] == current || run.positions()[i].finished) middle = static_cast<int>(i);
  }
  for (int i = middle - kPositionsBefore; i <= middle + kPositionsBehind; ++i) {
    if (i < 0 || i >= static_cast<int>(run.positions().size())) continue;
    const RunPosition& position = run.positions()[static_cast<size_t>(i)];
    lines.push_back(PositionText(position, &position == current));
    if (&position == current) lines.push_back(ReadingsLine(run, readings));
  }
  lines.push_back(ProgressLine(run, now, timeOfDay));
  return lines;
}

RunView::RunView(Output& output, Mode mode)
    : output_(output), mode_(mode), lock_("run view", platform::kLeafRank) {}

std::optional<platform::Milliseconds> RunView::RefreshInterval() const {
  if (mode_ != Mode::Live) return std::nullopt;
  if (platform::CurrentTimeBase() == platform::TimeBaseKind::Virtual) return kVirtualRefresh;
  return kRefresh * platform::CurrentPace();
}

void RunView::Show(const RunEvent& event, const std::vector<RunState>& runs) {
  if (mode_ == Mode::Lines) ShowLine(event, runs);
}

void RunView::ShowLine(const RunEvent& event, const std::vector<RunState>& runs) {
  const RunState& run = runs[event.run];
  std::string what;
  switch (event.kind) {
    case RunEvent::Kind::TrayStarted:
      what = fmt::format("tray started, {} samples due, expected time {}", run.SamplesDue(),
                         DurationText(std::lround(run.TotalSeconds())));
      break;
    case RunEvent::Kind::Status:
      what = run.Current() == nullptr
                 ? event.text
                 : fmt::format("position {}: {}", event.position + 1, event.text);
      break;
    case RunEvent::Kind::Sample: {
      const std::string viscosity = ViscosityText(*event.sample);
      what = fmt::format("position {} ({}): {} degC, {} mPa*s", event.position + 1,
                         event.sample->sampleId, FixedNumber(TestTemperature(*event.sample), 1),
                         viscosity.empty() ? "-" : viscosity);
      break;
    }
    case RunEvent::Kind::PauseChanged:
      what = event.paused ? "paused" : "resumed";
      break;
    case RunEvent::Kind::TrayFinished:
      what = fmt::format("tray ended, {} of {} samples", run.samples(), run.SamplesDue());
      break;
    case RunEvent::Kind::SampleStarted:
      what = fmt::format("position {} ({}): started", event.position + 1,
                         run.Current()->plan.sampleId);
      break;
    case RunEvent::Kind::SampleFinished:
    case RunEvent::Kind::Error:  // RunController prints errors
      return;
  }
  const std::string port = runs.size() > 1 ? run.entry().identity.portName + " " : "";
  output_.Progress(fmt::format("{} {}{}", TimeText(platform::LocalNow()), port, what));
}

void RunView::Refresh(const std::vector<RunState>& runs) {
  if (mode_ != Mode::Live) return;
  const size_t width = TerminalWidth();
  std::string block;
  size_t count = 0;
  for (const RunState& run : runs) {
    for (const std::string& line : DescribeRun(run, run.entry().scripting->GetReadings(),
                                               platform::MonotonicTime(), platform::LocalNow())) {
      block += Clipped(line, width) + "\n";
      ++count;
    }
  }
  const platform::PlainGuard guard(lock_);
  if (aside_ || (linesDrawn_ == count && block == blockDrawn_)) return;
  // Written under the lock, so that no question appears inside the block. A terminal takes it at
  // once, so the lock is not held for long.
  EraseBlock();
  std::fwrite(block.data(), 1, block.size(), stderr);
  linesDrawn_ = count;
  blockDrawn_ = std::move(block);
}

void RunView::Message(const std::string& text) {
  {
    const platform::PlainGuard guard(lock_);
    EraseBlock();
  }
  output_.Notice(text);
}

void RunView::StepAside(bool aside) {
  const platform::PlainGuard guard(lock_);
  aside_ = aside;
  if (aside) EraseBlock();
}

void RunView::Finish(const std::vector<RunState>& runs) {
  Refresh(runs);
  const platform::PlainGuard guard(lock_);
  linesDrawn_ = 0;
}

void RunView::EraseBlock() {
  if (linesDrawn_ == 0) return;
  // Moves to the block's first line and erases everything below.
  const std::string erase = fmt::format("\x1b[{}F\x1b[0J", linesDrawn_);
  std::fwrite(erase.data(), 1, erase.size(), stderr);
  linesDrawn_ = 0;
}

}  // namespace torvell
