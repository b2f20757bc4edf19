#include "host/tray/message_advice.h"

#include <fmt/format.h>

#include <string_view>

namespace torvell {
namespace {

struct Entry {
  // The message as the module has it; a "*" stands for what is filled in.
  std::string_view message;
  MessageAdvice advice;
};

constexpr char kProtocolCause[] =
    "A command was damaged on its way, or the firmware of the instrument does not know it.";
constexpr char kNotCarriedOut[] = "The instrument did not carry the command out.";
constexpr char kTryAgainThenService[] =
    "Try again. If it comes back, check cable and firmware version, and tell the service.";
constexpr char kSampleEnded[] =
    "The sample was ended and the instrument told to stop. Tests that were finished are stored; "
    "the "
    "tray goes on with the next position.";
constexpr char kOperationEnded[] =
    "The operation was ended and the instrument told to stop. No result depends on it.";
constexpr char kNoAnswerCause[] =
    "A step took longer than the instrument may need, or it did not answer: power, cable, or an "
    "axis "
    "that is blocked.";
constexpr char kInUseCause[] =
    "The instrument was carrying out something else, such as a service procedure or a test that "
    "was "
    "started by hand.";
constexpr char kNotStarted[] = "It was not started; everything else goes on.";
constexpr char kComputerCause[] = "The computer has run out of memory or of threads.";
constexpr char kComputerRemedy[] =
    "Close other programs. If it comes back, start TORVELL again when no tray runs.";
constexpr char kCheckRemedy[] =
    "Run an oil of known viscosity with Verify Known Viscosity and compare. How often this is "
    "asked "
    "for stands in Instrument Settings.";

constexpr Entry kEntries[] = {
    {"'*' is running.",
     {"It was started a second time before it had ended.", kNotStarted,
      "Wait until it has ended, or close its screen."}},
    {"Could not start '*' due to computer error.", {kComputerCause, kNotStarted, kComputerRemedy}},
    {"Could not start '*' due to invalid context.",
     {"It was asked to run at a position that the tray does not have.", kNotStarted,
      "Start it from the tray or the menu again. If it comes back, tell the service."}},
    {"Could not start thread due to computer error.",
     {kComputerCause, "What was to run was not started.", kComputerRemedy}},
    {"RVX is not ready. Tray will be paused.",
     {"The instrument reports that it is not ready: its axes are not initialised, its self test "
      "failed, or a switch of a service screen is still on.",
      "The tray was paused before the next step. What is stored stays.",
      "See the machine status below the list of instruments, put that right, then resume the "
      "tray."}},
    {"Initialize stepper motors using the RVX Stepper Motor Service before continuing.",
     {"The instrument was switched off and on, or its axes have lost their home position.",
      "Nothing moves, and no tray starts, until the axes are initialised.",
      "Open RVX Stepper Motor Service, move the axes to their home positions and press Set Home "
      "Flag."}},
    {"Sample Abort : RVX Response Timeout.",
     {kNoAnswerCause, kSampleEnded,
      "Check power and cable, and that nothing blocks tube, table and trolley. Then run the sample "
      "again."}},
    {"Sample Abort : RVX already in use.",
     {kInUseCause, kSampleEnded,
      "Wait until the instrument is idle, close service screens, then run the sample again."}},
    {"Action Abort : RVX Response Timeout.",
     {kNoAnswerCause, kOperationEnded,
      "Check power and cable, and that nothing blocks tube, table and trolley. Then try again."}},
    {"Action Abort : RVX already in use.",
     {kInUseCause, kOperationEnded,
      "Wait until the instrument is idle, close service screens, then try again."}},
    {"Instrument not responding.",
     {"The instrument is switched off, its cable is loose, or another program uses the port.",
      "A running tray is paused; the instrument is asked again and again.",
      "Check power and cable. When values come in again, resume the tray."}},
    {"Tray is being used - *",
     {"A tray runs on this instrument already.", "The second start was refused; the run goes on.",
      "Wait for the end of the run, or abort it."}},
    {"RVX cell is too warm. *",
     {"The chiller is off, set too high or not yet cold, or the cell was switched on just now.",
      "The tray was not started, and nothing was moved.",
      "Wait until the cell is below 10 °C, then start again."}},
    {"A check standard is due (*",
     {"The samples that are allowed between two checks have been run.", "The tray goes on.",
      kCheckRemedy}},
    {"An invalid error code was received from the instrument (0x*",
     {"The firmware of the instrument is newer than this program, or the line is disturbed.",
      "The code was noted; nothing else was done.", kTryAgainThenService}},
    {"An invalid command was received by the instrument.",
     {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {"An invalid manual command was received by the instrument.",
     {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {"An invalid manual stepper motor command was received by the instrument.",
     {kProtocolCause, kNotCarriedOut, kTryAgainThenService}},
    {"The instrument received an invalid packet.",
     {"A frame was damaged on the line.", kNotCarriedOut,
      "Check the cable and its plugs, and keep it away from motors. If it comes back, tell the "
      "service."}},
    {"A manual operation may not be performed while running a test.",
     {"A switch or an axis was moved by hand during a test.", kNotCarriedOut,
      "Wait for the end of the test, or abort it first."}},
    {"Thermoelectrics may not be manipulated while temperature control is enabled.",
     {"The cooling was switched by hand while the instrument controls the temperature itself.",
      kNotCarriedOut, "Switch the temperature control off first."}},
    {"The stepper motors are already active. The manual stepper command will be ignored.",
     {"An axis was still moving.", kNotCarriedOut, "Wait until it stands, then move again."}},
    {"The last configuration changes were not properly stored by the  instrument.",
     {"The memory of the instrument did not take the settings.",
      "The settings are kept in TORVELL's own archive as they were entered.",
      "Store the settings again. If it comes back, tell the service."}},
    {"The instrument's persistent configuration settings were not successfully loaded. Restart "
     "instrument.",
     {"The memory of the instrument lost its settings, for example by a loss of power.",
      "Nothing was changed by TORVELL.",
      "Switch the instrument off and on. If it comes back, tell the service before you measure."}},
    {"The instrument self tests failed. Open the Service/Diagnostics screen for details.",
     {"A supply voltage, the converter or a memory of the instrument is out of its limits.",
      "The instrument reports that it is not ready; no tray starts.",
      "Open RVX Monitor for the results of the self test, and tell the service what it shows."}},
    {"The instrument must be idle to initiate the requested operation.",
     {kInUseCause, kNotCarriedOut, "Wait until the instrument is idle, then try again."}},
    {"The instrument was instructed to go to an invalid tray position.",
     {"The position does not exist on this instrument.", kNotCarriedOut,
      "Choose a position of the tray. If it comes back, tell the service."}},
    {"The stepper motors must be homed before initiating the requested operation.",
     {"The axes have no home position since the instrument was switched on.", kNotCarriedOut,
      "Open RVX Stepper Motor Service, move the axes to their home positions and press Set Home "
      "Flag."}},
};

bool Matches(std::string_view pattern, std::string_view text) {
  const size_t star = pattern.find('*');
  if (star == std::string_view::npos) return text == pattern;
  const std::string_view head = pattern.substr(0, star), tail = pattern.substr(star + 1);
  return text.size() >= head.size() + tail.size() && text.starts_with(head) && text.ends_with(tail);
}

}  // namespace

std::optional<MessageAdvice> AdviceFor(const std::string& message) {
  for (const Entry& entry : kEntries) {
    if (Matches(entry.message, message)) return entry.advice;
  }
  return std::nullopt;
}

std::string AdviceText(const std::string& message) {
  const std::optional<MessageAdvice> advice = AdviceFor(message);
  if (!advice) return {};
  return fmt::format("Likely cause: {}\nWhat was done: {}\nWhat to do: {}", advice->cause,
                     advice->done, advice->remedy);
}

}  // namespace torvell
