// The live panel of an instrument that the host embeds in one of its windows, as an interface for
// the instrument. A program with windows implements it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "boundary/viscometer_instrument.h"
#include "module/instrument/monitor_readings.h"
#include "platform/time_base.h"

namespace rvx {

// What the panel shows, from one status frame.
struct StatusReadings {
  bool received = false;           // false before the first frame: nothing else counts
  platform::Microseconds time{0};  // when the frame came, MonotonicTime
  double temperature = 0.0;        // degrees C
  double targetTemperature = 0.0;  // degrees C; exactly 65535.0 when off
  double speed = 0.0;              // rpm/1000
  int32_t seconds = 0;             // of the present operation
  bool countsDown = false;         // the seconds remain; else they have elapsed
  std::string machineStatusText;   // items, each with a comma after it
};

// One panel. Made and destroyed on the user-interface thread.
class StatusWindow {
 public:
  virtual ~StatusWindow() = default;
  // The window, or null if the host has destroyed it together with its parent.
  virtual WindowHandle* GetHandle() = 0;
  // Takes the readings and shows them soon. Any thread; does not wait.
  virtual void Refresh(const StatusReadings& readings) = 0;
};

// Makes a panel as a visible child of a window of the host; null if it can't be made.
using StatusWindowMaker = std::unique_ptr<StatusWindow> (*)(WindowHandle* parent);

// The maker that is set, null if there is none.
StatusWindowMaker GetStatusWindowMaker();

// Sets the maker; null removes it.
void SetStatusWindowMaker(StatusWindowMaker maker);

}  // namespace rvx
