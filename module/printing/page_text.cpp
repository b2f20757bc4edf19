#include "module/printing/page_text.h"

#include <algorithm>

#include "platform/text.h"

namespace rvx {
namespace {

constexpr char kEllipsis[] = "\xE2\x80\xA6";

// The index after the UTF-8 character at `at`.
size_t EndOfCharacter(const std::string& text, size_t at) {
  ++at;
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  return at;
}

// The length in bytes of the longest beginning of the text, in whole characters, that `fits`
// accepts. A longer text is never narrower.
template <class Predicate>
size_t LongestThatFits(const std::string& text, const Predicate& fits) {
  std::vector<size_t> ends{0};
  for (size_t at = 0; at < text.size();) ends.push_back(at = EndOfCharacter(text, at));
  const auto tooLong = std::partition_point(ends.begin() + 1, ends.end(),
                                            [&](size_t end) { return fits(text.substr(0, end)); });
  return *(tooLong - 1);
}

}  // namespace

std::string ShortenText(const PrintPage& page, const PageFont& font, const std::string& text,
                        double width) {
  if (page.GetTextWidth(font, text) <= width) return text;
  const auto shortened = [](std::string beginning) {
    while (!beginning.empty() && beginning.back() == ' ') beginning.pop_back();
    return beginning + kEllipsis;
  };
  const auto fits = [&](const std::string& beginning) {
    return page.GetTextWidth(font, shortened(beginning)) <= width;
  };
  if (!fits("")) return {};
  return shortened(text.substr(0, LongestThatFits(text, fits)));
}

PageFont FitFont(const PrintPage& page, const PageFont& font, const std::string& text, double width,
                 double leastHeight) {
  PageFont fitted = font;
  const double present = page.GetTextWidth(font, text);
  if (present > width) {
    fitted.height = std::max(std::min(leastHeight, font.height), font.height * width / present);
  }
  return fitted;
}

std::vector<std::string> WrapText(const PrintPage& page, const PageFont& font,
                                  const std::string& text, double width) {
  const auto fits = [&](const std::string& line) { return page.GetTextWidth(font, line) <= width; };
  std::vector<std::string> lines;
  for (const std::string& paragraph : platform::SplitFields(text, '\n')) {
    std::string line;
    for (const std::string& word : platform::SplitFields(paragraph, ' ')) {
      const std::string longer = line.empty() ? word : line + " " + word;
      if (fits(longer)) {
        line = longer;
        continue;
      }
      if (!line.empty()) lines.push_back(line);
      line = word;
      while (!fits(line)) {
        // At least one character, so that the loop ends in a column that is narrower than a letter.
        const size_t cut = std::max(LongestThatFits(line, fits), EndOfCharacter(line, 0));
        if (cut >= line.size()) break;
        lines.push_back(line.substr(0, cut));
        line.erase(0, cut);
      }
    }
    lines.push_back(line);
  }
  if (lines.empty()) lines.emplace_back();
  return lines;
}

void DrawFitted(PrintPage& page, const PageBox& box, const TextStyle& style,
                const std::string& text, double leastHeight) {
  TextStyle fitted = style;
  fitted.font = FitFont(page, style.font, text, box.width(), leastHeight);
  page.DrawText(box, fitted, ShortenText(page, fitted.font, text, box.width()));
}

std::string PageNumberText(const PrintPage& page) {
  return platform::FormatText("Page %d of %d", page.GetPageNumber(), page.GetPageCount());
}

}  // namespace rvx
