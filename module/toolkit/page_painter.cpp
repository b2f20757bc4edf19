#include "module/toolkit/page_painter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QLocale>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <algorithm>
#include <array>

namespace rvx {
namespace {

constexpr double kUnitsPerInch = 100.0;

// Makes the font at one size, in pixels, for all heights. The toolkit rounds sizes to whole pixels,
// so widths would not grow evenly with the height, and a preview would break lines at other places
// than a printer. Text that is drawn at one size and scaled keeps its proportions.
QFont MakeFont(const PageFont& wanted) {
  constexpr int kPixels = 200;
  QFont font(QStringLiteral("Arial"));
  font.setWeight(static_cast<QFont::Weight>(wanted.weight));
  font.setItalic(wanted.italic);
  font.setUnderline(wanted.underline);
  font.setHintingPreference(QFont::PreferNoHinting);
  font.setPixelSize(kPixels);
  return font;
}

// The factor by which the font of MakeFont is scaled to the height of `wanted`.
double ScaleOf(const PageFont& wanted, const QFontMetricsF& metrics) {
  return wanted.height / metrics.height();
}

int ToFlags(const TextStyle& style) {
  constexpr std::array kPlaces = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
  constexpr std::array kLevels = {Qt::AlignTop, Qt::AlignVCenter, Qt::AlignBottom};
  return kPlaces.at(static_cast<size_t>(style.place)) |
         kLevels.at(static_cast<size_t>(style.level)) | Qt::TextSingleLine;
}

class PagePainter final : public PrintPage {
 public:
  // Both are the caller's and must outlive it.
  PagePainter(QPagedPaintDevice& device, QPainter& painter)
      : device_(device), painter_(painter), scale_(device.logicalDpiX() / kUnitsPerInch) {}

  void SetPageCount(int count) { count_ = count; }

  PageSize GetSheetSize() const override {
    const QSizeF inches = device_.pageLayout().fullRect(QPageLayout::Inch).size();
    return {inches.width() * kUnitsPerInch, inches.height() * kUnitsPerInch};
  }

  PageBox GetPrintableArea() const override {
    const PageSize sheet = GetSheetSize();
    const QMarginsF inches = device_.pageLayout().margins(QPageLayout::Inch);
    return {inches.left() * kUnitsPerInch, inches.top() * kUnitsPerInch,
            sheet.width - inches.right() * kUnitsPerInch,
            sheet.height - inches.bottom() * kUnitsPerInch};
  }

  double GetTextWidth(const PageFont& font, const std::string& text) const override {
    const QFontMetricsF metrics(MakeFont(font));
    return metrics.horizontalAdvance(QString::fromStdString(text)) * ScaleOf(font, metrics);
  }

  void DrawText(const PageBox& box, const TextStyle& style, const std::string& text) override {
    const QFont font = MakeFont(style.font);
    const double scale = ScaleOf(style.font, QFontMetricsF(font));
    painter_.save();
    painter_.setFont(font);
    painter_.setPen(Qt::black);
    painter_.translate(ToDevice(box).topLeft());
    painter_.scale(scale * scale_, scale * scale_);
    painter_.drawText(QRectF(0.0, 0.0, box.width() / scale, box.height() / scale), ToFlags(style),
                      QString::fromStdString(text));
    painter_.restore();
  }

  void DrawLine(PagePoint from, PagePoint to, double width) override {
    painter_.setPen(QPen(Qt::black, width * scale_));
    painter_.drawLine(QPointF(from.x, from.y) * scale_, QPointF(to.x, to.y) * scale_);
  }

  void DrawFrame(const PageBox& box, double width) override {
    painter_.setPen(QPen(Qt::black, width * scale_));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRect(ToDevice(box));
  }

  void NewPage() override {
    if (!device_.newPage()) failed_ = true;
    ++number_;
  }
  int GetPageNumber() const override { return number_; }
  int GetPageCount() const override { return count_; }
  bool HasFailed() const { return failed_; }

 private:
  QRectF ToDevice(const PageBox& box) const {
    return {box.left * scale_, box.top * scale_, box.width() * scale_, box.height() * scale_};
  }

  QPagedPaintDevice& device_;
  QPainter& painter_;
  const double scale_;  // pixels of the device for each unit
  int number_ = 1;
  int count_ = 1;
  bool failed_ = false;
};

}  // namespace

QPageSize ToPageSize(Paper paper) {
  return QPageSize(paper == Paper::Letter ? QPageSize::Letter : QPageSize::A4);
}

Paper GetUsualPaper() {
  constexpr std::array kLetterCountries = {
      QLocale::UnitedStates, QLocale::Canada,    QLocale::Mexico,    QLocale::Philippines,
      QLocale::PuertoRico,   QLocale::Colombia,  QLocale::Venezuela, QLocale::Chile,
      QLocale::Guatemala,    QLocale::CostaRica, QLocale::Panama,    QLocale::DominicanRepublic,
      QLocale::ElSalvador,   QLocale::Nicaragua,
  };
  const auto country = QLocale::system().territory();
  return std::find(kLetterCountries.begin(), kLetterCountries.end(), country) !=
                 kLetterCountries.end()
             ? Paper::Letter
             : Paper::A4;
}

bool DrawDocument(QPagedPaintDevice& device, const PageDrawer& draw) {
  QPageLayout layout = device.pageLayout();
  layout.setMode(QPageLayout::FullPageMode);
  if (!device.setPageLayout(layout)) return false;
  QPainter painter;
  if (!painter.begin(&device)) return false;
  PagePainter page(device, painter);
  page.SetPageCount(CountPages(page, draw));
  draw(page);
  return painter.end() && !page.HasFailed();
}

}  // namespace rvx
