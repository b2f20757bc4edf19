#include "host/desktop/tray_view.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QStyledItemDelegate>
#include <algorithm>
#include <set>

#include "host/desktop/instrument_session.h"
#include "host/desktop/tray_model.h"

namespace torvell {
namespace {

constexpr char kCellsFormat[] = "application/x-torvell-tray-positions";
// Pixels. A row is never lower than its text, and not so high that the table falls apart.
constexpr int kMinRowHeight = 18;
constexpr int kMaxRowHeight = 26;

// The editor of a sample id accepts no more letters than can be stored.
class SampleIdDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) {
      line->setMaxLength(kMaxSampleIdLength);
      line->setAccessibleName(QStringLiteral("Sample ID of position %1").arg(index.row() + 1));
    }
    return editor;
  }
};

// Long texts are cut at their end, so that the row keeps its height.
int TextRow(const QWidget& widget) { return widget.fontMetrics().height() + 2; }

void PutOnClipboard(const std::vector<TrayCell>& tray, const std::vector<int>& positions,
                    const QStringList& sampleIds) {
  std::vector<TrayCell> cells;
  for (const int position : positions) {
    if (position < static_cast<int>(tray.size())) {
      cells.push_back(tray[static_cast<size_t>(position)]);
    }
  }
  if (cells.empty()) return;
  auto* copied = new QMimeData();
  copied->setData(QString::fromLatin1(kCellsFormat), PackCells(cells));
  copied->setText(sampleIds.join(QLatin1Char('\n')));
  QApplication::clipboard()->setMimeData(copied);
}

}  // namespace

TrayView::TrayView(QWidget* parent) : QTableView(parent), model_(new TrayModel(this)) {
  setModel(model_);
  setAccessibleName(QStringLiteral("Tray"));
  setItemDelegateForColumn(TrayModel::SampleId, new SampleIdDelegate(this));
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
  setTextElideMode(Qt::ElideRight);
  setWordWrap(false);
  setShowGrid(false);
  setAlternatingRowColors(true);
  setTabKeyNavigation(false);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  verticalHeader()->hide();
  verticalHeader()->setMinimumSectionSize(kMinRowHeight);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  QHeaderView* header = horizontalHeader();
  header->setHighlightSections(false);
  header->setMinimumSectionSize(40);
  connect(model_, &TrayModel::SampleIdTyped, this, [this](int position, const QString& text) {
    if (session_->IsRunning()) {
      Q_EMIT Notice(QStringLiteral("The tray is running; the sample ID was not changed."));
      return;
    }
    session_->Change([this, position, text](const std::vector<TrayCell>& tray) {
      TrayEdit edit = SampleIdEdit(tray, position, {text});
      if (edit.empty()) {
        Q_EMIT Notice(QStringLiteral("Position %1 is empty and nothing above it can be copied. Add "
                                     "a sample first.")
                          .arg(position + 1));
      }
      return edit;
    });
  });
  connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex& index) {
    if (!editable_) return;
    if (index.column() == TrayModel::SampleId) {
      edit(index);
    } else {
      EditPosition();
    }
  });
}

void TrayView::SetSession(InstrumentSession* session) {
  if (session_ != nullptr) disconnect(session_, nullptr, this, nullptr);
  session_ = session;
  if (session_ != nullptr) {
    connect(session_, &InstrumentSession::TrayChanged, this, &TrayView::Refresh);
  }
  Refresh();
  FitRows();
}

void TrayView::SetEditable(bool editable) {
  // When a run begins, what is being typed can't be accepted any more.
  if (!editable && session_ != nullptr && session_->IsRunning() &&
      state() == QAbstractItemView::EditingState) {
    reset();
  }
  editable_ = editable;
  model_->SetEditable(editable);
}

void TrayView::Refresh() {
  model_->SetRows(session_ != nullptr ? session_->rows() : std::vector<TrayRow>());
  if (!currentIndex().isValid() && model_->rowCount() > 0) {
    setCurrentIndex(model_->index(0, TrayModel::SampleId));
  }
  FitRows();
}

void TrayView::FitRows() {
  const int count = std::max(1, model_->rowCount());
  const int lowest = std::max(kMinRowHeight, TextRow(*this));
  const int height =
      std::clamp(viewport()->height() / count, lowest, std::max(lowest, kMaxRowHeight));
  if (verticalHeader()->defaultSectionSize() != height) {
    verticalHeader()->setDefaultSectionSize(height);
  }
  // Fixed shares of the width: the longest column gets what the others leave.
  const QFontMetrics metrics(font());
  const int number = metrics.horizontalAdvance(QStringLiteral("Pos.")) + 18;
  const int state = metrics.horizontalAdvance(QStringLiteral("Running")) + 46;
  const int rest = std::max(200, viewport()->width() - number - state);
  setColumnWidth(TrayModel::Number, number);
  setColumnWidth(TrayModel::State, state);
  // The width of the actions' labels is known; that of the laboratory's ids is not.
  const int action = std::min(
      metrics.horizontalAdvance(QStringLiteral("Verify Known Viscosity")) + 14, rest * 26 / 100);
  const int tests = (rest - action) * 26 / 100;
  const int result = std::max((rest - action) * 30 / 100,
                              metrics.horizontalAdvance(QStringLiteral("Result (mPa*s)")) + 18);
  setColumnWidth(TrayModel::SampleId, rest - action - tests - result);
  setColumnWidth(TrayModel::Action, action);
  setColumnWidth(TrayModel::Tests, tests);
  setColumnWidth(TrayModel::Result, result);
}

