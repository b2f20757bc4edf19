// The tray's positions as the window shows and edits them. No widgets.
#pragma once

#include <QString>
#include <map>
#include <optional>
#include <vector>

#include "host/core/host.h"
#include "host/desktop/theme.h"
#include "host/tray/run_state.h"
#include "host/tray/tray_access.h"

namespace torvell {

enum class RowState { Empty, Waiting, Running, Paused, Done, Failed, NotRun };

// One position.
struct TrayRow {
  QString action;  // label
  QString sampleId;
  std::vector<rvx::SampleTest> tests;
  RowState state = RowState::Empty;
  std::vector<rvx::Sample> results;
  QString doing;    // what runs at the moment; the running position only
  QString failure;  // why it failed; empty if it did not or nobody said

  bool filled() const { return state != RowState::Empty; }
};

// The rows of a tray that does not run and may be edited: all waiting or empty.
std::vector<TrayRow> RowsOfTray(int size, const std::vector<TrayPosition>& tray);
// The rows of a run, on its way or over. `failures` by position from 0.
std::vector<TrayRow> RowsOfRun(int size, const RunState& run,
                               const std::map<int, QString>& failures);

QString RowStateText(RowState state);
Shape RowShape(RowState state);
// "-20.0, -25.0": one number for each test, in the user's locale.
QString TestsText(const TrayRow& row);
// "5400.3, 7030.1", a "-" for a test without a result; what runs at the moment for a running
// position without results; empty before.
QString ResultText(const TrayRow& row);
// The whole of a row in words, for a tooltip and for those who hear the screen.
QString DescribeRow(int position, const TrayRow& row);

// What a position holds, in a form that can be put elsewhere.
struct TrayCell {
  std::string classKey;  // empty: nothing
  std::string sampleId;
  std::string stateText;

  bool empty() const { return classKey.empty(); }
  bool operator==(const TrayCell& other) const = default;
};

// Positions from 0 and what they are to hold.
using TrayEdit = std::map<int, TrayCell>;

// What this action holds; empty for an empty position's.
TrayCell CellOf(rvx::Action& action);
// An action that holds this and is in no tray. Throws the instrument's exceptions.
std::shared_ptr<rvx::Action> MakeAction(const InstrumentEntry& entry, const TrayCell& cell);

// Every position's content. Not on the window's thread: it takes the tray's lock.
std::vector<TrayCell> ReadCells(const InstrumentEntry& entry);
// Puts the cells in, all or none, and stores the instrument. Returns what was there before. Not
// on the window's thread. HostError: NotAllowed below level 10; Tray if the tray runs or an action
// is not known; Database if it can't be stored.
TrayEdit ApplyEdit(Host& host, const InstrumentEntry& entry, const TrayEdit& edit);

// The cells for the clipboard: lines of class key, sample id and state text.
QByteArray PackCells(const std::vector<TrayCell>& cells);
// Nothing if it is no such text.
std::optional<std::vector<TrayCell>> UnpackCells(const QByteArray& packed);

// The edits of the keyboard and the menu, on the present content; an empty edit changes nothing.
// Cells from `at` on, as far as the tray reaches.
TrayEdit PasteEdit(const std::vector<TrayCell>& tray, int at, const std::vector<TrayCell>& cells);
// One sample id a line, from `at` on. A position that is empty becomes a copy of the nearest filled
// one above it; without one it stays empty.
TrayEdit SampleIdEdit(const std::vector<TrayCell>& tray, int at, const QStringList& sampleIds);
enum class PasteKind { Positions, SampleIds };
// How many of `count` pasted ones these edits leave out: they lie after the end of the tray, or no
// sample is at or above their position that could take the id.
int CountUnplaced(const std::vector<TrayCell>& tray, int at, int count, PasteKind kind);
TrayEdit ClearEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions);
// The first of the positions into the others; a filled one keeps its sample id.
TrayEdit FillDownEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions);
// The positions one up (-1) or down (+1), changing places with what stands there.
TrayEdit MoveEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions, int by);

// A sample id as it may be stored: one line, no control characters, at most kMaxSampleIdLength
// letters, no blanks at the ends.
inline constexpr int kMaxSampleIdLength = 120;
QString CleanSampleId(const QString& typed);

}  // namespace torvell
