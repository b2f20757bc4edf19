// A page that keeps what is drawn on it, with metrics that no machine's fonts change.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "module/printing/page.h"

namespace rvx {

class PageRecorder final : public PrintPage {
 public:
  static constexpr PageSize kA4{827.0, 1169.0};
  static constexpr PageSize kLetter{850.0, 1100.0};
  // Of every character, as a part of the font's height.
  static constexpr double kCharacterWidth = 0.5;

  struct Text {
    int page;
    PageBox box;
    TextStyle style;
    std::string text;
  };
  struct Line {
    int page;
    PagePoint from, to;
    double width;
  };
  struct Frame {
    int page;
    PageBox box;
    double width;
  };

  explicit PageRecorder(PageSize sheet, double margin = 25.0) : sheet_(sheet), margin_(margin) {}

  // The document, drawn on pages of this kind.
  static PageRecorder Record(PageSize sheet, const PageDrawer& draw, double margin = 25.0) {
    PageRecorder page(sheet, margin);
    page.count_ = CountPages(page, draw);
    draw(page);
    EXPECT_EQ(page.number_, page.count_) << "a document is drawn the same each time";
    return page;
  }

  PageSize GetSheetSize() const override { return sheet_; }
  PageBox GetPrintableArea() const override {
    return {margin_, margin_, sheet_.width - margin_, sheet_.height - margin_};
  }
  double GetTextWidth(const PageFont& font, const std::string& text) const override {
    const auto characters = std::count_if(text.begin(), text.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // no second byte of UTF-8
    });
    return static_cast<double>(characters) * font.height * kCharacterWidth;
  }
  void DrawText(const PageBox& box, const TextStyle& style, const std::string& text) override {
    texts.push_back({number_, box, style, text});
  }
  void DrawLine(PagePoint from, PagePoint to, double width) override {
    lines.push_back({number_, from, to, width});
  }
  void DrawFrame(const PageBox& box, double width) override {
    frames.push_back({number_, box, width});
  }
  void NewPage() override { ++number_; }
  int GetPageNumber() const override { return number_; }
  int GetPageCount() const override { return count_; }

  // The texts of a page, in the order of drawing.
  std::vector<std::string> GetTexts(int page) const {
    std::vector<std::string> found;
    for (const Text& text : texts) {
      if (text.page == page) found.push_back(text.text);
    }
    return found;
  }

  // The first text that reads so; null without one.
  const Text* Find(const std::string& wanted) const {
    const auto found = std::find_if(texts.begin(), texts.end(),
                                    [&](const Text& text) { return text.text == wanted; });
    return found == texts.end() ? nullptr : &*found;
  }

  // What holds for every sheet: nothing is drawn over something else, cut off, or out of reach.
  void ExpectLegible() const {
    const PageBox area = GetPrintableArea();
    for (size_t i = 0; i < texts.size(); ++i) {
      const PageBox ink = GetInk(texts[i]);
      EXPECT_TRUE(IsInside(ink, area)) << texts[i].text << " is off the printable area";
      EXPECT_TRUE(IsInside(ink, texts[i].box)) << texts[i].text << " is cut off";
      for (size_t j = 0; j < i; ++j) {
        const PageBox other = GetInk(texts[j]);
        const bool apart = texts[i].page != texts[j].page || ink.right <= other.left + kSlack ||
                           other.right <= ink.left + kSlack || ink.bottom <= other.top + kSlack ||
                           other.bottom <= ink.top + kSlack;
        EXPECT_TRUE(apart) << texts[i].text << " is drawn over " << texts[j].text;
      }
    }
  }

  std::vector<Text> texts;
  std::vector<Line> lines;
  std::vector<Frame> frames;

 private:
  static constexpr double kSlack = 1e-6;

  static bool IsInside(const PageBox& inner, const PageBox& outer) {
    return inner.left >= outer.left - kSlack && inner.right <= outer.right + kSlack &&
           inner.top >= outer.top - kSlack && inner.bottom <= outer.bottom + kSlack;
  }

  // Where the letters are.
  PageBox GetInk(const Text& text) const {
    const double width = GetTextWidth(text.style.font, text.text);
    const double height = text.style.font.height;
    constexpr double kParts[] = {0.0, 0.5, 1.0};  // of the free room, before the text
    const double left =
        text.box.left + kParts[static_cast<size_t>(text.style.place)] * (text.box.width() - width);
    const double top =
        text.box.top + kParts[static_cast<size_t>(text.style.level)] * (text.box.height() - height);
    return {left, top, left + width, top + height};
  }

  const PageSize sheet_;
  const double margin_;
  int number_ = 1;
  int count_ = 1;
};

}  // namespace rvx
