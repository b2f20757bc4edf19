#include "host/desktop/samples_page.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
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

#include "host/desktop/day_field.h"
#include "host/desktop/save_dialog.h"
#include "host/desktop/theme.h"
#include "host/tray/sample_csv.h"

namespace torvell {
namespace {

// ms; longer than the pause between two letters, but not felt as a delay.
constexpr int kSearchDelay = 250;
std::string DayText(const DayField& field) {
  return field.day().toString(Qt::ISODate).toStdString();
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
  // The columns that are looked at most are at the left.
  QHeaderView* header = table_->horizontalHeader();
  header->moveSection(header->visualIndex(SamplesModel::SampleId), 0);
  header->moveSection(header->visualIndex(SamplesModel::Viscosity), 1);
  layout->addWidget(table_, 1);

  auto* row = new QHBoxLayout();
  count_ = new QLabel(this);
  count_->setWordWrap(true);
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
  from_ = new DayField(QStringLiteral("From"), this);
  to_ = new DayField(QStringLiteral("To"), this);
  // It may become narrow: the tray beside it needs the room.
  kind_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  kind_->setMinimumWidth(84);
  second->addWidget(kind_, 1);
  second->addWidget(from_, 1);
  second->addWidget(to_, 1);
  connect(kind_, &QComboBox::currentIndexChanged, this, [this] { soon_->start(0); });
  for (DayField* day : {from_, to_}) {
    connect(day, &DayField::Changed, this, [this] { soon_->start(kSearchDelay); });
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
  const QString none = model_->query().IsFiltered()
                           ? QStringLiteral("No sample matches. Change or clear the filters.")
                           : QStringLiteral("No samples. Results appear here when a tray runs.");
  count_->setText(count == 0   ? none
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
  const int count = static_cast<int>(rows.size());
  Write(count, [this, rows = std::move(rows)] { return store_.ReadRows(rows); });
}

void SamplesPage::ExportThese(std::vector<StoredSample> samples) {
  if (samples.empty()) {
    Q_EMIT Notice(QStringLiteral("The run has no results, so there is nothing to export."));
    return;
  }
  const int count = static_cast<int>(samples.size());
  Write(count, [samples = std::move(samples)] { return samples; });
}

void SamplesPage::Write(int count, std::function<std::vector<StoredSample>()> read) {
  const QString path =
      AskForCsvName(this, QStringLiteral("Export samples"), QStringLiteral("CSV files"));
  if (path.isEmpty()) return;
  worker_.Do(
      this,
      [read = std::move(read), path] {
        WriteWholeFile(path.toStdString(), FormatSampleCsv(read()));
      },
      [this, path, count] {
        const QString what = count == 1 ? QStringLiteral("1 sample was")
                                        : QStringLiteral("%1 samples were").arg(count);
        Q_EMIT Notice(QStringLiteral("%1 written to %2.").arg(what, path));
      },
      [this](const QString& text) { Q_EMIT Failed(text); });
}

}  // namespace torvell
