#include "module/toolkit/file_dialogs.h"

#include <QFileDialog>

#include "module/toolkit/gui_thread.h"

namespace rvx {

std::optional<std::string> ChooseFolder(QWidget* parent, const std::string& title,
                                        const std::string& initial) {
  AssertGuiThread("ChooseFolder");
  QString folder = QFileDialog::getExistingDirectory(parent, QString::fromStdString(title),
                                                     QString::fromStdString(initial));
  if (folder.isEmpty()) return std::nullopt;
  if (!folder.endsWith(u'/')) folder += u'/';
  return folder.toStdString();
}

std::optional<std::string> ChooseFile(QWidget* parent, const std::string& title,
                                      const std::string& initial, const std::string& filter,
                                      bool mayBeNew) {
  AssertGuiThread("ChooseFile");
  QFileDialog dialog(parent, QString::fromStdString(title), QString(),
                     QString::fromStdString(filter));
  dialog.setFileMode(mayBeNew ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dialog.selectFile(QString::fromStdString(initial));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return dialog.selectedFiles().front().toStdString();
}

}  // namespace rvx
