// A document on the screen before it is printed or saved.
#pragma once

#include <QDialog>
#include <memory>
#include <string>

#include "boundary/printed_sheets.h"
#include "module/printing/page.h"

class QComboBox;
class QLabel;
class QLayout;
class QPrintPreviewWidget;
class QPrinter;
class QSpinBox;

namespace rvx {

enum class PrintResult {
  Printed,
  Saved,  // as PDF, and not printed
  Cancelled
};

// Shows the document in a preview with the buttons Print, Save as PDF and Close, and waits until it
// is closed; it closes by itself after a print. Failures are shown to the user here. `title` names
// the document for the printer, and the PDF file. Cancelled also if the parent is destroyed
// meanwhile. GUI thread.
PrintResult PrintDocument(QWidget* parent, const std::string& title, const PageDrawer& draw);

// "Settings (RVX 0h : Cell 7)" as the name of a PDF file on every system.
std::string ToPdfFileName(const std::string& title);

// The preview itself. It blocks only its parent's window, since a user may read in it for long
// while another window has to be used. GUI thread.
class PrintPreview final : public QDialog {
 public:
  PrintPreview(QWidget* parent, const std::string& title, PageDrawer draw);
  ~PrintPreview() override;

  // What has been done with the document so far.
  PrintResult outcome() const { return outcome_; }

 private:
  QLayout* MakeTopRow();
  QLayout* MakeButtonRow();
  void TakePaper();
  void ShowPages();
  void Print();
  void SaveAsPdf();
  Paper GetPaper() const;

  const std::string title_;
  const PageDrawer draw_;
  PrintResult outcome_ = PrintResult::Cancelled;
  std::unique_ptr<QPrinter> printer_;  // of the preview; prints nothing
  QPrintPreviewWidget* preview_;
  QComboBox* paper_;
  QSpinBox* page_;
  QLabel* status_;
};

}  // namespace rvx
