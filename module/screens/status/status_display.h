// The contents of the status window, without the window.
#pragma once

#include <string>

#include "module/instrument/status_window.h"
#include "platform/time_base.h"

namespace rvx {

// The texts that a status window needs, loaded on the user-interface thread.
struct StatusWindowTexts {
  std::string off;            // in place of a target temperature
  std::string elapsedTime;    // heading of seconds that count up
  std::string timeRemaining;  // heading of seconds that count down

  static StatusWindowTexts Load();
};

// The texts of the controls, with a point as decimal sign.
struct StatusDisplay {
  std::string temperature;  // degrees C
  std::string target;       // degrees C, or OFF
  std::string speed;        // rpm/1000
  std::string seconds;      // s
  std::string timerHeading;
  std::string machineStatus;  // one item on each line
  std::string age;            // empty while the values are recent; else why they are grey
};

// `now` is MonotonicTime. Before the first frame every value is "-".
StatusDisplay MakeStatusDisplay(const StatusReadings& readings, const StatusWindowTexts& texts,
                                platform::Microseconds now);

}  // namespace rvx
