// The meaning of the host's WindowHandle: a QWidget, on both sides of the boundary.
#pragma once

#include <QWidget>

#include "boundary/viscometer_instrument.h"

namespace rvx {

// Null stays null. The pointer is passed on as it is, so both sides must mean the QWidget itself
// and not a class derived from it.
inline QWidget* ToWidget(WindowHandle* handle) { return reinterpret_cast<QWidget*>(handle); }
inline WindowHandle* ToHandle(QWidget* widget) { return reinterpret_cast<WindowHandle*>(widget); }

}  // namespace rvx
