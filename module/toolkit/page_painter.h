// Draws an abstract page with the window toolkit.
#pragma once

#include "boundary/printed_sheets.h"
#include "module/printing/page.h"

class QPagedPaintDevice;
class QPageSize;

namespace rvx {

QPageSize ToPageSize(Paper paper);

// The paper that is usual in the user's country.
Paper GetUsualPaper();

// Draws the document on a printer, on the printer of a preview or on a PDF writer. Returns false if
// the device fails. The origin is the sheet's corner, whatever part of the sheet the device can
// print on. Any thread, one at a time for each device.
bool DrawDocument(QPagedPaintDevice& device, const PageDrawer& draw);

}  // namespace rvx
