// How every modal dialog of the module runs.
#pragma once

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

namespace rvx {

// Shows the dialog and waits until it has ended; then `read` may look at it, and it is deleted. The
// result is the dialog's, and QDialog::Rejected without a call of `read` if the dialog went away
// meanwhile: an instrument that closes takes its frames along, and a frame the dialogs above it. A
// dialog on the caller's stack would then be destroyed twice.
//
// Whoever calls this from a member function of a widget looks after the return whether the widget
// itself is still there. GUI thread.
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
