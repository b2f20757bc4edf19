#include "module/printing/constants_sheet.h"

#include "module/printing/mapped_page.h"
#include "module/printing/page_flow.h"
#include "module/printing/page_table.h"
#include "module/printing/page_text.h"
#include "platform/local_date.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kName[] = "Current Cell Calibration Constants";

// The width of the layout; on wider paper the margins are larger on both sides.
constexpr double kWidth = 750.0;
// The width of the fields and the table, which are centred.
constexpr double kBlockWidth = 650.0;
constexpr double kTop = 25.0;
constexpr double kFootHeight = 20.0;
constexpr double kBelowFoot = 25.0;

constexpr PageFont kTitleFont{30.0, PageFont::kBold};
constexpr PageFont kSubtitleFont{20.0};
constexpr PageFont kLabelFont{15.0, PageFont::kBold};
constexpr PageFont kValueFont{15.0};
constexpr double kMinHeight = 10.0;
constexpr double kLineStep = 20.0;

// The state of the drawing.
struct Drawing {
  PageFlow& flow;
  double width;      // of the whole layout
  double blockLeft;  // of fields and table
};

void DrawHeading(Drawing& drawing, const PageFont& font, double height, const std::string& text) {
  PageFlow& flow = drawing.flow;
  DrawFitted(flow.page(), {0.0, flow.y(), drawing.width, flow.y() + height},
             {font, TextPlace::Centre}, text, kMinHeight);
  flow.Skip(height);
}

void DrawField(Drawing& drawing, const std::string& label, const std::string& value) {
  PageFlow& flow = drawing.flow;
  const double left = drawing.blockLeft;
  const double valueLeft = left + 200.0;
  const double bottom = flow.y() + kLineStep;
  DrawFitted(flow.page(), {left, flow.y(), valueLeft, bottom}, {kLabelFont}, label, kMinHeight);
  DrawFitted(flow.page(), {valueLeft, flow.y(), left + kBlockWidth, bottom}, {kValueFont}, value,
             kMinHeight);
  flow.Skip(kLineStep);
}

PageTable::Row MakeRow(const CellConstants& cell) {
  const std::string temperature = platform::FormatText("%.f", cell.temperature);
  // Zeros would look like a result, and the date that means "never calibrated" like a real one.
  if (cell.empty) return {temperature, "-", "-", "-", "not calibrated"};
  return {temperature, platform::FormatText("%.f", cell.b0), platform::FormatText("%.f", cell.b1),
          platform::FormatText("%.f", cell.b2), platform::FormatLocalDate(cell.date)};
}

PageTable MakeTable(double left) {
  constexpr double kConstant = 110.0;
  PageTableStyle style;
  style.left = left;
  style.headGap = 5.0;
  style.rule = 1.0;
  return {{{"Temperature", "(C)", 110.0},
           {"B0", "", kConstant},
           {"B1", "", kConstant},
           {"B2", "", kConstant},
           {"Last Calibration Date", "", 210.0}},
          style};
}

}  // namespace

std::string GetTitle(const ConstantsSheet& sheet) {
  std::string title = std::string(kName) + " (" + sheet.portAddress;
  if (!sheet.instrumentId.empty()) title += " : " + sheet.instrumentId;
  return title + ")";
}

void DrawSheet(PrintPage& paper, const ConstantsSheet& sheet) {
  MappedPage page = FitToPrintableWidth(paper, kWidth);
  const PageBox area = page.GetPrintableArea();
  const double footBottom = area.bottom - kBelowFoot;
  const double footTop = footBottom - kFootHeight;
  PageFlow flow(page, kTop, footTop - kLineStep, [&](PrintPage& foot) {
    foot.DrawText({0.0, footTop, area.right, footBottom}, {kValueFont, TextPlace::Centre},
                  PageNumberText(foot));
  });
  Drawing drawing{flow, area.right, (area.right - kBlockWidth) / 2};

  const InstrumentIdentity& instrument = sheet.instrument;
  DrawHeading(drawing, kTitleFont, 2 * kLineStep, "HALDEN Cold-Cranking Simulator");
  DrawHeading(drawing, kSubtitleFont, 1.5 * kLineStep, kName);
  DrawHeading(drawing, kSubtitleFont, 1.5 * kLineStep, platform::FormatLocalDate(sheet.printTime));
  flow.Skip(kLineStep);
  DrawField(drawing, "Instrument : ", sheet.portAddress);
  DrawField(drawing, "Instrument ID : ", sheet.instrumentId);
  DrawField(drawing,
            "Instrument Model : ", instrument.model + (instrument.simulated ? " (simulated)" : ""));
  DrawField(drawing, "Instrument S/N : ", instrument.serialNumber);
  DrawField(drawing, "Printed By : ", sheet.user);
  flow.Skip(2 * kLineStep);

  std::vector<PageTable::Row> rows;
  for (const CellConstants& cell : sheet.constants) rows.push_back(MakeRow(cell));
  MakeTable(drawing.blockLeft).Draw(flow, rows);
  flow.Finish();
}

}  // namespace rvx
