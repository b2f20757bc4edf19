// Names for the ids of texts that more than one place uses.
#pragma once

namespace rvx {

enum StringId : int {
  kTextPortAddress = 300,
  kTextActionRunning = 301,
  kTextComputerError = 302,
  kTextInvalidContext = 303,
  kTextNotReady = 306,
  kTextOff = 307,
  kTextInitializeSteppers = 308,
  kTextWritingData = 315,
  kTextSampleTimeout = 318,
  kTextSampleInUse = 319,
  kTextActionTimeout = 331,
  kTextActionInUse = 332,
  kTextStopRunningSamples = 340,
  kTextNotResponding = 341,
  kTextTrayInUse = 342,
  kTextNoThread = 343,
  kTextInvalidErrorCode = 345,
  kTextCheckStandardDue = 365,
  kTextCheckStandardNeverRun = 366,
  kTextCellTooWarm = 367,
  kTextReady = 699,
  kTextKnownViscosityHeading = 853,
  kTextTemperatureHeading = 858,
  kTextRotorOnTimeHeading = 865,
  kTextFirstOperation = 960,
  kTextUnknownOperation = 974,
  kTextElapsedTime = 975,
  kTextTimeRemaining = 976,
  kTextPickStandard = 977,
  kTextTryAgain = 978,
  kTextUnableToStore = 979,
  kTextInjectionPrompt = 980
};

}  // namespace rvx
