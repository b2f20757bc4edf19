#include "host/desktop/save_dialog.h"

#include <QFileDialog>

namespace torvell {

QString CsvFilter(const QString& kind) {
  return QStringLiteral("%1 (*.csv);;All files (*)").arg(kind);
}

QString AskForCsvName(QWidget* parent, const QString& title, const QString& kind) {
  QFileDialog dialog(parent, title, QString(), CsvFilter(kind));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(QStringLiteral("csv"));
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.selectedFiles().front();
}

}  // namespace torvell
