// The appearance: two palettes, one accent colour, icons that differ by shape.
#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class QApplication;
class QPalette;

namespace torvell {

// Distances in the window, in pixels of scale 1.
inline constexpr int kGap = 8;
inline constexpr int kSmallGap = 4;

struct ThemeColors {
  QColor background;  // of the window
  QColor base;        // of tables and fields
  QColor text;
  QColor quiet;   // less important text
  QColor line;    // borders and grids
  QColor accent;  // the one colour for emphasis
  QColor accentText;
  QColor running;   // background of the row that runs
  QColor selected;  // background of selected rows, weaker than that of the running one
  QColor warning;   // background of a banner
  QColor warningText;
  QColor secondCurve;  // the plot's second curve, also drawn dashed
};

enum class ThemeKind { Light, Dark };

// Sets style, palette and font of the whole program. The window's thread only.
void ApplyTheme(QApplication& application, ThemeKind kind);
// Returns whether the desktop's own palette is light or dark.
ThemeKind DesktopTheme();
// Returns the colours of the theme in use.
const ThemeColors& Colors();

enum class Shape {
  None,
  Waiting,  // empty circle
  Running,  // filled triangle
  Done,     // tick
  Failed,   // cross
  Paused,   // two bars
  NotRun,   // dash
  Warning,  // triangle with a mark
  Info,     // circle with an i
  Lost,     // broken line
  Locked    // padlock
};

// Returns an icon of 16 pixels in the colours of the theme, sharp at every scale. Every state has a
// different shape, so that no two states differ by colour alone.
QIcon ShapeIcon(Shape shape);
// Returns the same in the given colour.
QIcon ShapeIcon(Shape shape, const QColor& color);

}  // namespace torvell
