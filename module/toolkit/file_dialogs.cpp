#include "module/toolkit/file_dialogs.h"

#include <QFileDialog>

#include "module/toolkit/gui_thread.h"
#include "module/toolkit/run_dialog.h"

namespace rvx {
namespace {

std::unique_ptr<QFileDialog> MakeFileDialog(QWidget* parent, const std::string& title,
                                            const std::string& initial, const std::string& filter) {
  auto dialog = std::make_unique<QFileDialog>(parent, QString::fromStdString(title), QString(),
                                              QString::fromStdString(filter));
  dialog->selectFile(QString::fromStdString(initial));
  return dialog;
}

std::optional<std::string> Choose(std::unique_ptr<QFileDialog> dialog) {
  std::optional<std::string> chosen;
  RunDialog<QFileDialog>(std::move(dialog), [&chosen](QFileDialog& ended, int result) {
    const QStringList files = ended.selectedFiles();
    if (result == QDialog::Accepted && !files.isEmpty()) chosen = files.front().toStdString();
  });
  return chosen;
}

}  // namespace

std::optional<std::string> ChooseFolder(QWidget* parent, const std::string& title,
                                        const std::string& initial) {
  AssertGuiThread("ChooseFolder");
  auto dialog = std::make_unique<QFileDialog>(parent, QString::fromStdString(title),
                                              QString::fromStdString(initial));
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOption(QFileDialog::ShowDirsOnly);
  std::optional<std::string> folder = Choose(std::move(dialog));
  if (folder && folder->back() != '/') *folder += '/';
  return folder;
}

std::optional<std::string> ChooseFile(QWidget* parent, const std::string& title,
                                      const std::string& initial, const std::string& filter,
                                      bool mayBeNew) {
  AssertGuiThread("ChooseFile");
  auto dialog = MakeFileDialog(parent, title, initial, filter);
  dialog->setFileMode(mayBeNew ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  return Choose(std::move(dialog));
}

std::optional<std::string> ChooseFileToSave(QWidget* parent, const std::string& title,
                                            const std::string& initial, const std::string& filter,
                                            const std::string& suffix) {
  AssertGuiThread("ChooseFileToSave");
  auto dialog = MakeFileDialog(parent, title, initial, filter);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setFileMode(QFileDialog::AnyFile);
  dialog->setDefaultSuffix(QString::fromStdString(suffix));
  return Choose(std::move(dialog));
}

}  // namespace rvx
