// The layout of all sheets: texts that have to fit, tables over several pages, scaling.
#include <gmock/gmock.h>

#include "module/printing/mapped_page.h"
#include "module/printing/page_table.h"
#include "module/printing/page_text.h"
#include "tests/support/page_recorder.h"

namespace rvx {
namespace {

using testing::ElementsAre;

constexpr PageFont kFont{10.0};  // each character is 5 wide

TEST(PageTextTest, TextsAreMadeToFitByWholeCharacters) {
  const PageRecorder page(PageRecorder::kA4);
  EXPECT_EQ(ShortenText(page, kFont, "10W-30", 30.0), "10W-30");
  EXPECT_EQ(ShortenText(page, kFont, "10W-30 batch", 40.0), "10W-30…");
  EXPECT_EQ(ShortenText(page, kFont, "ÖlÖlÖlÖl", 20.0), "ÖlÖ…");
  EXPECT_EQ(ShortenText(page, kFont, "10W-30", 4.0), "");
  EXPECT_EQ(FitFont(page, kFont, "0123456789", 40.0, 5.0).height, 8.0);
  EXPECT_EQ(FitFont(page, kFont, "0123456789", 10.0, 5.0).height, 5.0);
  EXPECT_EQ(FitFont(page, kFont, "0123", 40.0, 5.0).height, 10.0);
}

TEST(PageTextTest, LinesBreakAtBlanksAndLongWordsInside) {
  const PageRecorder page(PageRecorder::kA4);
  EXPECT_THAT(WrapText(page, kFont, "-20.0, -25.0, -30.0", 65.0),
              ElementsAre("-20.0, -25.0,", "-30.0"));
  EXPECT_THAT(WrapText(page, kFont, "a ÖÖÖÖÖÖÖ b\n\nc", 25.0),
              ElementsAre("a", "ÖÖÖÖÖ", "ÖÖ b", "", "c"));
  EXPECT_THAT(WrapText(page, kFont, "ab", 1.0), ElementsAre("a", "b"));
  EXPECT_THAT(WrapText(page, kFont, "", 25.0), ElementsAre(""));
}

// A table with a column that wraps, on pages with room for a head and eight lines.
PageRecorder DrawTable(const std::vector<PageTable::Row>& rows) {
  return PageRecorder::Record({300.0, 250.0}, [&](PrintPage& page) {
    PageTableStyle style;
    style.left = 25.0;
    style.rule = 1.0;
    PageFlow flow(page, 25.0, 205.0, [](PrintPage& foot) {
      foot.DrawText({25.0, 205.0, 275.0, 225.0}, {PageFont{15.0}}, PageNumberText(foot));
    });
    PageTable({{"A very long heading", "", 50.0},
               {"Temperatures", "", 200.0, TextPlace::Left, /*wraps=*/true}},
              style)
        .Draw(flow, rows);
    flow.Finish();
  });
}

TEST(PageTableTest, RowsGoOnOnFurtherPagesUnderTheirHeads) {
  const std::string three(60, 'x');  // three lines
  const PageRecorder page =
      DrawTable({{"1", three}, {"2", three}, {"a rather long id", three}, {"4", "y"}, {"5", "y"}});
  page.ExpectLegible();
  EXPECT_THAT(page.GetTexts(1), testing::Contains("Page 1 of 2"));
  EXPECT_THAT(page.GetTexts(1), testing::Not(testing::Contains("a rat…")));
  const std::string line(26, 'x');
  EXPECT_THAT(page.GetTexts(2), ElementsAre("A very l…", "Temperatures", "a rat…", line, line,
                                            "xxxxxxxx", "4", "y", "5", "y", "Page 2 of 2"));
  ASSERT_EQ(page.lines.size(), 2u);
  EXPECT_EQ(page.lines[1].page, 2);
}

TEST(PageTableTest, EveryNumberOfRowsHasItsPages) {
  const auto pages = [](size_t rows) {
    const PageRecorder page = DrawTable(std::vector<PageTable::Row>(rows, {"1", "x"}));
    EXPECT_TRUE(page.Find("Temperatures") != nullptr) << rows;
    return page.GetPageCount();
  };
  EXPECT_EQ(pages(0), 1);
  EXPECT_EQ(pages(8), 1);
  EXPECT_EQ(pages(9), 2);
  EXPECT_EQ(pages(16), 2);
  EXPECT_EQ(pages(17), 3);
}

TEST(MappedPageTest, AWideLayoutIsScaledIntoThePrintableArea) {
  const PageRecorder page = PageRecorder::Record(PageRecorder::kA4, [](PrintPage& paper) {
    MappedPage wide = FitToPrintableWidth(paper, 1554.0);  // twice the page's 777
    EXPECT_EQ(wide.GetTextWidth(kFont, "0123456789"), 50.0);
    EXPECT_EQ(wide.GetPrintableArea().right, 1554.0);
    EXPECT_EQ(wide.GetPrintableArea().bottom, 2238.0);
    wide.DrawText({1454.0, 0.0, 1554.0, 10.0}, {kFont, TextPlace::Right}, "end");
    wide.DrawFrame({0.0, 0.0, 1554.0, 100.0}, 2.0);
  });
  page.ExpectLegible();
  EXPECT_EQ(page.texts[0].style.font.height, 5.0);
  EXPECT_EQ(page.texts[0].box.left, 752.0);
  EXPECT_EQ(page.frames[0].box.bottom, 75.0);
  EXPECT_EQ(page.frames[0].width, 1.0);
  // Narrower sheets are not enlarged.
  PageRecorder small(PageRecorder::kA4);
  EXPECT_EQ(FitToPrintableWidth(small, 100.0).GetPrintableArea().right, 777.0);
}

}  // namespace
}  // namespace rvx
