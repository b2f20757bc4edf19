// Edits of the tray as the keyboard makes them, and what its rows say.
#include <gtest/gtest.h>

#include <QLocale>

#include "host/desktop/run_progress.h"
#include "host/desktop/tray_rows.h"

namespace torvell {
namespace {

TrayCell Cell(const char* sampleId) { return {"RVX Measure Viscosity Action", sampleId, "state"}; }

std::vector<TrayCell> Tray() { return {Cell("A"), {}, Cell("C"), {}, {}}; }

TEST(TrayEditTest, PastedCellsStopAtTheTraysEnd) {
  const TrayEdit edit = PasteEdit(Tray(), 3, {Cell("X"), Cell("Y"), Cell("Z")});
  EXPECT_EQ(edit, (TrayEdit{{3, Cell("X")}, {4, Cell("Y")}}));
}

TEST(TrayEditTest, PastedIdsMakeCopiesOfThePositionAbove) {
  const TrayEdit edit = SampleIdEdit(Tray(), 2, {"NEW", "NEXT"});
  EXPECT_EQ(edit.at(2).sampleId, "NEW");
  EXPECT_EQ(edit.at(3).sampleId, "NEXT");
  EXPECT_EQ(edit.at(3).classKey, Tray()[2].classKey);
  // In an empty tray there is no position above to copy.
  EXPECT_TRUE(SampleIdEdit({{}, {}}, 0, {"A", "B"}).empty());
}

TEST(TrayEditTest, FillDownKeepsTheIdsThatAreThere) {
  const TrayEdit edit = FillDownEdit(Tray(), {0, 1, 2});
  EXPECT_EQ(edit.size(), 1u) << "position 3 has the same tests and keeps its id";
  EXPECT_EQ(edit.at(1).sampleId, "A");
  // An empty source clears.
  EXPECT_TRUE(FillDownEdit(Tray(), {1, 2}).at(2).empty());
  EXPECT_TRUE(FillDownEdit(Tray(), {}).empty());
}

TEST(TrayEditTest, MovesChangePlacesAndStayInTheTray) {
  const TrayEdit edit = MoveEdit(Tray(), {2}, -1);
  EXPECT_EQ(edit, (TrayEdit{{1, Cell("C")}, {2, {}}}));
  EXPECT_TRUE(MoveEdit(Tray(), {0}, -1).empty());
  EXPECT_TRUE(MoveEdit(Tray(), {4}, 1).empty());
  // A block moves as one.
  EXPECT_EQ(MoveEdit(Tray(), {0, 1}, 1), (TrayEdit{{0, Cell("C")}, {1, Cell("A")}, {2, {}}}));
}

TEST(TrayEditTest, CellsComeBackFromTheClipboardAndForeignBytesDoNot) {
  const std::vector<TrayCell> cells = {Cell("A\xC3\xA4"), {}, {"k", "", std::string("\x0B\t", 2)}};
  EXPECT_EQ(UnpackCells(PackCells(cells)), cells);
  EXPECT_FALSE(UnpackCells(QByteArray()));
  EXPECT_FALSE(UnpackCells(QByteArray("TRCY and then some text that is no list of cells")));
  for (int length = 0; length < PackCells(cells).size(); ++length) {
    EXPECT_FALSE(UnpackCells(PackCells(cells).left(length))) << length;
  }
}

TEST(TrayEditTest, WhatFindsNoPlaceIsCounted) {
  std::vector<TrayCell> tray(5);
  tray[2].classKey = "RVX Measure Viscosity Action";
  EXPECT_EQ(CountUnplaced(tray, 3, 2, PasteKind::Positions), 0);
  EXPECT_EQ(CountUnplaced(tray, 3, 6, PasteKind::Positions), 4);
  EXPECT_EQ(CountUnplaced(tray, 0, 5, PasteKind::Positions), 0);
  EXPECT_EQ(CountUnplaced(tray, 0, 1, PasteKind::SampleIds), 1);
  EXPECT_EQ(CountUnplaced(tray, 0, 6, PasteKind::SampleIds), 3);  // two before, one after
  EXPECT_EQ(CountUnplaced(tray, 3, 2, PasteKind::SampleIds), 0);
  EXPECT_EQ(CountUnplaced(std::vector<TrayCell>(5), 2, 9, PasteKind::SampleIds), 9);
}

TEST(TrayEditTest, SampleIdsAreOneLineOfBoundedLength) {
  EXPECT_EQ(CleanSampleId(QStringLiteral("  a\tb\nc\x0B ")), QStringLiteral("a b c"));
  EXPECT_EQ(CleanSampleId(QString(10000, QLatin1Char('x'))).size(), kMaxSampleIdLength);
}

// A run of two positions with two tests and one.
class RunRowsTest : public testing::Test {
 protected:
  RunRowsTest() : run_(InstrumentEntry(), Plan()) {
    QLocale::setDefault(QLocale::c());
    Take(RunEvent::Kind::TrayStarted);
    Take(RunEvent::Kind::SampleStarted, 0);  // the first stage, announced as position 0
    Take(RunEvent::Kind::SampleStarted, 0);
  }

