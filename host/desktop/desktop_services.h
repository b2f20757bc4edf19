// Services of the computer's desktop: staying awake, notifications. Both need a session bus;
// without one they do nothing, and the log says so once.
#pragma once

#include <QObject>
#include <QString>

namespace torvell {

// Keeps the computer awake while at least one tray runs. The window's thread only; it does not wait
// for answers from the bus.
class AwakeKeeper : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;
  ~AwakeKeeper() override;

  void SetRunning(bool running);

 private:
  void Inhibit();
  void Release();

  bool running_ = false;
  quint32 cookie_ = 0;
  int sleepLock_ = -1;  // file descriptor; the system does not sleep while it is open
};

// Shows a notification, except when the window is active. The window's thread only.
void Notify(const QString& title, const QString& text);

}  // namespace torvell
