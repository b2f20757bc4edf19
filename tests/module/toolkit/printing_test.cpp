// Preview, PDF files, and modal dialogs whose parent is destroyed while they are open.
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>

#include "module/printing/page_text.h"
#include "module/toolkit/child_frame.h"
#include "module/toolkit/controls.h"
#include "module/toolkit/file_dialogs.h"
#include "module/toolkit/modal_dialog.h"
#include "module/toolkit/pdf.h"
#include "module/toolkit/print_preview.h"
#include "module/toolkit/qt_prompter.h"
#include "module/toolkit/run_dialog.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

void DrawTwoPages(PrintPage& page) {
  const PageFont font{20.0, PageFont::kBold};
  const PageBox area = page.GetPrintableArea();
  page.DrawFrame(area, 1.0);
  page.DrawText(area, {font}, PageNumberText(page));
  page.NewPage();
  page.DrawText(area, {font}, PageNumberText(page));
}

QByteArray ReadFile(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void Click(QDialog& dialog, const char* button) {
  QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
}

TEST(PdfTest, PagesHaveThePapersSizeInHundredthsOfAnInch) {
  for (const auto& [paper, size, box] :
       {std::tuple{Paper::A4, PageSize{827.0, 1169.0}, "/MediaBox [0 0 595."},
        std::tuple{Paper::Letter, PageSize{850.0, 1100.0}, "/MediaBox [0 0 612."}}) {
    const std::string pdf = RenderPdf("Sheet", paper, [size = size](PrintPage& page) {
      EXPECT_NEAR(page.GetSheetSize().width, size.width, 1.0);
      EXPECT_NEAR(page.GetSheetSize().height, size.height, 1.0);
      EXPECT_NEAR(page.GetPrintableArea().left, 25.0, 1.0);
      // Text widths are proportional to the height, so a sheet that is scaled down breaks its lines
      // at the same places.
      const double width = page.GetTextWidth({20.0}, "RVX Cell Calibration Constants");
      EXPECT_NEAR(page.GetTextWidth({10.0}, "RVX Cell Calibration Constants"), width / 2, 1e-6);
      EXPECT_GT(page.GetTextWidth({20.0, PageFont::kBold}, "RVX Cell Calibration Constants"),
                width);
      DrawTwoPages(page);
    });
    EXPECT_EQ(pdf.rfind("%PDF-", 0), 0u);
    EXPECT_NE(pdf.find("/Count 2"), std::string::npos);
    EXPECT_NE(pdf.find(box), std::string::npos) << pdf.substr(pdf.find("/MediaBox"), 40);
  }
}

TEST(PrintPreviewTest, ADocumentIsSavedAsPdf) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("kept");
  WhenShown<PrintPreview>([&](PrintPreview& preview) {
    preview.findChild<QComboBox*>("paper")->setCurrentIndex(static_cast<int>(Paper::Letter));
    WhenShown<QFileDialog>([&](QFileDialog& dialog) {
      EXPECT_EQ(dialog.selectedFiles().front().section('/', -1), "Settings (RVX 0h _ Cell 7).pdf");
      dialog.selectFile(path);
      QMetaObject::invokeMethod(&dialog, "accept");
    });
    Click(preview, "save");
    EXPECT_EQ(preview.findChild<QLabel*>("status")->text(), "Saved as " + path + ".pdf");
    Click(preview, "close");
  });
  EXPECT_EQ(PrintDocument(nullptr, "Settings (RVX 0h : Cell 7)", DrawTwoPages), PrintResult::Saved);
  const QByteArray pdf = ReadFile(path + ".pdf");
  EXPECT_TRUE(pdf.contains("/MediaBox [0 0 612."));
  EXPECT_TRUE(pdf.contains("/Count 2"));
}

