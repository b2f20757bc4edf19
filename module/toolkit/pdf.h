// Documents as PDF.
#pragma once

#include <optional>
#include <string>

#include "boundary/printed_sheets.h"
#include "module/printing/page.h"

namespace rvx {

// Draws the document and returns the bytes of a PDF file with this title; empty if it could not be
// made. Without `paper`: the usual one of the user's country. Any thread. In a process that has no
// windows the toolkit's fonts are set up for the length of the call.
std::string RenderPdf(const std::string& title, std::optional<Paper> paper, const PageDrawer& draw);

}  // namespace rvx
