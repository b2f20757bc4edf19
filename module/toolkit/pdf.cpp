#include "module/toolkit/pdf.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPdfWriter>
#include <array>

#include "module/toolkit/page_painter.h"
#include "platform/lock.h"
#include "platform/log.h"
#include "platform/process_locale.h"

namespace rvx {
namespace {

constexpr int kResolution = 1200;  // dots per inch
// The margin that nearly every printer needs, so that a PDF can be printed as it is.
constexpr qreal kMargin = 0.25;  // inches

std::string Render(const std::string& title, Paper paper, const PageDrawer& draw) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  if (!buffer.open(QIODevice::WriteOnly)) return {};
  QPdfWriter writer(&buffer);
  writer.setResolution(kResolution);
  writer.setTitle(QString::fromStdString(title));
  writer.setCreator(QStringLiteral("RVX"));
  writer.setPageLayout(QPageLayout(ToPageSize(paper), QPageLayout::Portrait,
                                   QMarginsF(kMargin, kMargin, kMargin, kMargin),
                                   QPageLayout::Inch));
  if (!DrawDocument(writer, draw)) return {};
  return bytes.toStdString();
}

// Sends the toolkit's messages to the log: those at its start (that "C" is no UTF-8 locale, for
// instance) are of no interest to a user of the command line.
void LogQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
  const bool isSevere = type == QtCriticalMsg || type == QtFatalMsg;
  platform::Log(isSevere ? platform::LogLevel::Error : platform::LogLevel::Debug,
                text.toStdString());
}

// Fonts need a QGuiApplication. One without a display is enough for the drawing, and is destroyed
// after it: other code in the process must not find an application and take it for one with
// windows.
class OffscreenApplication {
 public:
  OffscreenApplication()
      : handler_(qInstallMessageHandler(LogQtMessage)), application_(count_, arguments_.data()) {}
  ~OffscreenApplication() { qInstallMessageHandler(handler_); }
  OffscreenApplication(const OffscreenApplication&) = delete;
  OffscreenApplication& operator=(const OffscreenApplication&) = delete;

 private:
  // The application sets the user's locale, and this process may use another.
  const platform::KeptProcessLocale locale_;
  const QtMessageHandler handler_;
  char name_[8] = "torvell";
  char option_[10] = "-platform";
  char platform_[10] =
      "offscreen";  // takes precedence over QT_QPA_PLATFORM, which may name a display
  std::array<char*, 4> arguments_ = {name_, option_, platform_, nullptr};
  int count_ = 3;
  QGuiApplication application_;
};

// Held while a sheet is drawn. What draws may take any lock of the instrument.
constexpr platform::LockRank kApplicationLockRank = 150;

// Only one thread at a time may have its own application.
platform::PlainLock& ApplicationLock() {
  static auto* const lock = new platform::PlainLock("PDF application", kApplicationLockRank);
  return *lock;
}

}  // namespace

std::string RenderPdf(const std::string& title, std::optional<Paper> paper,
                      const PageDrawer& draw) {
  const auto render = [&] { return Render(title, paper.value_or(GetUsualPaper()), draw); };
  {
    platform::PlainGuard guard(ApplicationLock());
    if (QCoreApplication::instance() == nullptr) {
      const OffscreenApplication application;
      return render();
    }
  }
  return render();
}

}  // namespace rvx
