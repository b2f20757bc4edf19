// Printing: pages that are drawn in hundredths of an inch.
#pragma once

#include <QRect>
#include <QSize>
#include <functional>
#include <string>

class QPainter;
class QPrinter;
class QWidget;

namespace rvx {

enum class TextPlace { Left, Centre, Right };

// The page being drawn. All measures are in hundredths of an inch from the upper left corner of the
// sheet itself, not of the part that the printer can reach.
class PrintPage {
 public:
  // Both are the caller's and must outlive it.
  PrintPage(QPrinter& printer, QPainter& painter);

  // The whole sheet.
  QSize GetPhysicalSize() const;
  // How far the part that can be printed lies inside the sheet, at the left and at the top.
  QPoint GetPhysicalOffset() const;

  // The face of the texts that follow: Arial, or what the system has in its place. `weight` from
  // 100 to 900, 400 is normal.
  void SetFont(int height, int weight = 400);
  // One line or several, at the top of the rectangle and cut at its edges. The height it takes.
  int DrawText(const QRect& rectangle, TextPlace place, const std::string& text);
  void DrawLine(QPoint from, QPoint to, int width);
  void DrawFrame(const QRect& rectangle, int width);
  // Ends this page and begins another of the same size: false if the printer has failed.
  bool NewPage();

 private:
  double Scale() const;
  QRectF ToDevice(const QRect& rectangle) const;

  QPrinter& printer_;
  QPainter& painter_;
};

using PageDrawer = std::function<void(PrintPage&)>;

enum class PrintResult { Printed, Cancelled, Failed };

// Asks for the printer and draws; a printer that can't be used is told to the user here. GUI
// thread.
PrintResult PrintWithDialog(QWidget* parent, const std::string& title, const PageDrawer& draw);

// Draws into a PDF file, in the printer's default page size: false if it can't be written.
bool PrintToPdf(const std::string& path, const std::string& title, const PageDrawer& draw);

}  // namespace rvx
