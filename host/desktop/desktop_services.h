// What the computer's desktop does for us: staying awake, notifications. Both need a session bus;
// without one they do nothing, and the log says so once.
#pragma once

#include <QObject>
#include <QString>

namespace torvell {

// Keeps the computer awake while at least one tray runs. The window's thread; calls to the bus do
// not wait for an answer.
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
  int sleepLock_ = -1;  // file descriptor that the system holds sleep for
};

// Shows a notification, unless the window is active anyway.
void Notify(const QString& title, const QString& text);

}  // namespace torvell