TEST(PrintPreviewTest, WhatFailsIsSaidAndThePreviewStays) {
  BeepCounter prompter;
  WhenShown<PrintPreview>([&](PrintPreview& preview) {
    Click(preview, "print");  // there is no printer where tests run
    WhenShown<QFileDialog>([](QFileDialog& dialog) {
      dialog.selectFile("/dev/null/sheet.pdf");
      static_cast<QDialog&>(dialog).done(QDialog::Accepted);
    });
    Click(preview, "save");
    EXPECT_TRUE(preview.isVisible());
    QTest::keyClick(&preview, Qt::Key_Escape);
  });
  EXPECT_EQ(PrintDocument(nullptr, "Sheet", DrawTwoPages), PrintResult::Cancelled);
  ASSERT_EQ(prompter.messages.size(), 2u);
  EXPECT_NE(prompter.messages[0].find("no printer is set up"), std::string::npos);
  EXPECT_NE(prompter.messages[1].find("was not saved as /dev/null/sheet.pdf: "), std::string::npos);
}

// A closing instrument destroys its frames, even while dialogs are open above them.
class DialogOverAFrameTest : public testing::Test {
 protected:
  void SetUp() override {
    frame_->show();
    frame_->activateWindow();
    ASSERT_TRUE(PumpUntil([this] { return frame_->isActiveWindow(); }));
  }
  void TearDown() override { EXPECT_TRUE(frame_.isNull()); }

  // Destroys the frame as soon as a dialog of this class is open.
  template <class Dialog>
  void DestroyFrameUnder() {
    WhenShown<Dialog>([this](Dialog&) { delete frame_; });
  }

  const QPointer<CChildFrame> frame_ = new CChildFrame;
};

TEST_F(DialogOverAFrameTest, AFileDialogIsCancelled) {
  DestroyFrameUnder<QFileDialog>();
  EXPECT_EQ(ChooseFile(frame_, "File", "x.txt", "Text (*.txt)", /*mayBeNew=*/true), std::nullopt);
}

TEST_F(DialogOverAFrameTest, AFolderDialogIsCancelled) {
  DestroyFrameUnder<QFileDialog>();
  EXPECT_EQ(ChooseFolder(frame_, "Folder", ""), std::nullopt);
}

TEST_F(DialogOverAFrameTest, AQuestionConfirmsNothing) {
  QtPrompter prompter;
  DestroyFrameUnder<QMessageBox>();
  EXPECT_EQ(prompter.ShowMessage("Stop?", platform::MessageButtons::YesNo,
                                 platform::MessageIcon::Question),
            platform::MessageAnswer::No);
}

TEST_F(DialogOverAFrameTest, ADialogWhoseOkShowsAMessageIsCancelled) {
  class Refusing final : public CModalDialog {
   public:
    explicit Refusing(QWidget* parent) : CModalDialog(parent) {
      auto* ok = new QPushButton(this);
      ok->setProperty("controlId", kOkId);
      BindButtons();
    }
    bool OnOk() override {
      QtPrompter().ShowMessage("Stored.", platform::MessageButtons::Ok,
                               platform::MessageIcon::Information);
      return true;
    }
  };
  WhenShown<Refusing>([this](Refusing& dialog) {
    DestroyFrameUnder<QMessageBox>();
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  EXPECT_EQ(RunDialog(std::make_unique<Refusing>(frame_)), QDialog::Rejected);
}

TEST_F(DialogOverAFrameTest, APreviewIsCancelled) {
  DestroyFrameUnder<PrintPreview>();
  EXPECT_EQ(PrintDocument(frame_, "Sheet", DrawTwoPages), PrintResult::Cancelled);
}

TEST_F(DialogOverAFrameTest, APreviewWithItsFileDialogIsCancelled) {
  WhenShown<PrintPreview>([this](PrintPreview& preview) {
    DestroyFrameUnder<QFileDialog>();
    Click(preview, "save");
  });
  EXPECT_EQ(PrintDocument(frame_, "Sheet", DrawTwoPages), PrintResult::Cancelled);
}

}  // namespace
}  // namespace rvx
