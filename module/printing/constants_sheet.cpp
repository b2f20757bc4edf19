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

// The layout begins at the printable area's corner and is this wide.
constexpr double kWidth = 750.0;
constexpr double kTop = 25.0;
constexpr double kFootHeight = 20.0;
constexpr double kBelowFoot = 25.0;

constexpr PageFont kTitleFont{30.0, PageFont::kBold};
constexpr PageFont kSubtitleFont{20.0};
constexpr PageFont kLabelFont{15.0, PageFont::kBold};
constexpr PageFont kValueFont{15.0};
constexpr double kLeastHeight = 10.0;
constexpr double kLineStep = 20.0;

void DrawHeading(PageFlow& flow, const TextStyle& style, double height, const std::string& text) {
  DrawFitted(flow.page(), {0.0, flow.y(), kWidth, flow.y() + height}, style, text, kLeastHeight);
  flow.Skip(height);
}

void DrawField(PageFlow& flow, const std::string& label, const std::string& value) {
  constexpr double kLabelLeft = 50.0;
  constexpr double kValueLeft = 250.0;
  const double bottom = flow.y() + kLineStep;
  DrawFitted(flow.page(), {kLabelLeft, flow.y(), kValueLeft, bottom}, {kLabelFont}, label,
             kLeastHeight);
  DrawFitted(flow.page(), {kValueLeft, flow.y(), kWidth, bottom}, {kValueFont}, value,
             kLeastHeight);
  flow.Skip(kLineStep);
}

PageTable::Row MakeRow(const CellConstants& cell) {
  const std::string temperature = platform::FormatText("%.f", cell.temperature);
  // Zeros would look like a result, and the date of a cell that was never calibrated like a day.
  if (cell.empty) return {temperature, "-", "-", "-", "not calibrated"};
  return {temperature, platform::FormatText("%.f", cell.b0), platform::FormatText("%.f", cell.b1),
          platform::FormatText("%.f", cell.b2), platform::FormatLocalDate(cell.date)};
}

PageTable MakeTable() {
  constexpr double kConstant = 110.0;
  PageTableStyle style;
  style.left = 50.0;
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
  const double footBottom = page.GetPrintableArea().bottom - kBelowFoot;
  const double footTop = footBottom - kFootHeight;
  PageFlow flow(page, kTop, footTop - kLineStep, [&](PrintPage& foot) {
    foot.DrawText({0.0, footTop, kWidth, footBottom}, {kValueFont, TextPlace::Centre},
                  PageNumberText(foot));
  });

  const InstrumentIdentity& instrument = sheet.instrument;
  DrawHeading(flow, {kTitleFont, TextPlace::Centre}, 2 * kLineStep,
              "HALDEN Cold-Cranking Simulator");
  DrawHeading(flow, {kSubtitleFont, TextPlace::Centre}, 1.5 * kLineStep, kName);
  DrawHeading(flow, {kSubtitleFont, TextPlace::Centre}, 1.5 * kLineStep,
              platform::FormatLocalDate(sheet.printTime));
  flow.Skip(kLineStep);
  DrawField(flow, "Instrument : ", sheet.portAddress);
  DrawField(flow, "Instrument ID : ", sheet.instrumentId);
  DrawField(flow,
            "Instrument Model : ", instrument.model + (instrument.simulated ? " (simulated)" : ""));
  DrawField(flow, "Instrument S/N : ", instrument.serialNumber);
  DrawField(flow, "Printed By : ", sheet.user);
  flow.Skip(2 * kLineStep);

  std::vector<PageTable::Row> rows;
  for (const CellConstants& cell : sheet.constants) rows.push_back(MakeRow(cell));
  MakeTable().Draw(flow, rows);
  flow.Finish();
}

}  // namespace rvx
