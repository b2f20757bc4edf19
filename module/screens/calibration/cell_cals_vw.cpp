#include "module/screens/calibration/cell_cals_vw.h"

#include <ui_current_cell_cals.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <algorithm>

#include "platform/local_date.h"

namespace rvx {
namespace {

enum Column { kTemperature, kB0, kB1, kB2, kDate, kColumnCount };
// Pixels, as long as the texts need no more.
constexpr int kWidths[kColumnCount] = {90, 55, 55, 55, 135};
constexpr int kBesideText = 16;   // pixels in a column beside its text
constexpr int kBetweenLines = 6;  // pixels

QStringList TextsOf(const CellConstantsRow& row) {
  return {QString::fromStdString(row.temperature), QString::fromStdString(row.b0),
          QString::fromStdString(row.b1), QString::fromStdString(row.b2),
          QString::fromStdString(platform::FormatLocalDate(row.date))};
}

QString LineOf(const QTreeWidgetItem& item) {
  QStringList cells;
  for (int column = 0; column < kColumnCount; ++column) cells << item.text(column);
  return cells.join(u'\t') + u'\n';
}

}  // namespace

CCellCalsVw::CCellCalsVw(const ScreenRequest& request)
    : CScreenView(request), form_(std::make_unique<Ui::CurrentCellCals>()) {
  form_->setupUi(this);
  setFocusProxy(form_->constants);
  BindButtons(kOkId, kOkId);
  PrepareList();
  // Registered before the first reading, so that no change between the two is missed.
  RefreshOnChange([this] { Load(); });
  Load();
}

CCellCalsVw::~CCellCalsVw() = default;

void CCellCalsVw::PrepareList() {
  QTreeWidget& list = *form_->constants;
  list.header()->setDefaultAlignment(Qt::AlignCenter);
  list.header()->setStretchLastSection(true);
  auto* copy = new QAction(QStringLiteral("&Copy"), &list);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  list.addAction(copy);
  list.setContextMenuPolicy(Qt::ActionsContextMenu);
  On(copy, &QAction::triggered, [this](bool) { Copy(); });
}

void CCellCalsVw::Load() {
  const std::vector<CellConstantsRow> rows = ReadCellConstants(instrument().configuration());
  QTreeWidget& list = *form_->constants;
  if (rows.size() != rows_.size()) {
    list.clear();
    rows_.clear();
  }
  for (size_t i = 0; i < rows.size(); ++i) {
    const QStringList texts = TextsOf(rows[i]);
    if (i >= rows_.size()) {
      auto* item = new QTreeWidgetItem(&list, texts);
      item->setSizeHint(kTemperature, {0, list.fontMetrics().height() + kBetweenLines});
      for (const int column : {kB0, kB1, kB2}) {
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
      }
    } else if (!(rows[i] == rows_[i])) {
      for (int column = 0; column < kColumnCount; ++column) {
        list.topLevelItem(static_cast<int>(i))->setText(column, texts[column]);
      }
    }
  }
  rows_ = rows;
  FitColumns();
}

void CCellCalsVw::FitColumns() {
  QTreeWidget& list = *form_->constants;
  const QFontMetrics metrics(list.font());
  int whole = 2 * list.frameWidth();
  for (int column = 0; column < kColumnCount; ++column) {
    int needed = metrics.horizontalAdvance(list.headerItem()->text(column));
    for (int row = 0; row < list.topLevelItemCount(); ++row) {
      needed = std::max(needed, metrics.horizontalAdvance(list.topLevelItem(row)->text(column)));
    }
    const int width = std::max(kWidths[column], needed + kBesideText);
    list.setColumnWidth(column, width);
    whole += width;
  }
  const int rowHeight = list.sizeHintForRow(0);
  // Large enough to show all rows and columns without a scroll bar.
  list.setMinimumSize(whole, list.header()->sizeHint().height() +
                                 (list.topLevelItemCount() + 1) * rowHeight +
                                 2 * list.frameWidth());
}

void CCellCalsVw::Copy() {
  const QTreeWidget& list = *form_->constants;
  const bool all = list.selectedItems().isEmpty();
  QString text = LineOf(*list.headerItem());
  for (int row = 0; row < list.topLevelItemCount(); ++row) {
    const QTreeWidgetItem& item = *list.topLevelItem(row);
    if (all || item.isSelected()) text += LineOf(item);
  }
  QApplication::clipboard()->setText(text);
}

}  // namespace rvx
