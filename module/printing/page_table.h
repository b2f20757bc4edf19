// A table on a page, or over several.
#pragma once

#include <string>
#include <vector>

#include "module/printing/page_flow.h"

namespace rvx {

struct PageColumn {
  std::string heading;
  std::string unit;  // below the heading; may be empty
  double width = 0.0;
  TextPlace place = TextPlace::Centre;
  bool wraps = false;  // a text that is too long continues on the next line; else it is shortened
};

struct PageTableStyle {
  double left = 0.0;  // of the first column; the others follow side by side
  PageFont headFont{15.0, PageFont::kBold};
  PageFont cellFont{15.0};
  double lineStep = 20.0;  // from one line of a row to the next, and the height of a line
  double unitStep = 15.0;  // from the headings to the units
  double headGap = 0.0;    // between head and first row
  double rule = 0.0;       // width of the line below the head; 0: none
};

// Texts never leave their column, and keep a small distance from those of the next one.
class PageTable {
 public:
  using Row = std::vector<std::string>;  // a text for each column

  PageTable(std::vector<PageColumn> columns, const PageTableStyle& style);

  double GetWidth() const;
  double GetHeadHeight() const;
  double GetRowHeight(const PrintPage& page, const Row& row) const;
  void DrawHead(PrintPage& page, double top) const;
  void DrawRow(PrintPage& page, double top, const Row& row) const;
  // Head and rows; the head again on every further page. A row is never divided.
  void Draw(PageFlow& flow, const std::vector<Row>& rows) const;

 private:
  Row CellLines(const PrintPage& page, const PageColumn& column, const std::string& text) const;

  const std::vector<PageColumn> columns_;
  const PageTableStyle style_;
};

}  // namespace rvx
