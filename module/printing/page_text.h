// Texts that have to fit: shortened, set smaller, or broken into lines.
#pragma once

#include <string>
#include <vector>

#include "module/printing/page.h"

namespace rvx {

// The text if it is at most `width` wide, else its beginning with an ellipsis; empty where not even
// that fits.
std::string ShortenText(const PrintPage& page, const PageFont& font, const std::string& text,
                        double width);

// The font in which the text is at most `width` wide, but not below `leastHeight`.
PageFont FitFont(const PrintPage& page, const PageFont& font, const std::string& text, double width,
                 double leastHeight);

// The text in lines of at most `width`, broken at blanks and at line feeds; a word that is wider is
// broken inside. At least one line.
std::vector<std::string> WrapText(const PrintPage& page, const PageFont& font,
                                  const std::string& text, double width);

// Draws one line that stays inside its box: set smaller, down to `leastHeight`, then shortened.
void DrawFitted(PrintPage& page, const PageBox& box, const TextStyle& style,
                const std::string& text, double leastHeight);

// "Page 1 of 2".
std::string PageNumberText(const PrintPage& page);

}  // namespace rvx
