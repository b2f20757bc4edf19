// The look: two palettes, one accent, icons that differ by shape.
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
  QColor quiet;   // text of second rank
  QColor line;    // borders and grids
  QColor accent;  // the one colour that draws the eye
  QColor accentText;
  QColor running;   // behind the row that runs
  QColor selected;  // behind selected rows, quieter than the running one
  QColor warning;   // behind a banner
  QColor warningText;
  QColor secondCurve;  // the plot's second curve, also drawn dashed
};

enum class ThemeKind { Light, Dark };

// Sets style, palette and font of the whole program. Window's thread.
void ApplyTheme(QApplication& application, ThemeKind kind);
// Light or dark, whichever the desktop's own palette is.
ThemeKind DesktopTheme();
// Of the theme in force.
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

// An icon of 16 pixels in the colours of the theme, sharp at every scale. Every state has a shape
// of its own, so that none is told by colour alone.
QIcon ShapeIcon(Shape shape);
// The same, in a colour of its own.
QIcon ShapeIcon(Shape shape, const QColor& color);

}  // namespace torvell
