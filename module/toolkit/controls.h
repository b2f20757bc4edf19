// Controls of a form by their ids. A form names each control that code or help refers to by the
// dynamic property `controlId`.
#pragma once

#include <QWidget>

#include "module/toolkit/gui_thread.h"

namespace rvx {

inline constexpr char kControlIdProperty[] = "controlId";
// The ids that every dialog gives its two buttons.
inline constexpr int kOkId = 1;
inline constexpr int kCancelId = 2;

// The control of an id below `root`, or null if the form has none of this id and class. GUI thread.
template <class Control = QWidget>
Control* FindControl(const QWidget& root, int id) {
  AssertGuiThread("FindControl");
  for (QWidget* child : root.findChildren<QWidget*>()) {
    const QVariant property = child->property(kControlIdProperty);
    if (property.isValid() && property.toInt() == id) return dynamic_cast<Control*>(child);
  }
  return nullptr;
}

}  // namespace rvx
