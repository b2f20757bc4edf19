#include "module/printing/page.h"

namespace rvx {
namespace {

// Has the measures of another page, draws nothing and counts the pages.
class CountingPage final : public PrintPage {
 public:
  explicit CountingPage(const PrintPage& page) : page_(page) {}

  PageSize GetSheetSize() const override { return page_.GetSheetSize(); }
  PageBox GetPrintableArea() const override { return page_.GetPrintableArea(); }
  double GetTextWidth(const PageFont& font, const std::string& text) const override {
    return page_.GetTextWidth(font, text);
  }
  void DrawText(const PageBox&, const TextStyle&, const std::string&) override {}
  void DrawLine(PagePoint, PagePoint, double) override {}
  void DrawFrame(const PageBox&, double) override {}
  void NewPage() override { ++number_; }
  int GetPageNumber() const override { return number_; }
  int GetPageCount() const override { return 1; }

 private:
  const PrintPage& page_;
  int number_ = 1;
};

}  // namespace

int CountPages(const PrintPage& page, const PageDrawer& draw) {
  CountingPage counting(page);
  draw(counting);
  return counting.GetPageNumber();
}

}  // namespace rvx
