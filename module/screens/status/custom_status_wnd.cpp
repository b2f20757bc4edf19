#include "module/screens/status/custom_status_wnd.h"

#include <ui_status_window.h>

#include <QPointer>
#include <utility>

#include "module/toolkit/dialog_units.h"
#include "module/toolkit/gui_thread.h"
#include "module/toolkit/local_numbers.h"
#include "module/toolkit/window_handle.h"

namespace rvx {
namespace {

constexpr int kWidth = 90;      // dialog units
constexpr int kHeight = 146;    // dialog units
constexpr int kAgeTick = 1000;  // ms

QString Shown(const std::string& number) { return QString::fromStdString(ToLocal(number)); }

// The state of one panel that the instrument's threads and the GUI thread share.
struct Feed {
  platform::PlainLock lock{"status window readings", platform::kLeafRank};
  StatusReadings readings GUARDED_BY(lock);
  bool posted GUARDED_BY(lock) = false;  // a display is pending that will show the readings
  QPointer<CCustomStatusWnd> window;     // GUI thread; null when the host has destroyed it
};

void ShowFeed(Feed& feed) {
  StatusReadings readings;
  {
    platform::PlainGuard guard(feed.lock);
    feed.posted = false;
    readings = feed.readings;
  }
  if (feed.window) feed.window->Display(readings);
}

class StatusWindowLink final : public StatusWindow {
 public:
  explicit StatusWindowLink(CCustomStatusWnd* window) : feed_(std::make_shared<Feed>()) {
    feed_->window = window;
  }
  ~StatusWindowLink() override {
    AssertGuiThread("StatusWindowLink");
    delete feed_->window;
  }
  WindowHandle* GetHandle() override { return ToHandle(feed_->window); }
  void Refresh(const StatusReadings& readings) override {
    {
      platform::PlainGuard guard(feed_->lock);
      feed_->readings = readings;
      // One display at a time, so that frames do not pile up for a busy window.
      if (std::exchange(feed_->posted, true)) return;
    }
    PostToGuiThread([feed = feed_] { ShowFeed(*feed); });
  }

 private:
  const std::shared_ptr<Feed> feed_;
};

}  // namespace

CCustomStatusWnd::CCustomStatusWnd(QWidget* parent)
    : CFormView(parent),
      form_(std::make_unique<Ui::StatusWindow>()),
      texts_(StatusWindowTexts::Load()) {
  form_->setupUi(this);
  ApplyColours();
  const QSize size = DialogUnits(parent != nullptr ? *parent : *this, kWidth, kHeight);
  resize(size.expandedTo(minimumSizeHint()));
  connect(&ageTimer_, &QTimer::timeout, this, [this] { ShowReadings(); });
  ageTimer_.start(kAgeTick);
  ShowReadings();
}

CCustomStatusWnd::~CCustomStatusWnd() = default;

void CCustomStatusWnd::ApplyColours() {
  // The form has the background colour of lists and texts; the headings keep the standard colour
  // and so look like bars.
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::Base);
  for (QLabel* heading : {form_->timerHeading, form_->temperatureHeading, form_->speedHeading,
                          form_->statusHeading}) {
    heading->setAutoFillBackground(true);
    heading->setBackgroundRole(QPalette::Button);
    heading->setForegroundRole(QPalette::ButtonText);
    heading->setMargin(3);
  }
  constexpr int kBesideUnits = 6;  // pixels to the panel's edge
  for (QLabel* unit : {form_->secondsUnit, form_->targetUnit, form_->currentUnit}) {
    unit->setContentsMargins(0, 0, kBesideUnits, 0);
  }
}

void CCustomStatusWnd::Display(const StatusReadings& readings) {
  readings_ = readings;
  ShowReadings();
}

void CCustomStatusWnd::ShowReadings() {
  const StatusDisplay display = MakeStatusDisplay(readings_, texts_, platform::MonotonicTime());
  form_->current->setText(Shown(display.temperature));
  form_->target->setText(Shown(display.target));
  form_->speed->setText(Shown(display.speed));
  form_->seconds->setText(Shown(display.seconds));
  form_->timerHeading->setText(QString::fromStdString(display.timerHeading));
  form_->status->setText(QString::fromStdString(display.machineStatus));
  form_->age->setText(QString::fromStdString(display.age));
  form_->age->setVisible(!display.age.empty());
  for (QLabel* value :
       {form_->current, form_->target, form_->speed, form_->seconds, form_->status}) {
    value->setEnabled(display.age.empty());
  }
}

std::unique_ptr<StatusWindow> MakeStatusWindow(WindowHandle* parent) {
  AssertGuiThread("MakeStatusWindow");
  auto* window =
      new CCustomStatusWnd(ToWidget(parent));  // owned by its parent until the link takes it
  window->show();
  return std::make_unique<StatusWindowLink>(window);
}

}  // namespace rvx
