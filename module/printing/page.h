// The page that a sheet is laid out on; it may be drawn by a printer, to a PDF file, in a preview,
// or to a record in a test. A sheet uses nothing else for printing, so its layout can be tested
// line by line and is the same on paper, on the screen and from the command line.
//
// All measures are in hundredths of an inch. x grows to the right and y downwards, both from the
// upper left corner of the sheet itself.
#pragma once

#include <functional>
#include <string>

namespace rvx {

struct PagePoint {
  double x = 0.0, y = 0.0;
};

struct PageSize {
  double width = 0.0, height = 0.0;
};

struct PageBox {
  double left = 0.0, top = 0.0, right = 0.0, bottom = 0.0;
  double width() const { return right - left; }
  double height() const { return bottom - top; }
};

// A face of the Arial family, or of what the system has in its place.
struct PageFont {
  static constexpr int kNormal = 400;
  static constexpr int kBold = 700;

  double height = 15.0;  // of a line, from the top of the highest letter to the lowest descender
  int weight = kNormal;  // 100 to 900
  bool italic = false;
  bool underline = false;
};

enum class TextPlace { Left, Centre, Right };
enum class TextLevel { Top, Middle, Bottom };

struct TextStyle {
  PageFont font;
  TextPlace place = TextPlace::Left;
  TextLevel level = TextLevel::Bottom;
};

// One thread at a time. A device that fails (a printer that is switched off) is reported by the
// owner of the device; the sheet goes on drawing and need not check.
class PrintPage {
 public:
  virtual ~PrintPage() = default;

  // The whole sheet, and the part of it that the device can print on.
  virtual PageSize GetSheetSize() const = 0;
  virtual PageBox GetPrintableArea() const = 0;

  // The width of one line of UTF-8 text. Its height is that of the font.
  virtual double GetTextWidth(const PageFont& font, const std::string& text) const = 0;

  // One line of UTF-8 text, cut off at the edges of the box. For text that may be too long see
  // page_text.h.
  virtual void DrawText(const PageBox& box, const TextStyle& style, const std::string& text) = 0;
  virtual void DrawLine(PagePoint from, PagePoint to, double width) = 0;
  virtual void DrawFrame(const PageBox& box, double width) = 0;

  // Ends this page and begins another one of the same size.
  virtual void NewPage() = 0;
  // The page being drawn, from 1, and the pages of the whole document. While the pages are being
  // counted the second is 1, so no layout may depend on it.
  virtual int GetPageNumber() const = 0;
  virtual int GetPageCount() const = 0;
};

// Draws a whole document. It is called several times (to count the pages, for a preview, for the
// printer), each time with the same result: it has copies of its data, and uses no lock and no
// window.
using PageDrawer = std::function<void(PrintPage&)>;

// The number of pages that the document has on paper like this page's; draws nothing.
int CountPages(const PrintPage& page, const PageDrawer& draw);

}  // namespace rvx
