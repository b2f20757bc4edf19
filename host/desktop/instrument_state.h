// What an instrument's state means on the screen: one word, and what may be done. No widgets.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "boundary/instrument_scripting.h"
#include "host/desktop/theme.h"
#include "platform/time_base.h"

namespace torvell {

// An instrument that has been silent for this long counts as disconnected. Its values are shown as
// old a little earlier (rvx::kStaleAfter).
inline constexpr platform::Milliseconds kDisconnectedAfter{6000};

enum class StateWord { Disconnected, Error, NotReady, Ready, Running, Paused };

// Everything that the word and the offers depend on.
struct InstrumentSituation {
  // Time since the last status frame; nothing if none has come.
  std::optional<platform::Milliseconds> silence;
  rvx::InstrumentReadings readings;
  bool running = false;  // a tray runs, paused or not
  bool paused = false;
  bool pauseRequested = false;  // it will pause after the present sample
  int position = 0;             // the position that runs, from 1; 0 between positions
  int filled = 0;               // filled positions of the tray
  bool busy = false;            // the instrument is working on a start or an edit
  bool preparing = false;       // a simulated instrument is being prepared
  bool summaryOpen = false;     // the last run's results are not acknowledged yet
  bool simulated = false;
  int32_t level = 0;  // of the acting user
};

StateWord WordOf(const InstrumentSituation& situation);
// "Running 7/30": the running position and the tray's size.
QString StateText(const InstrumentSituation& situation, int traySize);
Shape StateShape(StateWord word);
// Returns why the instrument is not ready, and what helps; empty if it is ready.
QString NotReadyText(const InstrumentSituation& situation);
// Returns whether the values are older than rvx::kStaleAfter or there are none; `silence` is as in
// the situation.
bool IsStale(const std::optional<platform::Milliseconds>& silence);
inline bool IsStale(const InstrumentSituation& situation) { return IsStale(situation.silence); }

// Whether a command is offered. A hidden one does not fit the state; one that is shown but disabled
// says why.
struct Offer {
  bool shown = false;
  bool enabled = false;
  QString why;
};

struct RunOffers {
  Offer start;
  Offer pauseAfter;
  Offer pauseNow;
  Offer resume;
  Offer abort;
  Offer edit;     // everything that changes the tray
  Offer prepare;  // home flag and a cold cell, simulated instrument only
  Offer newTray;  // removes the last run's results from the screen
};
RunOffers OffersOf(const InstrumentSituation& situation);

// "Needs level 50 (manager); you act at level 10."
QString LevelNeededText(int32_t needed, int32_t present);
// "manager"
QString LevelName(int32_t level);

}  // namespace torvell
