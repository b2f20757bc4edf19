// Changes of the tray: the edits themselves, and how they are applied to an instrument.
#include <QDataStream>
#include <QIODevice>
#include <QStringList>
#include <algorithm>

#include "boundary/action_keys.h"
#include "host/desktop/tray_rows.h"

namespace torvell {
namespace {

// Marks cells of this program among other data on the clipboard.
constexpr quint32 kCellsMark = 0x54524359;
constexpr int kMaxCells = 1000;

// Returns the part of the edit that differs from the tray.
TrayEdit Changes(const std::vector<TrayCell>& tray, const TrayEdit& wanted) {
  TrayEdit edit;
  for (const auto& [position, cell] : wanted) {
    if (position < 0 || position >= static_cast<int>(tray.size())) continue;
    if (!(tray[static_cast<size_t>(position)] == cell)) edit[position] = cell;
  }
  return edit;
}

}  // namespace

std::shared_ptr<rvx::Action> MakeAction(const InstrumentEntry& entry, const TrayCell& cell) {
  std::shared_ptr<rvx::Action> action(entry.instrument->CreateActionFromText(
      cell.empty() ? std::string(rvx::kNullActionClassKey) : cell.classKey));
  if (!cell.empty()) {
    action->SetStateText(cell.stateText);
    action->SetSampleId(cell.sampleId);
  }
  return action;
}

TrayCell CellOf(rvx::Action& action) {
  TrayCell cell;
  cell.classKey = action.GetClassName();
  if (cell.classKey == rvx::kNullActionClassKey) return {};
  cell.sampleId = action.GetSampleId();
  cell.stateText = action.GetStateText();
  return cell;
}

std::vector<TrayCell> ReadCells(const InstrumentEntry& entry) {
  std::vector<TrayCell> cells;
  for (const auto& action : HoldTray(entry)) cells.push_back(CellOf(*action));
  return cells;
}

TrayEdit ApplyEdit(Host& host, const InstrumentEntry& entry, const TrayEdit& edit) {
  // All actions are made before the first is put in, so that a failure leaves the tray as it was.
  TrayPut made;
  for (const auto& [position, cell] : edit) made[position] = MakeAction(entry, cell);
  TrayEdit before;
  for (const auto& [position, action] : PutIntoTray(host, entry, std::move(made))) {
    before[position] = CellOf(*action);
  }
  return before;
}

QByteArray PackCells(const std::vector<TrayCell>& cells) {
  QByteArray packed;
  QDataStream stream(&packed, QIODevice::WriteOnly);
  stream.setVersion(QDataStream::Qt_6_0);
  stream << kCellsMark << static_cast<qint32>(cells.size());
  for (const TrayCell& cell : cells) {
    stream << QByteArray::fromStdString(cell.classKey) << QByteArray::fromStdString(cell.sampleId)
           << QByteArray::fromStdString(cell.stateText);
  }
  return packed;
}

std::optional<std::vector<TrayCell>> UnpackCells(const QByteArray& packed) {
  QDataStream stream(packed);
  stream.setVersion(QDataStream::Qt_6_0);
  quint32 mark = 0;
  qint32 count = 0;
  stream >> mark >> count;
  if (stream.status() != QDataStream::Ok || mark != kCellsMark || count < 0 || count > kMaxCells) {
    return std::nullopt;
  }
  std::vector<TrayCell> cells;
  for (qint32 i = 0; i < count; ++i) {
    QByteArray classKey, sampleId, stateText;
    stream >> classKey >> sampleId >> stateText;
    cells.push_back({classKey.toStdString(), sampleId.toStdString(), stateText.toStdString()});
  }
  if (stream.status() != QDataStream::Ok) return std::nullopt;
  return cells;
}

TrayEdit PasteEdit(const std::vector<TrayCell>& tray, int at, const std::vector<TrayCell>& cells) {
  TrayEdit edit;
  for (size_t i = 0; i < cells.size(); ++i) edit[at + static_cast<int>(i)] = cells[i];
  return Changes(tray, edit);
}

TrayEdit SampleIdEdit(const std::vector<TrayCell>& tray, int at, const QStringList& sampleIds) {
  TrayEdit edit;
  TrayCell above;
  for (int i = 0; i < at && i < static_cast<int>(tray.size()); ++i) {
    if (!tray[static_cast<size_t>(i)].empty()) above = tray[static_cast<size_t>(i)];
  }
  for (int i = 0; i < sampleIds.size(); ++i) {
    const int position = at + i;
    if (position < 0 || position >= static_cast<int>(tray.size())) break;
    TrayCell cell = tray[static_cast<size_t>(position)];
    if (cell.empty()) cell = above;
    if (cell.empty()) continue;
    cell.sampleId = CleanSampleId(sampleIds[i]).toStdString();
    above = cell;
    edit[position] = cell;
  }
  return Changes(tray, edit);
}

int CountUnplaced(const std::vector<TrayCell>& tray, int at, int count, PasteKind kind) {
  const int size = static_cast<int>(tray.size());
  int placed = std::clamp(size - at, 0, count);
  if (kind == PasteKind::Positions) return count - placed;
  const auto isFilled = [](const TrayCell& cell) { return !cell.empty(); };
  const auto first = std::find_if(tray.begin(), tray.end(), isFilled);
  placed -= std::clamp(static_cast<int>(first - tray.begin()) - at, 0, placed);
  return count - placed;
}

TrayEdit ClearEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions) {
  TrayEdit edit;
  for (const int position : positions) edit[position] = TrayCell();
  return Changes(tray, edit);
}

TrayEdit FillDownEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions) {
  TrayEdit edit;
  if (positions.empty()) return edit;
  const int first = *std::min_element(positions.begin(), positions.end());
  const TrayCell& source = tray.at(static_cast<size_t>(first));
  for (const int position : positions) {
    if (position == first) continue;
    TrayCell cell = source;
    const TrayCell& present = tray.at(static_cast<size_t>(position));
    if (!cell.empty() && !present.empty()) cell.sampleId = present.sampleId;
    edit[position] = cell;
  }
  return Changes(tray, edit);
}

TrayEdit MoveEdit(const std::vector<TrayCell>& tray, const std::vector<int>& positions, int by) {
  std::vector<int> sorted = positions;
  std::sort(sorted.begin(), sorted.end());
  const int last = static_cast<int>(tray.size()) - 1;
  if (sorted.empty() || sorted.front() + by < 0 || sorted.back() + by > last) return {};
  if (by > 0) std::reverse(sorted.begin(), sorted.end());
  std::vector<TrayCell> moved = tray;
  for (const int position : sorted) {
    std::swap(moved[static_cast<size_t>(position)], moved[static_cast<size_t>(position + by)]);
  }
  TrayEdit edit;
  for (int i = 0; i <= last; ++i) edit[i] = moved[static_cast<size_t>(i)];
  return Changes(tray, edit);
}

}  // namespace torvell
