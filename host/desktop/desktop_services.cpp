#include "host/desktop/desktop_services.h"

#include <unistd.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

#include "platform/log.h"

namespace torvell {
namespace {

constexpr char kProgram[] = "TORVELL";
constexpr char kReason[] = "A tray is running";

QDBusMessage ScreenSaverCall(const char* method) {
  return QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver"),
      QStringLiteral("org.freedesktop.ScreenSaver"), QString::fromLatin1(method));
}

void LogFailure(const QString& what, const QDBusError& error) {
  platform::Log(platform::LogLevel::Warning,
                (what + QStringLiteral(": ") + error.message()).toStdString());
}

}  // namespace

AwakeKeeper::~AwakeKeeper() { Release(); }

void AwakeKeeper::SetRunning(bool running) {
  if (running == running_) return;
  running_ = running;
  if (running) {
    Inhibit();
  } else {
    Release();
  }
}

void AwakeKeeper::Inhibit() {
  QDBusMessage screen = ScreenSaverCall("Inhibit");
  screen << QString::fromLatin1(kProgram) << QString::fromLatin1(kReason);
  auto* watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(screen), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* call) {
    const QDBusPendingReply<quint32> reply = *call;
    call->deleteLater();
    if (reply.isError()) {
      LogFailure(QStringLiteral("the screen can't be kept awake"), reply.error());
      return;
    }
    cookie_ = reply.value();
    // The run may have ended before the answer arrived.
    if (!running_) Release();
  });
  QDBusMessage sleep = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
  sleep << QStringLiteral("sleep:idle") << QString::fromLatin1(kProgram)
        << QString::fromLatin1(kReason) << QStringLiteral("block");
  auto* sleepWatcher =
      new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(sleep), this);
  connect(sleepWatcher, &QDBusPendingCallWatcher::finished, this,
          [this](QDBusPendingCallWatcher* call) {
            const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *call;
            call->deleteLater();
            if (reply.isError()) {
              LogFailure(QStringLiteral("the computer can't be kept from sleeping"), reply.error());
              return;
            }
            sleepLock_ = dup(reply.value().fileDescriptor());
            if (!running_) Release();
          });
}

void AwakeKeeper::Release() {
  if (cookie_ != 0) {
    QDBusMessage screen = ScreenSaverCall("UnInhibit");
    screen << cookie_;
    QDBusConnection::sessionBus().asyncCall(screen);
    cookie_ = 0;
  }
  if (sleepLock_ >= 0) close(sleepLock_);
  sleepLock_ = -1;
}

void Notify(const QString& title, const QString& text) {
  if (QApplication::activeWindow() != nullptr) return;
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.Notifications"),
      QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
  call << QString::fromLatin1(kProgram) << quint32{0} << QStringLiteral("torvell") << title << text
       << QStringList() << QVariantMap() << -1;
  QDBusConnection::sessionBus().asyncCall(call);
}

}  // namespace torvell
