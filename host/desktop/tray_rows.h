// The tray's positions in the form that the window shows and edits. No widgets.
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
  QString doing;    // the present operation; the running position only
  QString failure;  // why it failed; empty if it did not or the reason is not known

  bool filled() const { return state != RowState::Empty; }
};

// Returns the rows of a tray that does not run and may be edited: all are waiting or empty.
std::vector<TrayRow> RowsOfTray(int size, const std::vector<TrayPosition>& tray);
// Returns the rows of a run, in progress or over. `failures` is by position, from 0.
std::vector<TrayRow> RowsOfRun(int size, const RunState& run,
                               const std::map<int, QString>& failures);

QString RowStateText(RowState state);
Shape RowShape(RowState state);
// "-20.0, -25.0": one number for each test, in the user's locale.
QString TestsText(const TrayRow& row);
// "5400.3, 7030.1", with "-" for a test without a result. For a running position without results
// its present operation; empty for a position that has not run.
QString ResultText(const TrayRow& row);
// Describes a row in words, for a tooltip and for screen readers.
QString DescribeRow(int position, const TrayRow& row);

// The content of a position, in a form that can be copied to another one.
struct TrayCell {
  std::string classKey;  // empty: nothing
  std::string sampleId;
  std::string stateText;

  bool empty() const { return classKey.empty(); }
  bool operator==(const TrayCell& other) const = default;
};

// Positions from 0 and what they are to hold.
using TrayEdit = std::map<int, TrayCell>;

// Returns the content of this action; empty for the action of an empty position.
TrayCell CellOf(rvx::Action& action);
// Returns a new action with this content that is in no tray. Throws the instrument's exceptions.
std::shared_ptr<rvx::Action> MakeAction(const InstrumentEntry& entry, const TrayCell& cell);

// Returns every position's content. Not on the window's thread: it takes the tray's lock.
std::vector<TrayCell> ReadCells(const InstrumentEntry& entry);
// Puts the cells into the tray, all or none, and stores the instrument. Returns what was there
// before. Not on the window's thread. HostError: NotAllowed below level 10; Tray if the tray runs
// or an action is not known; Database if it can't be stored.
TrayEdit ApplyEdit(Host& host, const InstrumentEntry& entry, const TrayEdit& edit);

// Returns the cells for the clipboard: lines of class key, sample id and state text.
QByteArray PackCells(const std::vector<TrayCell>& cells);
// Returns the cells of such a text; nothing for any other.
std::optional<std::vector<TrayCell>> UnpackCells(const QByteArray& packed);

// The edits of the keyboard and the menu, on the present content; an empty edit changes nothing.
// Cells from `at` on, as far as the tray reaches.
TrayEdit PasteEdit(const std::vector<TrayCell>& tray, int at, const std::vector<TrayCell>& cells);
// One sample id a line, from `at` on. A position that is empty becomes a copy of the nearest filled
// one above it; without one it stays empty.
TrayEdit SampleIdEdit(const std::vector<TrayCell>& tray, int at, const QStringList& sampleIds);
enum class PasteKind { Positions, SampleIds };
// Returns how many of `count` pasted ones these edits leave out: they are beyond the end of the
// tray, or there is no sample at or above their position that could take the id.
int CountUnplaced(const std::vector<TrayCell>& tray, int at, int count, PasteKind kind);
TrayEdit ClearEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions);
// Copies the first of the positions to the others; a filled one keeps its sample id.
TrayEdit FillDownEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions);
// Moves the positions one up (-1) or down (+1); they change places with what is there.
TrayEdit MoveEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions, int by);

// A sample id as it may be stored: one line, no control characters, at most kMaxSampleIdLength
// letters, no blanks at the ends.
inline constexpr int kMaxSampleIdLength = 120;
QString CleanSampleId(const QString& typed);

}  // namespace torvell
