// Which keystrokes a number field takes. No widget: a text, the place of the caret, a key.
#pragma once

#include <QChar>
#include <QString>
#include <optional>

namespace rvx {

// A text in a field with its selection; without one `length` is 0 and `start` is the caret.
struct FieldText {
  QString text;
  int start = 0;
  int length = 0;

  QString Remaining() const { return QString(text).remove(start, length); }
  QString With(const QString& inserted) const { return Remaining().insert(start, inserted); }
};

// The number of a text as far as it is one; 0 without any. `decimalSign` as the user's locale has
// it.
double ReadNumber(const QString& text, QChar decimalSign);

// The field that opens over a cell.
class CellNumberFilter {
 public:
  // `wholeOnly`: no decimal sign. Without a range (equal ends) any number may be typed.
  CellNumberFilter(bool wholeOnly, double minimum, double maximum, QChar decimalSign)
      : wholeOnly_(wholeOnly), minimum_(minimum), maximum_(maximum), decimalSign_(decimalSign) {}

  // Whether typing this character is accepted. A positive number below the minimum is accepted, so
  // that the first digits of a good one can be typed.
  bool AcceptsKey(const FieldText& field, QChar key) const;
  // Whether a text that was inserted as a whole, pasted for example, may be in the field.
  bool AcceptsText(const QString& text) const;
  // The most characters that the field holds.
  int GetMaximumLength() const;

 private:
  bool HasRange() const { return minimum_ != maximum_; }
  bool FitsShape(const FieldText& field, QChar key) const;
  bool FitsRange(const QString& text) const;

  const bool wholeOnly_;
  const double minimum_;
  const double maximum_;
  const QChar decimalSign_;
};

// The number field that is part of a form. Both limits lie outside of what is allowed.
struct NumEditRules {
  int integerDigits = 0;
  int decimalDigits = 0;
  double maximum = 0.0;
  double minimum = 0.0;
  QChar decimalSign = u'.';

  bool AcceptsKey(const FieldText& field, QChar key) const;
  // Whether the text that remains after a removal is allowed.
  bool AcceptsRemoval(const QString& remaining) const;
  // A text that was put in as a whole.
  bool AcceptsText(const QString& text) const;

 private:
  bool FitsShape(const FieldText& field, QChar key) const;
  bool IsInside(const QString& text) const;
  int CountIntegerDigits(const QString& text) const;
  int CountDecimalDigits(const QString& text) const;
};

}  // namespace rvx
