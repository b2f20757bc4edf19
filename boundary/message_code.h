// What a reported message is about, for a program that wants to act on it without reading its text.
#pragma once

#include <cstdint>

namespace rvx {

// Numbered like the texts of the module's string table, so that a message and its code always
// agree. The numbers are kept in archives and never change. What an instrument reports by an error
// byte is here too.
enum class MessageCode : int32_t {
  None = 0,  // a message that says cause and remedy itself
  ActionRunning = 301,
  ComputerError = 302,
  InvalidContext = 303,
  NotReady = 306,
  InitializeSteppers = 308,
  SampleTimeout = 318,
  SampleInUse = 319,
  ActionTimeout = 331,
  ActionInUse = 332,
  NotResponding = 341,
  TrayInUse = 342,
  NoThread = 343,
  InvalidErrorCode = 345,
  InvalidCommand = 346,
  InvalidManualCommand = 347,
  ManualDuringTest = 348,
  CoolingUnderControl = 349,
  SteppersActive = 350,
  SettingsNotStored = 351,
  InvalidStepperCommand = 352,
  InvalidPacket = 353,
  SettingsNotLoaded = 360,
  SelfTestFailed = 361,
  NotIdle = 362,
  InvalidTrayPosition = 363,
  SteppersNotHomed = 364,
  CheckStandardDue = 365,
  CheckStandardNeverRun = 366,
  CellTooWarm = 367
};

// The code of the message whose text has this id in the module's string table; 0 gives None.
constexpr MessageCode MessageCodeOf(int32_t textId) { return static_cast<MessageCode>(textId); }

}  // namespace rvx
