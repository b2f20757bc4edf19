#include "module/resources/string_table.h"

#include <algorithm>
#include <array>

namespace rvx {
namespace {

struct Entry {
  int id;
  const char* text;
};

// In order of id.
constexpr auto kTexts = std::to_array<Entry>({
    {300, "RVX %Xh"},
    {301, "'%s' is running."},
    {302, "Could not start '%s' due to computer error."},
    {303, "Could not start '%s' due to invalid context."},
    {306, "RVX is not ready. Tray will be paused."},
    {307, "OFF"},
    {308, "Initialize stepper motors using the RVX Stepper Motor Service before continuing."},
    {315, "Writing data"},
    {318, "Sample Abort : RVX Response Timeout."},
    {319, "Sample Abort : RVX already in use."},
    {331, "Action Abort : RVX Response Timeout."},
    {332, "Action Abort : RVX already in use."},
    {340, "Do you wish to stop running samples now?"},
    {341, "Instrument not responding."},
    {342, "Tray is being used - "},
    {343, "Could not start thread due to computer error."},
    {345, "An invalid error code was received from the instrument (0x%x)."},
    {346, "An invalid command was received by the instrument."},
    {347, "An invalid manual command was received by the instrument."},
    {348, "A manual operation may not be performed while running a test."},
    {349, "Thermoelectrics may not be manipulated while temperature control is enabled."},
    {350, "The stepper motors are already active. The manual stepper command will be ignored."},
    {351, "The last configuration changes were not properly stored by the  instrument."},
    {352, "An invalid manual stepper motor command was received by the instrument."},
    {353, "The instrument received an invalid packet."},
    {360,
     "The instrument's persistent configuration settings were not successfully loaded. Restart "
     "instrument."},
    {361, "The instrument self tests failed. Open the Service/Diagnostics screen for details."},
    {362, "The instrument must be idle to initiate the requested operation."},
    {363, "The instrument was instructed to go to an invalid tray position."},
    {364, "The stepper motors must be homed before initiating the requested operation."},
    {365, "A check standard is due ( %d samples have been run)."},
    {366, "A check standard is due (one has never been run)."},
    {367,
     "RVX cell is too warm. Please verify the chiller is turned on, controlling at 5 C, and "
     "functioning properly. The cell temperature must be below 10 C before the software will "
     "continue."},
    {550, "RVX Monitor"},
    {551, "RVX Stepper Motor Service"},
    {552, "RVX Set Motor Current Service"},
    {553, "RVX Sample List Service"},
    {554, "Print Instrument Settings"},
    {555, "RVX Temperature Verification Service"},
    {601, "Calibration"},
    {603, "Instrument Settings"},
    {604, "Tray (Test) Settings"},
    {605, "Move to Sample Position"},
    {606, "Precondition Motor"},
    {607, "Current Cell Calibration Constants"},
    {610, "Measure Viscosity"},
    {611, "Verify Known Viscosity"},
    {612, "RVX Calibration Standards"},
    {613, "RVX Choose Calibration Standards"},
    {614, "RVX Setup"},
    {699, "Ready"},
    {700, "Not Ready, "},
    {701, "Init Steppers,"},
    {703, "Self Test, "},
    {704, "Not Defined, "},
    {707, "FAULT,"},
    {853, "Known Visc(mPa*s)"},
    {858, "Temperature(C)"},
    {865, "Rotor ON Time(s)"},
    {960, "IDLE"},
    {961, "Adjust Motor Current"},
    {962, "Seek Speed"},
    {963, "Precondition Motor"},
    {964, "Locate Sample"},
    {965, "Lower Tube"},
    {966, "Raise Tube"},
    {967, "Warm Test Cell"},
    {968, "Injection Burst"},
    {969, "Injection Pause"},
    {970, "Injection Purge"},
    {971, "Cooldown"},
    {972, "Equilibration"},
    {973, "Run Test"},
    {974, "Unknown Op"},
    {975, "Elapsed Time"},
    {976, "Time Remaining"},
    {977, "Pick a standard or press \"Other ...\"."},
    {978, "An error occured. Please try again."},
    {979, "Unable to store new instrument configuration. Please try again."},
    {980,
     "Lower injection tube into the sample then press OK.\nRaise injection tube when injection "
     "sequence is complete."},
});
static_assert(std::is_sorted(kTexts.begin(), kTexts.end(),
                             [](const Entry& a, const Entry& b) { return a.id < b.id; }));

}  // namespace

std::string LoadResourceString(int id) {
  const auto found = std::lower_bound(kTexts.begin(), kTexts.end(), id,
                                      [](const Entry& entry, int key) { return entry.id < key; });
  return found != kTexts.end() && found->id == id ? found->text : std::string();
}

}  // namespace rvx
