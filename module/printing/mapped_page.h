// A page with its own origin and scale.
#pragma once

#include "module/printing/page.h"

namespace rvx {

// For a sheet whose layout begins elsewhere than at the paper's corner, or which is wider than the
// paper: everything drawn on it goes to the page beneath, moved and scaled.
class MappedPage final : public PrintPage {
 public:
  // `origin` is where this page's 0, 0 lies on the page beneath, which must outlive it.
  MappedPage(PrintPage& beneath, PagePoint origin, double scale);

  PageSize GetSheetSize() const override;
  PageBox GetPrintableArea() const override;
  double GetTextWidth(const PageFont& font, const std::string& text) const override;
  void DrawText(const PageBox& box, const TextStyle& style, const std::string& text) override;
  void DrawLine(PagePoint from, PagePoint to, double width) override;
  void DrawFrame(const PageBox& box, double width) override;
  void NewPage() override { beneath_.NewPage(); }
  int GetPageNumber() const override { return beneath_.GetPageNumber(); }
  int GetPageCount() const override { return beneath_.GetPageCount(); }

 private:
  PagePoint ToBeneath(PagePoint point) const;
  PageBox ToBeneath(const PageBox& box) const;
  PageFont ToBeneath(PageFont font) const;

  PrintPage& beneath_;
  const PagePoint origin_;
  const double scale_;
};

// A page for a layout that needs `width` from the left edge of the printable area on: its origin is
// that area's upper left corner, and it is made smaller if the area is narrower.
MappedPage FitToPrintableWidth(PrintPage& page, double width);

}  // namespace rvx
