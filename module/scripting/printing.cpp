// Printed sheets of an instrument by program.
#include "module/instrument/problems.h"
#include "module/printing/constants_sheet.h"
#include "module/printing/pdf_renderer.h"
#include "module/scripting/scriptable_instrument.h"
#include "platform/time_base.h"

namespace rvx {
namespace {

struct Document {
  std::string title;
  PageDrawer draw;
};

Document MakeConstantsDocument(ScriptableInstrument& instrument) {
  ConstantsSheet sheet{instrument.GetIdentity(),
                       instrument.GetInstrumentId(),
                       instrument.GetPortAddressText(),
                       instrument.GetCellConstants(),
                       std::string(),
                       platform::LocalNow()};
  GetSecurityManager()->GetUserName(sheet.user);
  const std::string title = GetTitle(sheet);
  return {title, [sheet = std::move(sheet)](PrintPage& page) { DrawSheet(page, sheet); }};
}

}  // namespace

ScriptingResult ScriptableInstrument::MakePdf(const SheetRequest& request, std::string& pdf) {
  const Document document = MakeConstantsDocument(*this);  // the only kind so far
  const PdfRenderer render = GetPdfRenderer();
  std::string bytes;
  if (render != nullptr) bytes = render(document.title, request.paper, document.draw);
  if (bytes.empty()) {
    return Unable(Code::NotDrawn, "\"" + document.title + "\" could not be drawn as PDF.",
                  "Nothing was written. The computer may be short of memory, or the installation "
                  "incomplete; try again, and install the program anew if that does not help.");
  }
  pdf = std::move(bytes);
  return std::nullopt;
}

}  // namespace rvx