void TrayView::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  FitRows();
}

std::vector<int> TrayView::SelectedPositions() const {
  std::set<int> positions;
  for (const QModelIndex& index : selectionModel()->selectedRows()) positions.insert(index.row());
  return {positions.begin(), positions.end()};
}

void TrayView::Select(const std::vector<int>& positions) {
  QItemSelection selection;
  for (const int position : positions) {
    selection.select(model_->index(position, 0),
                     model_->index(position, TrayModel::ColumnCount - 1));
  }
  if (positions.empty()) return;
  setCurrentIndex(model_->index(positions.front(), TrayModel::SampleId));
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void TrayView::Copy() {
  if (session_ == nullptr) return;
  const std::vector<int> positions = SelectedPositions();
  // Copies what is shown: after a run the rows still have ids that the emptied tray has not.
  QStringList sampleIds;
  for (const int position : positions) {
    sampleIds << model_->rows()[static_cast<size_t>(position)].sampleId;
  }
  PutOnClipboard(session_->cells(), positions, sampleIds);
}

void TrayView::Cut() {
  if (!editable_ || session_ == nullptr) return;
  session_->Change([positions = SelectedPositions()](const std::vector<TrayCell>& tray) {
    QStringList sampleIds;
    for (const int position : positions) {
      sampleIds << QString::fromStdString(tray.at(static_cast<size_t>(position)).sampleId);
    }
    PutOnClipboard(tray, positions, sampleIds);
    return ClearEdit(tray, positions);
  });
}

void TrayView::Paste() {
  const std::vector<int> positions = SelectedPositions();
  if (!editable_ || session_ == nullptr || positions.empty()) return;
  // The clipboard is read only when the paste is carried out: an earlier cut may still be waiting
  // to put its positions there.
  session_->Change([this, at = positions.front()](const std::vector<TrayCell>& tray) {
    return EditOfClipboard(tray, at);
  });
}

TrayEdit TrayView::EditOfClipboard(const std::vector<TrayCell>& tray, int at) {
  const QMimeData* pasted = QApplication::clipboard()->mimeData();
  if (pasted == nullptr) return {};
  const auto cells = UnpackCells(pasted->data(QString::fromLatin1(kCellsFormat)));
  QStringList lines;
  if (!cells) {
    lines = pasted->text().split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.back().trimmed().isEmpty()) lines.removeLast();
  }
  TrayEdit edit = cells ? PasteEdit(tray, at, *cells) : SampleIdEdit(tray, at, lines);
  if (edit.empty()) {
    Q_EMIT Notice(
        QStringLiteral("Nothing was pasted: the clipboard holds no positions and no sample "
                       "IDs that fit here."));
    return edit;
  }
  const int unplaced =
      cells ? CountUnplaced(tray, at, static_cast<int>(cells->size()), PasteKind::Positions)
            : CountUnplaced(tray, at, static_cast<int>(lines.size()), PasteKind::SampleIds);
  SayWhatWasLost(lines, unplaced);
  return edit;
}

void TrayView::SayWhatWasLost(const QStringList& sampleIds, int unplaced) {
  QStringList lost;
  const bool cut = std::any_of(sampleIds.begin(), sampleIds.end(), [](const QString& each) {
    return each.size() > kMaxSampleIdLength;
  });
  if (cut) lost << QStringLiteral("A sample ID was cut to %1 letters.").arg(kMaxSampleIdLength);
  if (unplaced > 0) {
    lost << QStringLiteral("The tray had no place for %1 of what was pasted.").arg(unplaced);
  }
  if (!lost.isEmpty()) Q_EMIT Notice(lost.join(QLatin1Char(' ')));
}

void TrayView::Clear() {
  if (!editable_ || session_ == nullptr) return;
  session_->Change([positions = SelectedPositions()](const std::vector<TrayCell>& tray) {
    return ClearEdit(tray, positions);
  });
}

void TrayView::FillDown() {
  if (!editable_ || session_ == nullptr) return;
  session_->Change([positions = SelectedPositions()](const std::vector<TrayCell>& tray) {
    return FillDownEdit(tray, positions);
  });
}

void TrayView::MoveUp() { Move(-1); }

void TrayView::MoveDown() { Move(1); }

void TrayView::Move(int by) {
  if (!editable_ || session_ == nullptr) return;
  std::vector<int> positions = SelectedPositions();
  const int last = model_->rowCount() - 1;
  if (positions.empty() || positions.front() + by < 0 || positions.back() + by > last) return;
  session_->Change(
      [positions, by](const std::vector<TrayCell>& tray) { return MoveEdit(tray, positions, by); });
  for (int& position : positions) position += by;
  Select(positions);
}

void TrayView::EditPosition() {
  if (editable_ && session_ != nullptr && currentIndex().isValid()) {
    session_->Edit(currentIndex().row());
  }
}

void TrayView::keyPressEvent(QKeyEvent* event) {
  // Return opens the module's dialog of the position; F2 edits the sample id in place.
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
      state() != QAbstractItemView::EditingState) {
    EditPosition();
    return;
  }
  // A character typed anywhere in the row starts editing its sample id.
  const bool types = !event->text().isEmpty() && event->text().front().isPrint() &&
                     !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
  if (types && currentIndex().isValid() && currentIndex().column() != TrayModel::SampleId) {
    selectionModel()->setCurrentIndex(model_->index(currentIndex().row(), TrayModel::SampleId),
                                      QItemSelectionModel::NoUpdate);
  }
  QTableView::keyPressEvent(event);
}

}  // namespace torvell
