#include "module/printing/page_table.h"

#include <algorithm>
#include <utility>

#include "module/printing/page_text.h"

namespace rvx {
namespace {

// Left free in a column, so that two long texts do not look like one.
constexpr double kColumnGap = 4.0;
// A heading that is too long is set smaller before it is shortened.
constexpr double kMinHeadHeight = 10.0;

// The box of one line of a column. Right-aligned text keeps a gap, or it would touch the next
// column's.
PageBox LineBox(const PageColumn& column, double left, double top, double height) {
  const double gap = column.place == TextPlace::Right ? kColumnGap : 0.0;
  return {left, top, left + column.width - gap, top + height};
}

}  // namespace

PageTable::PageTable(std::vector<PageColumn> columns, const PageTableStyle& style)
    : columns_(std::move(columns)), style_(style) {}

double PageTable::GetWidth() const {
  double width = 0.0;
  for (const PageColumn& column : columns_) width += column.width;
  return width;
}

double PageTable::GetHeadHeight() const {
  const bool hasUnits = std::any_of(columns_.begin(), columns_.end(),
                                    [](const PageColumn& column) { return !column.unit.empty(); });
  return style_.lineStep + (hasUnits ? style_.unitStep : 0.0) + style_.headGap;
}

PageTable::Row PageTable::CellLines(const PrintPage& page, const PageColumn& column,
                                    const std::string& text) const {
  const double width = column.width - kColumnGap;
  if (column.wraps) return WrapText(page, style_.cellFont, text, width);
  return {ShortenText(page, style_.cellFont, text, width)};
}

double PageTable::GetRowHeight(const PrintPage& page, const Row& row) const {
  size_t lines = 1;
  for (size_t i = 0; i < columns_.size(); ++i) {
    lines = std::max(lines, CellLines(page, columns_[i], row.at(i)).size());
  }
  return static_cast<double>(lines) * style_.lineStep;
}

void PageTable::DrawHead(PrintPage& page, double top) const {
  double left = style_.left;
  const auto drawText = [&](const PageColumn& column, double lineTop, const std::string& text) {
    const double width = column.width - kColumnGap;
    const PageFont font = FitFont(page, style_.headFont, text, width, kMinHeadHeight);
    page.DrawText(LineBox(column, left, lineTop, style_.lineStep),
                  {font, column.place, TextLevel::Bottom}, ShortenText(page, font, text, width));
  };
  for (const PageColumn& column : columns_) {
    drawText(column, top, column.heading);
    if (!column.unit.empty()) drawText(column, top + style_.unitStep, column.unit);
    left += column.width;
  }
  if (style_.rule > 0.0) {
    const double y = top + GetHeadHeight() - style_.headGap / 2;
    page.DrawLine({style_.left, y}, {left, y}, style_.rule);
  }
}

void PageTable::DrawRow(PrintPage& page, double top, const Row& row) const {
  double left = style_.left;
  for (size_t i = 0; i < columns_.size(); ++i) {
    const PageColumn& column = columns_[i];
    double lineTop = top;
    for (const std::string& line : CellLines(page, column, row.at(i))) {
      page.DrawText(LineBox(column, left, lineTop, style_.lineStep),
                    {style_.cellFont, column.place, TextLevel::Bottom}, line);
      lineTop += style_.lineStep;
    }
    left += column.width;
  }
}

void PageTable::Draw(PageFlow& flow, const std::vector<Row>& rows) const {
  const auto drawHead = [&] {
    DrawHead(flow.page(), flow.y());
    flow.Skip(GetHeadHeight());
  };
  bool hasHead = false;
  for (const Row& row : rows) {
    const double height = GetRowHeight(flow.page(), row);
    // A head must not be alone at the end of a page.
    const bool isNewPage = flow.MakeRoom(height + (hasHead ? 0.0 : GetHeadHeight()));
    if (isNewPage || !hasHead) drawHead();
    hasHead = true;
    DrawRow(flow.page(), flow.y(), row);
    flow.Skip(height);
  }
  if (!hasHead) {
    flow.MakeRoom(GetHeadHeight());
    drawHead();
  }
}

}  // namespace rvx
