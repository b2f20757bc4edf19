#include "host/desktop/instrument_state.h"

#include "boundary/instrument_limits.h"
#include "host/core/users.h"

namespace torvell {
namespace {

// Error codes that refuse one command and say nothing about the instrument.
constexpr uint8_t kInvalidCommand = 0x80;
constexpr uint8_t kInvalidPacket = 0x87;

bool HasError(const rvx::InstrumentReadings& readings) {
  return readings.errorCode != 0 && readings.errorCode != kInvalidCommand &&
         readings.errorCode != kInvalidPacket;
}

bool IsDisconnected(const InstrumentSituation& situation) {
  return !situation.silence || *situation.silence >= kDisconnectedAfter;
}

Offer Hidden() { return {}; }

Offer Shown(const QString& why) { return {true, why.isEmpty(), why}; }

QString TrayRight(const InstrumentSituation& situation) {
  if (situation.level >= kLevelOperator) return {};
  return LevelNeededText(kLevelOperator, situation.level);
}

QString FirstOf(std::initializer_list<QString> reasons) {
  for (const QString& reason : reasons) {
    if (!reason.isEmpty()) return reason;
  }
  return {};
}

QString When(bool condition, const char* reason) {
  return condition ? QString::fromUtf8(reason) : QString();
}

QString StartObstacle(const InstrumentSituation& situation) {
  return FirstOf(
      {TrayRight(situation), When(situation.busy, "The instrument is being asked."),
       When(IsDisconnected(situation),
            "The instrument does not answer. Check its power and its cable."),
       When(situation.filled == 0, "The tray is empty. Select positions and add samples to them."),
       NotReadyText(situation)});
}

}  // namespace

QString LevelName(int32_t level) {
  if (level >= kLevelService) return QStringLiteral("service");
  if (level >= kLevelManager) return QStringLiteral("manager");
  if (level >= kLevelOperator) return QStringLiteral("operator");
  return QStringLiteral("reading only");
}

QString LevelNeededText(int32_t needed, int32_t present) {
  return QStringLiteral(
             "Needs level %1 (%2); you act at level %3 (%4). Log in as a user of that "
             "level.")
      .arg(needed)
      .arg(LevelName(needed))
      .arg(present)
      .arg(LevelName(present));
}

bool IsStale(const std::optional<platform::Milliseconds>& silence) {
  return !silence || *silence >= rvx::kStaleAfter;
}

StateWord WordOf(const InstrumentSituation& situation) {
  if (IsDisconnected(situation)) return StateWord::Disconnected;
  if (HasError(situation.readings)) return StateWord::Error;
  if (situation.paused) return StateWord::Paused;
  if (situation.running) return StateWord::Running;
  if (situation.readings.machineStatus != 0 || situation.readings.switchByte != 0) {
    return StateWord::NotReady;
  }
  return StateWord::Ready;
}

QString StateText(const InstrumentSituation& situation, int traySize) {
  switch (WordOf(situation)) {
    case StateWord::Disconnected:
      return QStringLiteral("Disconnected");
    case StateWord::Error:
      return QStringLiteral("Error");
    case StateWord::NotReady:
      return QStringLiteral("Not ready");
    case StateWord::Ready:
      return QStringLiteral("Ready");
    case StateWord::Running:
      if (situation.position == 0) return QStringLiteral("Running");
      return QStringLiteral("Running %1/%2").arg(situation.position).arg(traySize);
    case StateWord::Paused:
      return QStringLiteral("Paused");
  }
  return {};
}

Shape StateShape(StateWord word) {
  switch (word) {
    case StateWord::Disconnected:
      return Shape::Lost;
    case StateWord::Error:
      return Shape::Warning;
    case StateWord::NotReady:
      return Shape::Waiting;
    case StateWord::Ready:
      return Shape::Done;
    case StateWord::Running:
      return Shape::Running;
    case StateWord::Paused:
      return Shape::Paused;
  }
  return Shape::None;
}

QString NotReadyText(const InstrumentSituation& situation) {
  if (IsDisconnected(situation)) {
    return QStringLiteral("The instrument does not answer. Check its power and its cable.");
  }
  const rvx::InstrumentReadings& readings = situation.readings;
  QString text;
  if (readings.machineStatus != 0) {
    QString status = QString::fromStdString(readings.machineStatusText).simplified();
    while (status.endsWith(QLatin1Char(','))) status.chop(1);
    text = QStringLiteral("The instrument reports \"%1\". ").arg(status);
  }
  if (readings.switchByte != 0) text += QStringLiteral("Some of its switches are on. ");
  if (!(readings.temperature < rvx::kWarmestStart)) {
    text +=
        QStringLiteral("The cell is too warm: it has to be below %1 °C. ").arg(rvx::kWarmestStart);
  }
  if (text.isEmpty()) return {};
  return text + (situation.simulated
                     ? QStringLiteral("\"Prepare\" sets the home flag and cools the cell.")
                     : QStringLiteral("Check the chiller, and initialise the stepper motors."));
}

RunOffers OffersOf(const InstrumentSituation& situation) {
  RunOffers offers;
  const QString right = TrayRight(situation);
  const QString busy = When(situation.busy, "The instrument is being asked.");
  if (situation.running) {
    offers.edit =
        Shown(QStringLiteral("The tray is running; it can be changed when the run is over."));
    offers.abort = Shown(FirstOf({right, busy}));
    if (situation.paused) {
      offers.resume = Shown(FirstOf(
          {right, busy, When(IsDisconnected(situation), "The instrument does not answer yet.")}));
      return offers;
    }
    offers.pauseAfter = Shown(FirstOf(
        {right, busy,
         When(situation.pauseRequested, "The tray will pause behind the present sample.")}));
    offers.pauseNow = Shown(FirstOf({right, busy}));
    return offers;
  }
  if (situation.summaryOpen) {
    offers.newTray = Shown({});
    offers.edit =
        Shown(QStringLiteral("These are the results of the last run. \"New Tray\" makes "
                             "room for the next one."));
    return offers;
  }
  offers.edit = Shown(right);  // also while busy: edits wait for their turn
  offers.start = Shown(StartObstacle(situation));
  const bool unprepared = !IsDisconnected(situation) && !NotReadyText(situation).isEmpty();
  const QString preparing =
      When(situation.preparing, "It is being prepared; the cell needs some minutes to get cold.");
  offers.prepare =
      situation.simulated && unprepared ? Shown(FirstOf({right, preparing})) : Hidden();
  return offers;
}

}  // namespace torvell
