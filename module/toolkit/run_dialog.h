// Runs the modal dialogs of the module.
#pragma once

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

namespace rvx {

// Shows the dialog and waits until it has ended; then calls `read` with it and deletes it. Returns
// the dialog's result, or QDialog::Rejected without a call of `read` if the dialog was destroyed
// meanwhile: an instrument that closes destroys its frames, and a frame the dialogs above it. A
// dialog on the caller's stack would then be destroyed twice.
//
// A member function of a widget that calls this has to check after the return whether the widget
// still exists. GUI thread.
template <class Dialog>
int RunDialog(std::unique_ptr<Dialog> dialog,
              const std::function<void(Dialog& dialog, int result)>& read = nullptr) {
  const QPointer<Dialog> guarded = dialog.release();
  const int result = guarded->exec();
  if (guarded.isNull()) return QDialog::Rejected;
  if (read) read(*guarded, result);
  delete guarded;
  return result;
}

}  // namespace rvx
