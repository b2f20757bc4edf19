#include "module/toolkit/print_preview.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QShortcut>
#include <QSpinBox>
#include <algorithm>
#include <string_view>
#include <utility>

#include "module/toolkit/file_dialogs.h"
#include "module/toolkit/gui_thread.h"
#include "module/toolkit/page_painter.h"
#include "module/toolkit/pdf.h"
#include "module/toolkit/qt_prompter.h"
#include "module/toolkit/run_dialog.h"
#include "platform/text.h"

namespace rvx {
namespace {

// The printer's paper if it is one of the two, else the usual one of the user's country.
Paper GetFirstPaper(const QPrinter& printer) {
  if (!QPrinterInfo::defaultPrinter().isNull()) {
    for (const Paper paper : {Paper::A4, Paper::Letter}) {
      if (printer.pageLayout().pageSize().id() == ToPageSize(paper).id()) return paper;
    }
  }
  return GetUsualPaper();
}

// Writes a file; returns the empty text, or the reason if it could not be written. A file of this
// name stays complete until the new one is.
std::string WriteFile(const std::string& path, const std::string& bytes) {
  QSaveFile file(QString::fromStdString(path));
  const auto size = static_cast<qint64>(bytes.size());
  if (file.open(QIODevice::WriteOnly) && file.write(bytes.data(), size) == size && file.commit()) {
    return {};
  }
  return file.errorString().toStdString();
}

}  // namespace

PrintPreview::PrintPreview(QWidget* parent, const std::string& title, PageDrawer draw)
    : QDialog(parent != nullptr ? parent : QApplication::activeWindow(),
              Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                  Qt::WindowMaximizeButtonHint),
      title_(title),
      draw_(std::move(draw)),
      printer_(std::make_unique<QPrinter>(QPrinter::HighResolution)),
      preview_(new QPrintPreviewWidget(printer_.get(), this)),
      paper_(new QComboBox(this)),
      page_(new QSpinBox(this)),
      status_(new QLabel(this)) {
  AssertGuiThread("PrintPreview");
  setWindowTitle(QString::fromStdString(title_));
  setWindowModality(Qt::WindowModal);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(MakeTopRow());
  layout->addWidget(preview_, 1);
  layout->addLayout(MakeButtonRow());

  connect(preview_, &QPrintPreviewWidget::paintRequested, this,
          [this](QPrinter* printer) { DrawDocument(*printer, draw_); });
  connect(preview_, &QPrintPreviewWidget::previewChanged, this, [this] { ShowPages(); });
  for (const auto& [key, zoom] :
       {std::pair{QKeySequence::ZoomIn, &QPrintPreviewWidget::zoomIn},
        std::pair{QKeySequence::ZoomOut, &QPrintPreviewWidget::zoomOut}}) {
    connect(new QShortcut(key, this), &QShortcut::activated, preview_,
            [this, zoom = zoom] { (preview_->*zoom)(1.1); });
  }
  preview_->setZoomMode(QPrintPreviewWidget::FitToWidth);
  paper_->setCurrentIndex(static_cast<int>(GetFirstPaper(*printer_)));
  TakePaper();
  constexpr QSize kSize(760, 900);  // shows a whole line of a sheet in readable letters
  resize(kSize.boundedTo(screen()->availableSize() * 9 / 10));
}

PrintPreview::~PrintPreview() {
  // It draws with the printer, which is destroyed before the base class would delete the widget.
  delete preview_;
}

QLayout* PrintPreview::MakeTopRow() {
  paper_->setObjectName(QStringLiteral("paper"));
  paper_->addItems({QStringLiteral("A4"), QStringLiteral("Letter")});  // in the order of Paper
  connect(paper_, &QComboBox::activated, this, [this] { TakePaper(); });
  page_->setPrefix(QStringLiteral("Page "));
  connect(page_, &QSpinBox::valueChanged, preview_, &QPrintPreviewWidget::setCurrentPage);

  auto* row = new QHBoxLayout;
  auto* label = new QLabel(QStringLiteral("Pa&per:"), this);
  label->setBuddy(paper_);
  row->addWidget(label);
  row->addWidget(paper_);
  row->addStretch(1);
  row->addWidget(page_);
  return row;
}

QLayout* PrintPreview::MakeButtonRow() {
  status_->setObjectName(QStringLiteral("status"));
  status_->setTextFormat(Qt::PlainText);
  status_->setWordWrap(true);
  auto* row = new QHBoxLayout;
  row->addWidget(status_, 1);
  const auto add = [&](const char* text, const char* name, auto onClick) {
    auto* button = new QPushButton(QString::fromLatin1(text), this);
    button->setObjectName(QString::fromLatin1(name));
    connect(button, &QPushButton::clicked, this, onClick);
    row->addWidget(button);
    return button;
  };
  add("&Print...", "print", [this] { Print(); })->setDefault(true);
  add("&Save as PDF...", "save", [this] { SaveAsPdf(); });
  add("&Close", "close", [this] { reject(); });
  return row;
}

Paper PrintPreview::GetPaper() const { return static_cast<Paper>(paper_->currentIndex()); }

void PrintPreview::TakePaper() {
  printer_->setPageSize(ToPageSize(GetPaper()));
  preview_->updatePreview();
}

void PrintPreview::ShowPages() {
  const int pages = preview_->pageCount();
  const QSignalBlocker quiet(page_);
  page_->setRange(1, std::max(1, pages));
  page_->setSuffix(QStringLiteral(" of %1").arg(pages));
  page_->setValue(preview_->currentPage());
  page_->setEnabled(pages > 1);
}

void PrintPreview::Print() {
  if (QPrinterInfo::availablePrinterNames().isEmpty()) {
    ShowFailure("\"" + title_ +
                "\" was not printed: no printer is set up on this computer. Nothing else was "
                "changed. Set up a printer in the system's settings and open this preview again, "
                "or save the document as PDF.");
    return;
  }
  const QPointer<PrintPreview> self = this;
  // Copied here, because this preview may be destroyed while the printer's dialog is open.
  const std::string title = title_;
  const PageDrawer draw = draw_;
  QPrinter printer(QPrinter::HighResolution);
  printer.setDocName(QString::fromStdString(title));
  printer.setPageSize(ToPageSize(GetPaper()));
  auto dialog = std::make_unique<QPrintDialog>(&printer, this);
  dialog->setWindowTitle(QString::fromStdString(title));
  // A sheet is printed as a whole, and the other button writes to a file.
  for (const auto option : {QAbstractPrintDialog::PrintToFile, QAbstractPrintDialog::PrintSelection,
                            QAbstractPrintDialog::PrintPageRange}) {
    dialog->setOption(option, false);
  }
  if (RunDialog(std::move(dialog)) != QDialog::Accepted || self.isNull()) return;
  if (DrawDocument(printer, draw) && printer.printerState() != QPrinter::Error) {
    outcome_ = PrintResult::Printed;
    accept();
    return;
  }
  ShowFailure("\"" + title +
              "\" was not printed: the printer can't be reached or has refused it. Nothing else "
              "was changed. Check the printer, or choose another one, and print again.");
}

void PrintPreview::SaveAsPdf() {
  const QPointer<PrintPreview> self = this;
  const std::optional<std::string> path =
      ChooseFileToSave(this, title_, ToPdfFileName(title_), "PDF (*.pdf)", "pdf");
  if (!path || self.isNull()) return;
  const std::string bytes = RenderPdf(title_, GetPaper(), draw_);
  const std::string reason =
      bytes.empty() ? std::string("it could not be drawn") : WriteFile(*path, bytes);
  if (reason.empty()) {
    outcome_ = PrintResult::Saved;
    status_->setText(QString::fromStdString("Saved as " + *path));
    return;
  }
  ShowFailure("\"" + title_ + "\" was not saved as " + *path + ": " + reason +
              ". A file of this name that was there before is unchanged. Choose another folder, or "
              "make room, and save again.");
}

PrintResult PrintDocument(QWidget* parent, const std::string& title, const PageDrawer& draw) {
  PrintResult result = PrintResult::Cancelled;
  RunDialog<PrintPreview>(std::make_unique<PrintPreview>(parent, title, draw),
                          [&](PrintPreview& preview, int) { result = preview.outcome(); });
  return result;
}

std::string ToPdfFileName(const std::string& title) {
  std::string name;
  for (const char c : title) {
    const bool isForbidden = static_cast<unsigned char>(c) < ' ' ||
                             std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
    name += isForbidden ? '_' : c;
  }
  return platform::Trim(name) + ".pdf";
}

}  // namespace rvx
