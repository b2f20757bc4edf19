// The middle of the window: the commands of a run, the tray, its progress and its summary.
#pragma once

#include <QWidget>
#include <functional>
#include <utility>
#include <vector>

#include "host/desktop/instrument_state.h"

class QAction;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace torvell {

class Banner;
class InstrumentSession;
class TrayView;

// Offers the commands that fit the session's state, gives the reason beside disabled ones, and
// passes commands on. The window's thread only.
class TrayPage : public QWidget {
  Q_OBJECT

 public:
  explicit TrayPage(QWidget* parent = nullptr);

  void SetSession(InstrumentSession* session);
  InstrumentSession* session() const { return session_; }
  // Sets the level of who acts; the commands are offered accordingly.
  void SetLevel(int32_t level);
  TrayView* view() const { return view_; }
  // The menus share the page's commands, with their keys.
  void FillRunMenu(QMenu& menu);
  void FillTrayMenu(QMenu& menu);
  // Sets the samples that can be added: kind and the module's label.
  void SetSampleKinds(const std::vector<std::pair<int, QString>>& kinds);

 public Q_SLOTS:
  // Says what is lost, asks, and aborts if the user confirms.
  void AskAbort();
  void Load();
  void Save();

 Q_SIGNALS:
  void Notice(const QString& text);
  void ExportAsked();

 private:
  void MakeActions();
  void MakeToolBar();
  void Refresh();
  void RefreshProgress();
  void Apply(const Offer& offer, QAction* action, QWidget* button);
  QAction* Make(const QString& text, const QKeySequence& key, std::function<void()> does);

  InstrumentSession* session_ = nullptr;
  int32_t level_ = 0;

  QAction *start_, *pauseAfter_, *pauseNow_, *resume_, *abort_, *prepare_, *newTray_;
  QAction *edit_, *undo_, *copy_, *cut_, *paste_, *clear_, *fillDown_, *moveUp_, *moveDown_;
  QAction *load_, *save_;
  QMenu* addMenu_;
  QPushButton *startButton_, *resumeButton_, *abortButton_, *prepareButton_;
  QToolButton *pauseButton_, *addButton_;
  QPushButton* editButton_;
  QLabel* hint_;
  TrayView* view_;
  QWidget* progress_;
  QProgressBar* bar_;
  QLabel *done_, *left_;
  Banner* summary_;
};

}  // namespace torvell
