#include "module/toolkit/editlist/edit_list_delegate.h"

#include <QPainter>
#include <algorithm>

namespace rvx {
namespace {

constexpr int kMinMargin = 2;
constexpr int kRightMargin = 6;  // of all columns but the first, where the text leaves room for it

}  // namespace

EditListDelegate::EditListDelegate(const EditTable& table, QWidget* owner)
    : QStyledItemDelegate(owner), table_(table), owner_(owner) {}

void EditListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
  painter->save();
  const QRect cell = option.rect;
  const QPalette& palette = option.palette;
  const bool enabled = owner_->isEnabled();
  const bool current = owner_->hasFocus() && index.row() == table_.currentRow();
  painter->fillRect(cell, palette.brush(current ? QPalette::AlternateBase : QPalette::Base));
  painter->setPen(palette.color(QPalette::Mid));
  // Neighbours share a line: each cell draws its right and lower one.
  painter->drawLine(cell.topRight(), cell.bottomRight());
  painter->drawLine(cell.bottomLeft(), cell.bottomRight());

  const bool first = index.column() == 0;
  const bool grey = !enabled || table_.IsAddRow(index.row());
  painter->setPen(palette.color(grey ? QPalette::Disabled : QPalette::Active, QPalette::Text));
  const auto measure = [&option](const QString& text) {
    return option.fontMetrics.horizontalAdvance(text);
  };
  const QString text =
      ClipText(index.data().toString(), cell.width(), measure, QStringLiteral("..."));
  const int right = std::clamp(cell.width() - kMinMargin - measure(text), kMinMargin,
                               first ? kMinMargin : kRightMargin);
  painter->drawText(cell.adjusted(kMinMargin, 0, -right, 0),
                    (first ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter, text);
  if (current && index.column() == table_.currentColumn()) {
    painter->setPen(QPen(palette.color(QPalette::Highlight), 2));
    painter->drawRect(cell.adjusted(1, 1, -2, -2));
  }
  painter->restore();
}

}  // namespace rvx
