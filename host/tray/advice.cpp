#include "host/tray/advice.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace torvell {
namespace {

using rvx::MessageCode;

struct Entry {
  MessageCode code;
  MessageAdvice advice;                 // as the window shows it
  const char* onCommandLine = nullptr;  // the remedy on the command line, if it differs
};

constexpr char kProtocolCause[] =
    "A command was damaged on its way, or the firmware of the instrument does not know it.";
constexpr char kNotCarriedOut[] = "The instrument did not carry the command out.";
constexpr char kTryAgainThenService[] =
    "Try again. If it comes back, check cable and firmware version, and tell the service.";
constexpr char kSampleEnded[] =
    "The sample was ended and the instrument told to stop. Tests that were finished are stored; "
    "the tray goes on with the next position.";
constexpr char kOperationEnded[] =
    "The operation was ended and the instrument told to stop. No result depends on it.";
constexpr char kNoAnswerCause[] =
    "A step took longer than the instrument may need, or it did not answer: power, cable, or an "
    "axis that is blocked.";
constexpr char kInUseCause[] =
    "The instrument was carrying out something else, such as a service procedure or a test that "
    "was started by hand.";
constexpr char kNotStarted[] = "It was not started; everything else goes on.";
constexpr char kComputerCause[] = "The computer has run out of memory or of threads.";
constexpr char kComputerRemedy[] =
    "Close other programs. If it comes back, start TORVELL again when no tray runs.";
constexpr char kHomeByCommand[] =
    "Move the axes to their home positions (torvell service jog), then set the home flag (torvell "
    "service home).";
constexpr char kCheckByCommand[] =
    "Run an oil of known viscosity with Verify Known Viscosity and compare. How often this is "
    "asked for is the setting check-standard-interval (torvell settings show).";
constexpr char kCheckRemedy[] =
    "Run an oil of known viscosity with Verify Known Viscosity and compare. How often this is "
    "asked for stands in Instrument Settings.";

constexpr Entry kEntries[] = {
    {MessageCode::ActionRunning,
     {"It was started a second time before it had ended.", kNotStarted,
      "Wait until it has ended, or close its screen."},
     "Wait until it has ended."},
    {MessageCode::ComputerError, {kComputerCause, kNotStarted, kComputerRemedy}},
    {MessageCode::InvalidContext,
     {"It was asked to run at a position that the tray does not have.", kNotStarted,
      "Start it from the tray or the menu again. If it comes back, tell the service."},
     "Give a position of the tray. If it comes back, tell the service."},
    {MessageCode::NoThread, {kComputerCause, "What was to run was not started.", kComputerRemedy}},
    {MessageCode::NotReady,
     {"The instrument reports that it is not ready: its axes are not initialised, its self test "
      "failed, or a switch of a service screen is still on.",
      "The tray was paused before the next step. What is stored stays.",
      "See the machine status below the list of instruments, put that right, then resume the "
      "tray."},
     "See the machine status (torvell status), put that right, then resume the tray."},
    {MessageCode::InitializeSteppers,
     {"The instrument was switched off and on, or its axes have lost their home position.",
      "Nothing moves, and no tray starts, until the axes are initialised.",
      "Open RVX Stepper Motor Service, move the axes to their home positions and press Set Home "
      "Flag."},
     kHomeByCommand},
    {MessageCode::SampleTimeout,
     {kNoAnswerCause, kSampleEnded,
      "Check power and cable, and that nothing blocks tube, table and trolley. Then run the sample "
      "again."}},
    {MessageCode::SampleInUse,
     {kInUseCause, kSampleEnded,
      "Wait until the instrument is idle, close service screens, then run the sample again."},
     "Wait until the instrument is idle (torvell status), then run the sample again."},
    {MessageCode::ActionTimeout,
     {kNoAnswerCause, kOperationEnded,
      "Check power and cable, and that nothing blocks tube, table and trolley. Then try again."}},
    {MessageCode::ActionInUse,
     {kInUseCause, kOperationEnded,
      "Wait until the instrument is idle, close service screens, then try again."},
     "Wait until the instrument is idle (torvell status), then try again."},
    {MessageCode::NotResponding,
     {"The instrument is switched off, its cable is loose, or another program uses the port.",
      "A running tray is paused; the instrument is asked again and again.",
      "Check power and cable. When values come in again, resume the tray."}},
    {MessageCode::TrayInUse,
     {"A tray runs on this instrument already.", "The second start was refused; the run goes on.",
      "Wait for the end of the run, or abort it."}},
    {MessageCode::CellTooWarm,
     {"The chiller is off, set too high or not yet cold, or the cell was switched on just now.",
      "The tray was not started, and nothing was moved.",
      "Wait until the cell is below 10 °C, then start again."}},
    {MessageCode::CheckStandardDue,
     {"The samples that are allowed between two checks have been run.", "The tray goes on.",
      kCheckRemedy},
     kCheckByCommand},
    {MessageCode::CheckStandardNeverRun,
     {"The samples that are allowed between two checks have been run.", "The tray goes on.",
      kCheckRemedy},
     kCheckByCommand},
    {MessageCode::InvalidErrorCode,
     {"The firmware of the instrument is newer than this program, or the line is disturbed.",
      "The code was noted; nothing else was done.", kTryAgainThenService}},
    {MessageCode::InvalidCommand, {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {MessageCode::InvalidManualCommand, {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {MessageCode::InvalidStepperCommand, {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {MessageCode::InvalidPacket,
     {"A frame was damaged on the line.", kNotCarriedOut,
      "Check the cable and its plugs, and keep it away from motors. If it comes back, tell the "
      "service."}},
    {MessageCode::ManualDuringTest,
     {"A switch or an axis was moved by hand during a test.", kNotCarriedOut,
      "Wait for the end of the test, or abort it first."}},
    {MessageCode::CoolingUnderControl,
     {"The cooling was switched by hand while the instrument controls the temperature itself.",
      kNotCarriedOut, "Switch the temperature control off first."}},
    {MessageCode::SteppersActive,
     {"An axis was still moving.", kNotCarriedOut, "Wait until it stands, then move again."}},
    {MessageCode::SettingsNotStored,
     {"The memory of the instrument did not take the settings.",
      "The settings are kept in TORVELL's own archive as they were entered.",
      "Store the settings again. If it comes back, tell the service."}},
    {MessageCode::SettingsNotLoaded,
     {"The memory of the instrument lost its settings, for example by a loss of power.",
      "Nothing was changed by TORVELL.",
      "Switch the instrument off and on. If it comes back, tell the service before you measure."}},
    {MessageCode::SelfTestFailed,
     {"A supply voltage, the converter or a memory of the instrument is out of its limits.",
      "The instrument reports that it is not ready; no tray starts.",
      "Open RVX Monitor for the results of the self test, and tell the service what it shows."},
     "See the results of the self test (torvell service selftest), and tell the service what it "
     "shows."},
    {MessageCode::NotIdle,
     {kInUseCause, kNotCarriedOut, "Wait until the instrument is idle, then try again."}},
    {MessageCode::InvalidTrayPosition,
     {"The position does not exist on this instrument.", kNotCarriedOut,
      "Choose a position of the tray. If it comes back, tell the service."}},
    {MessageCode::SteppersNotHomed,
     {"The axes have no home position since the instrument was switched on.", kNotCarriedOut,
      "Open RVX Stepper Motor Service, move the axes to their home positions and press Set Home "
      "Flag."},
     kHomeByCommand},
};

// Where to look after a refusal; null if there is no place that helps.
struct Hint {
  rvx::ScriptingProblem::Code code;
  const char* onCommandLine;
  const char* inWindow;
};

using Code = rvx::ScriptingProblem::Code;
constexpr Hint kHints[] = {
    {Code::NoCellConstants, "See \"torvell constants show\".",
     "See Current Cell Calibration Constants in the menu Configuration."},
    {Code::ConstantsNotStored, "Look at \"torvell constants show\".",
     "Look at Current Cell Calibration Constants in the menu Configuration."},
    {Code::UnknownSetting, "See \"torvell settings show\" for the keys.", nullptr},
    {Code::StandardsLacking, "See \"torvell standards conform\".", nullptr},
    {Code::ChoiceNotConforming, "See \"torvell standards conform\".", nullptr},
};

}  // namespace

std::optional<MessageAdvice> AdviceFor(rvx::MessageCode code, Reader reader) {
  const auto* entry = std::find_if(std::begin(kEntries), std::end(kEntries),
                                   [code](const Entry& each) { return each.code == code; });
  if (entry == std::end(kEntries)) return std::nullopt;
  MessageAdvice advice = entry->advice;
  if (reader == Reader::CommandLine && entry->onCommandLine != nullptr) {
    advice.remedy = entry->onCommandLine;
  }
  return advice;
}

std::string AdviceText(rvx::MessageCode code, Reader reader) {
  const std::optional<MessageAdvice> advice = AdviceFor(code, reader);
  if (!advice) return {};
  return fmt::format("Likely cause: {}\nWhat was done: {}\nWhat to do: {}", advice->cause,
                     advice->done, advice->remedy);
}

std::string ProblemText(const rvx::ScriptingProblem& problem, Reader reader) {
  std::string text = problem.Sentences();
  for (const Hint& hint : kHints) {
    if (hint.code != problem.code) continue;
    const char* where = reader == Reader::CommandLine ? hint.onCommandLine : hint.inWindow;
    if (where != nullptr) text += fmt::format(" {}", where);
  }
  return text;
}

}  // namespace torvell
