#include "host/desktop/messages_page.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "host/desktop/message_list.h"
#include "host/desktop/theme.h"

namespace torvell {

MessagesPage::MessagesPage(MessageList& list, QWidget* parent)
    : QWidget(parent), list_(list), table_(new QTableView(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kSmallGap, kSmallGap, kSmallGap, kSmallGap);
  layout->setSpacing(kSmallGap);
  table_->setModel(&list_);
  table_->setAccessibleName(QStringLiteral("Messages"));
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setShowGrid(false);
  table_->setWordWrap(false);
  table_->setAlternatingRowColors(true);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  QHeaderView* header = table_->horizontalHeader();
  header->setHighlightSections(false);
  table_->setColumnWidth(
      MessageList::Time,
      fontMetrics().horizontalAdvance(QStringLiteral("00.00.0000 00:00:00")) + 14);
  table_->setColumnWidth(MessageList::Severity, 90);
  table_->setColumnWidth(MessageList::Source, 80);
  table_->setColumnWidth(MessageList::Seen,
                         fontMetrics().horizontalAdvance(QStringLiteral("Acknowledged")) + 16);
  table_->setColumnWidth(MessageList::Text, 250);
  // The text of a message comes before its source.
  header->moveSection(MessageList::Text, 2);
  header->setStretchLastSection(true);
  layout->addWidget(table_, 1);

  whole_ = new QLabel(this);
  whole_->setWordWrap(true);
  whole_->setTextFormat(Qt::PlainText);
  whole_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(whole_);

  auto* row = new QHBoxLayout();
  count_ = new QLabel(this);
  count_->setWordWrap(true);
  one_ = new QPushButton(QStringLiteral("Ac&knowledge"), this);
  all_ = new QPushButton(QStringLiteral("Acknowledge A&ll"), this);
  row->addWidget(count_, 1);
  row->addWidget(one_);
  row->addWidget(all_);
  layout->addLayout(row);

  connect(one_, &QPushButton::clicked, this, &MessagesPage::AcknowledgeSelected);
  connect(all_, &QPushButton::clicked, &list_, &MessageList::AcknowledgeAll);
  connect(&list_, &MessageList::OpenChanged, this, &MessagesPage::Refresh);
  connect(&list_, &QAbstractItemModel::modelReset, this, &MessagesPage::Refresh);
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &MessagesPage::Refresh);
  Refresh();
}

void MessagesPage::Refresh() {
  const QModelIndexList selected = table_->selectionModel()->selectedRows();
  const int open = list_.OpenCount();
  bool selectedOpen = false;
  for (const QModelIndex& index : selected) {
    selectedOpen = selectedOpen || !list_.at(index.row()).acknowledged;
  }
  one_->setEnabled(selectedOpen);
  all_->setEnabled(open > 0);
  whole_->setVisible(selected.size() == 1);
  if (selected.size() == 1) {
    const ErrorReport& report = list_.at(selected.front().row()).report;
    whole_->setText(WithAdvice(QString::fromStdString(report.message), report));
  }
  if (list_.rowCount() == 0) {
    count_->setText(QStringLiteral("No messages. What fails or needs attention is listed here."));
  } else {
    count_->setText(QStringLiteral("%1 messages, %2 open").arg(list_.rowCount()).arg(open));
  }
}

void MessagesPage::AcknowledgeSelected() {
  for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
    list_.Acknowledge(index.row());
  }
}

}  // namespace torvell