  static std::vector<TrayPosition> Plan() {
    std::vector<TrayPosition> plan(2);
    for (TrayPosition& position : plan) {
      position.label = "Measure Viscosity";
      position.estimatedSeconds = 600;
      position.tests.emplace();
    }
    plan[0].tests->tests.resize(2);
    plan[1].tests->tests.resize(1);
    plan[1].position = 3;
    return plan;
  }

  void Take(RunEvent::Kind kind, int32_t position = -1, double viscosity = 0.0) {
    RunEvent event;
    event.kind = kind;
    event.position = position;
    event.text = "Equilibration";
    event.paused = true;
    if (kind == RunEvent::Kind::Sample) {
      event.sample.emplace();
      event.sample->viscosity = viscosity;
    }
    run_.Take(event);
  }

  TrayRow Row(int position) {
    return RowsOfRun(5, run_, failures_).at(static_cast<size_t>(position));
  }

  RunState run_;
  std::map<int, QString> failures_;
};

TEST_F(RunRowsTest, TheRunningPositionSaysWhatItDoesUntilItHasResults) {
  Take(RunEvent::Kind::Status, 0);
  EXPECT_EQ(Row(0).state, RowState::Running);
  EXPECT_EQ(ResultText(Row(0)), "Equilibration");
  EXPECT_EQ(Row(3).state, RowState::Waiting);
  EXPECT_EQ(Row(1).state, RowState::Empty);
  Take(RunEvent::Kind::Sample, 0, 5400.3);
  EXPECT_EQ(ResultText(Row(0)), "5400.3");
}

TEST_F(RunRowsTest, APositionWithoutAllItsResultsHasFailed) {
  Take(RunEvent::Kind::Sample, 0, 5400.3);
  Take(RunEvent::Kind::SampleFinished, 0);
  EXPECT_EQ(Row(0).state, RowState::Failed);
  EXPECT_EQ(ResultText(Row(0)), "5400.3, -") << "what is missing is never a number";
  Take(RunEvent::Kind::TrayFinished);
  EXPECT_EQ(Row(3).state, RowState::NotRun) << "the run was aborted before it";
}

TEST_F(RunRowsTest, ResultsInALocaleWithADecimalCommaStayApart) {
  Take(RunEvent::Kind::Sample, 0, 5400.3);
  Take(RunEvent::Kind::Sample, 0, 7030.5);
  QLocale::setDefault(QLocale(QLocale::German));
  EXPECT_EQ(ResultText(Row(0)), "5400,3; 7030,5");
}

TEST_F(RunRowsTest, ProgressNamesTheEndAndNoneWhilePaused) {
  const platform::Date clock(2026, 1, 5, 8, 0, 0);
  const auto now = platform::MonotonicTime();
  EXPECT_TRUE(DescribeProgress(run_, now, clock).left.contains("ends at about 08:20"));
  Take(RunEvent::Kind::PauseChanged);
  EXPECT_TRUE(DescribeProgress(run_, now, clock).left.endsWith("paused"));
  EXPECT_EQ(DescribeProgress(run_, now, clock).done, "0 of 3 samples");
  // What an abort would lose.
  Take(RunEvent::Kind::Sample, 0, 5400.0);
  const QString loss = DescribeLoss(run_);
  EXPECT_TRUE(loss.contains("position 1"));
  EXPECT_TRUE(loss.contains("2 of 3 samples will not be measured"));
}

}  // namespace
}  // namespace torvell
