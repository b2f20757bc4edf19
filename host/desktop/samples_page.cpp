#include "host/desktop/samples_page.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "host/desktop/theme.h"
#include "host/tray/sample_csv.h"

namespace torvell {
namespace {

// Longer than the pause between two letters, shorter than patience.
constexpr int kSearchDelay = 250;  // ms
// A day that stands for no limit.
const QDate& NoDate() {
  static const QDate date(2000, 1, 1);
  return date;
}

std::string DayText(const QDateEdit& edit) {
  return edit.date() == NoDate() ? std::string() : edit.date().toString(Qt::ISODate).toStdString();
}

QDateEdit* MakeDate(const QString& empty, QWidget* parent) {
  auto* edit = new QDateEdit(parent);
  edit->setMinimumDate(NoDate());
  edit->setDate(NoDate());
  edit->setSpecialValueText(empty);
  edit->setCalendarPopup(true);
  edit->setAccessibleName(empty);
  return edit;
}

}  // namespace

SamplesPage::SamplesPage(SampleStore& store, Worker& worker, QWidget* parent)
    : QWidget(parent),
      store_(store),
      worker_(worker),
      model_(new SamplesModel(store, worker, this)),
      table_(new QTableView(this)),
      soon_(new QTimer(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kSmallGap, kSmallGap, kSmallGap, kSmallGap);
  layout->setSpacing(kSmallGap);
  MakeFilters();
  table_->setModel(model_);
  table_->setAccessibleName(QStringLiteral("Stored samples"));
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setShowGrid(false);
  table_->setWordWrap(false);
  table_->setAlternatingRowColors(true);
  table_->setSortingEnabled(true);
  table_->sortByColumn(SamplesModel::Time, Qt::DescendingOrder);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  table_->horizontalHeader()->setHighlightSections(false);
  for (int column = 0; column < SamplesModel::ColumnCount; ++column) {
    const int heading = fontMetrics().horizontalAdvance(SampleHeading(column)) + 30;
    table_->setColumnWidth(column, std::max(heading, 64));
  }
  table_->setColumnWidth(
      SamplesModel::Time,
      fontMetrics().horizontalAdvance(QStringLiteral("00.00.0000 00:00:00")) + 14);
  table_->setColumnWidth(SamplesModel::SampleId, 130);
  // What somebody looks for first stands at the left.
  table_->horizontalHeader()->moveSection(SamplesModel::SampleId, 1);
  table_->horizontalHeader()->moveSection(
      table_->horizontalHeader()->visualIndex(SamplesModel::Viscosity), 2);
  layout->addWidget(table_, 1);

  auto* row = new QHBoxLayout();
  count_ = new QLabel(this);
  auto* exportButton = new QToolButton(this);
  exportButton->setText(QStringLiteral("Export CSV"));
  exportButton->setPopupMode(QToolButton::InstantPopup);
  auto* menu = new QMenu(exportButton);
  menu->addAction(QStringLiteral("&All That Match ..."), this, &SamplesPage::ExportAll);
  menu->addAction(QStringLiteral("&Selected Rows ..."), this, &SamplesPage::ExportSelected);
  exportButton->setMenu(menu);
  row->addWidget(count_, 1);
  row->addWidget(exportButton);
  layout->addLayout(row);

  auto* copy = new QAction(QStringLiteral("&Copy"), table_);
  copy->setShortcut(QKeySequence::Copy);
  copy->setShortcutContext(Qt::WidgetShortcut);
  connect(copy, &QAction::triggered, this, &SamplesPage::CopySelected);
  table_->addAction(copy);
  table_->setContextMenuPolicy(Qt::ActionsContextMenu);

  soon_->setSingleShot(true);
  connect(soon_, &QTimer::timeout, this, &SamplesPage::Search);
  connect(model_, &SamplesModel::Searched, this, &SamplesPage::ShowCount);
  connect(model_, &SamplesModel::Failed, this, &SamplesPage::Failed);
  Search();
}

void SamplesPage::MakeFilters() {
  auto* row = new QHBoxLayout();
  auto* second = new QHBoxLayout();
  for (QHBoxLayout* each : {row, second}) each->setSpacing(kSmallGap);
  const auto field = [&](const QString& hint) {
    auto* edit = new QLineEdit(this);
    edit->setPlaceholderText(hint);
    edit->setAccessibleName(hint);
    edit->setClearButtonEnabled(true);
    edit->setMaxLength(200);
    row->addWidget(edit, 2);
    connect(edit, &QLineEdit::textChanged, this, [this] { soon_->start(kSearchDelay); });
    return edit;
  };
  sampleId_ = field(QStringLiteral("Sample ID"));
  instrument_ = field(QStringLiteral("Instrument"));
  kind_ = new QComboBox(this);
  kind_->addItems(
      {QStringLiteral("All kinds"), QStringLiteral("Measured"), QStringLiteral("Known viscosity")});
  kind_->setAccessibleName(QStringLiteral("Kind"));
  from_ = MakeDate(QStringLiteral("From"), this);
  to_ = MakeDate(QStringLiteral("To"), this);
  // They may get narrow: the tray beside them needs the room.
  for (QWidget* each :
       {static_cast<QWidget*>(kind_), static_cast<QWidget*>(from_), static_cast<QWidget*>(to_)}) {
    each->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    each->setMinimumWidth(84);
  }
  second->addWidget(kind_, 1);
  second->addWidget(from_, 1);
  second->addWidget(to_, 1);
  connect(kind_, &QComboBox::currentIndexChanged, this, [this] { soon_->start(0); });
  for (QDateEdit* edit : {from_, to_}) {
    connect(edit, &QDateEdit::dateChanged, this, [this] { soon_->start(kSearchDelay); });
  }
  qobject_cast<QVBoxLayout*>(layout())->addLayout(row);
  qobject_cast<QVBoxLayout*>(layout())->addLayout(second);
}

void SamplesPage::Search() {
  SampleQuery query = model_->query();
  query.sampleId = sampleId_->text().trimmed().toStdString();
  query.instrument = instrument_->text().trimmed().toStdString();
  query.verified.reset();
  if (kind_->currentIndex() > 0) query.verified = kind_->currentIndex() == 2;
  query.fromDay = DayText(*from_);
  query.toDay = DayText(*to_);
  model_->SetQuery(query);
}

void SamplesPage::NoteStored() { soon_->start(kSearchDelay); }

void SamplesPage::ShowCount() {
  const int count = model_->rowCount();
  count_->setText(count == 0   ? QStringLiteral("No samples. Results appear here when a tray runs.")
                  : count == 1 ? QStringLiteral("1 sample")
                               : QStringLiteral("%1 samples").arg(count));
}

std::vector<int> SamplesPage::SelectedRows() const {
  std::vector<int> rows;
  for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
    rows.push_back(index.row());
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

void SamplesPage::CopySelected() {
  auto samples = std::make_shared<std::vector<StoredSample>>();
  worker_.Do(
      this,
      [this, rows = model_->ArchiveRows(SelectedRows()), samples] {
        *samples = store_.ReadRows(rows);
      },
      [samples] {
        QStringList lines;
        QStringList heading;
        for (int column = 0; column < SamplesModel::ColumnCount; ++column) {
          heading << SampleHeading(column);
        }
        lines << heading.join(QLatin1Char('\t'));
        for (const StoredSample& sample : *samples) {
          QStringList cells;
          for (int column = 0; column < SamplesModel::ColumnCount; ++column) {
            cells << SampleCell(sample, column);
          }
          lines << cells.join(QLatin1Char('\t'));
        }
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
      },
      [this](const QString& text) { Q_EMIT Failed(text); });
}

void SamplesPage::ExportAll() { Export(model_->AllArchiveRows()); }

void SamplesPage::ExportSelected() {
  const std::vector<int> rows = SelectedRows();
  if (rows.empty()) {
    Q_EMIT Notice(QStringLiteral("No row is selected. Select some, or export all that match."));
    return;
  }
  Export(model_->ArchiveRows(rows));
}

void SamplesPage::Export(std::vector<int64_t> rows) {
  QFileDialog dialog(this, QStringLiteral("Export samples"), QString(),
                     QStringLiteral("CSV files (*.csv);;All files (*)"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(QStringLiteral("csv"));
  if (dialog.exec() != QDialog::Accepted) return;
  const QString path = dialog.selectedFiles().front();
  const int count = static_cast<int>(rows.size());
  worker_.Do(
      this,
      [this, rows = std::move(rows), path] {
        WriteWholeFile(path.toStdString(), FormatSampleCsv(store_.ReadRows(rows)));
      },
      [this, path, count] {
        Q_EMIT Notice(QStringLiteral("%1 samples were written to %2.").arg(count).arg(path));
      },
      [this](const QString& text) { Q_EMIT Failed(text); });
}

}  // namespace torvell
