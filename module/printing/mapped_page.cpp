#include "module/printing/mapped_page.h"

#include <algorithm>

namespace rvx {

MappedPage::MappedPage(PrintPage& beneath, PagePoint origin, double scale)
    : beneath_(beneath), origin_(origin), scale_(scale) {}

PagePoint MappedPage::ToBeneath(PagePoint point) const {
  return {origin_.x + point.x * scale_, origin_.y + point.y * scale_};
}

PageBox MappedPage::ToBeneath(const PageBox& box) const {
  const PagePoint corner = ToBeneath(PagePoint{box.left, box.top});
  return {corner.x, corner.y, corner.x + box.width() * scale_, corner.y + box.height() * scale_};
}

PageFont MappedPage::ToBeneath(PageFont font) const {
  font.height *= scale_;
  return font;
}

PageSize MappedPage::GetSheetSize() const {
  const PageSize size = beneath_.GetSheetSize();
  return {size.width / scale_, size.height / scale_};
}

PageBox MappedPage::GetPrintableArea() const {
  const PageBox area = beneath_.GetPrintableArea();
  return {(area.left - origin_.x) / scale_, (area.top - origin_.y) / scale_,
          (area.right - origin_.x) / scale_, (area.bottom - origin_.y) / scale_};
}

double MappedPage::GetTextWidth(const PageFont& font, const std::string& text) const {
  return beneath_.GetTextWidth(ToBeneath(font), text) / scale_;
}

void MappedPage::DrawText(const PageBox& box, const TextStyle& style, const std::string& text) {
  TextStyle mapped = style;
  mapped.font = ToBeneath(style.font);
  beneath_.DrawText(ToBeneath(box), mapped, text);
}

void MappedPage::DrawLine(PagePoint from, PagePoint to, double width) {
  beneath_.DrawLine(ToBeneath(from), ToBeneath(to), width * scale_);
}

void MappedPage::DrawFrame(const PageBox& box, double width) {
  beneath_.DrawFrame(ToBeneath(box), width * scale_);
}

MappedPage FitToPrintableWidth(PrintPage& page, double width) {
  const PageBox area = page.GetPrintableArea();
  return {page, {area.left, area.top}, std::min(1.0, area.width() / width)};
}

}  // namespace rvx
