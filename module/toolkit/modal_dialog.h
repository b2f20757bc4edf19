// The base of the module's modal dialogs.
#pragma once

#include <QDialog>
#include <string>

namespace rvx {

// GUI thread. A derived class sets up its form, whose buttons OK and Cancel have the ids 1 and 2,
// and calls BindButtons. It runs by RunDialog (run_dialog.h).
class CModalDialog : public QDialog {
 public:
  // Without a parent it belongs to the active window.
  explicit CModalDialog(QWidget* parent = nullptr);

 protected:
  // Called when OK was pressed; returns true to end the dialog. A refusal beeps and says or shows
  // what is missing. The dialog may be destroyed while a message is shown: after that only local
  // variables may be used.
  virtual bool OnOk() { return true; }
  // The help topic, empty for none.
  virtual std::string GetHelpTopic() const { return std::string(); }
  // Connects the buttons with the ids 1 and 2.
  void BindButtons();
  // Beeps and gives the control the focus: for an entry that is missing there.
  static void RefuseAt(QWidget& control);

  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace rvx
