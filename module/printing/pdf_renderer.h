// How a floor without the window toolkit makes a PDF.
#pragma once

#include <optional>
#include <string>

#include "boundary/printed_sheets.h"
#include "module/printing/page.h"

namespace rvx {

// Draws the document and returns the bytes of a PDF file with this title; empty if it could not be
// made. Without `paper`: the usual one of the user's country. Any thread, in a process with or
// without windows.
using PdfRenderer = std::string (*)(const std::string& title, std::optional<Paper> paper,
                                    const PageDrawer& draw);

// The renderer that is set; null before the module's entry has set one. Any thread.
PdfRenderer GetPdfRenderer();
void SetPdfRenderer(PdfRenderer renderer);

}  // namespace rvx
