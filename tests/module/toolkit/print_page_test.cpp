#include "module/toolkit/print_page.h"

#include <QFile>
#include <QTemporaryDir>

#include "tests/support/gui.h"

namespace rvx {
namespace {

TEST(PrintPageTest, APageIsDrawnInHundredthsOfAnInch) {
  const QTemporaryDir folder;
  const std::string path = folder.filePath("page.pdf").toStdString();
  QSize sheet;
  int lineHeight = 0;
  ASSERT_TRUE(PrintToPdf(path, "Sample list", [&](PrintPage& page) {
    sheet = page.GetPhysicalSize();
    const QPoint offset = page.GetPhysicalOffset();
    EXPECT_GE(offset.x(), 0);
    EXPECT_LT(offset.y(), 100);
    page.SetFont(20, 700);
    lineHeight = page.DrawText(QRect(100, 100, 500, 40), TextPlace::Centre, "Sample list");
    const int two = page.DrawText(QRect(100, 150, 500, 80), TextPlace::Left, "one\ntwo");
    EXPECT_GT(two, lineHeight);
    page.DrawFrame(QRect(100, 100, 500, 130), 1);
    page.DrawLine(QPoint(100, 150), QPoint(600, 150), 1);
  }));
  // A4 or Letter, by the system's paper.
  EXPECT_TRUE(sheet == QSize(827, 1169) || sheet == QSize(850, 1100)) << sheet.width();
  // A face 20 high makes lines a little higher than that, at any resolution of the device.
  EXPECT_GE(lineHeight, 20);
  EXPECT_LE(lineHeight, 30);
  QFile file(QString::fromStdString(path));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray bytes = file.readAll();
  EXPECT_TRUE(bytes.startsWith("%PDF-"));
  EXPECT_TRUE(bytes.contains("/Count 1"));
}

TEST(PrintPageTest, APathThatCantBeWrittenIsAFailure) {
  EXPECT_FALSE(PrintToPdf("/nowhere/at/all/page.pdf", "Sample list", [](PrintPage&) {}));
}

}  // namespace
}  // namespace rvx
