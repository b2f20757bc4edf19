#include "module/toolkit/editlist/number_filter.h"

#include <algorithm>

#include "platform/text.h"

namespace rvx {
namespace {

constexpr QChar kMinus = u'-';

bool IsDigit(QChar key) { return key >= u'0' && key <= u'9'; }

// A minus only at the very start; nothing in front of one; one decimal sign.
bool FitsPlace(const FieldText& field, QChar key, QChar decimalSign) {
  const QString remaining = field.Remaining();
  if (key == kMinus) return field.start == 0 && !remaining.contains(kMinus);
  if (field.start == 0 && remaining.startsWith(kMinus)) return false;
  return key != decimalSign || !remaining.contains(decimalSign);
}

// Whether each character could be typed after the ones before it, limits apart.
template <class FitsShape>
bool EachFits(const QString& text, const FitsShape& fits) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (!fits(FieldText{text.left(i), static_cast<int>(i), 0}, text[i])) return false;
  }
  return true;
}

}  // namespace

double ReadNumber(const QString& text, QChar decimalSign) {
  return platform::ParseLeadingDouble(QString(text).replace(decimalSign, u'.').toStdString());
}

// --- CellNumberFilter

bool CellNumberFilter::FitsShape(const FieldText& field, QChar key) const {
  if (!IsDigit(key) && key != kMinus && (wholeOnly_ || key != decimalSign_)) return false;
  return FitsPlace(field, key, decimalSign_);
}

bool CellNumberFilter::FitsRange(const QString& text) const {
  if (text == kMinus) return true;  // no number yet
  const double value = ReadNumber(text, decimalSign_);
  if (value < 0.0 && value < minimum_) return false;
  // Below a negative maximum the first digits of a good number are above it.
  return value <= maximum_ || (value < 0.0 && maximum_ < 0.0);
}

bool CellNumberFilter::AcceptsKey(const FieldText& field, QChar key) const {
  if (!FitsShape(field, key)) return false;
  if (!HasRange()) return true;
  if (key == kMinus && minimum_ >= 0.0) return false;
  return FitsRange(field.With(key));
}

bool CellNumberFilter::AcceptsText(const QString& text) const {
  // What can be typed grows with the range; nobody needs a number of this length.
  constexpr int kMaxCharacters = 32;
  if (text.size() > kMaxCharacters) return false;
  const auto fits = [this](const FieldText& field, QChar key) { return FitsShape(field, key); };
  return EachFits(text, fits) && (!HasRange() || FitsRange(text));
}

int CellNumberFilter::GetMaximumLength() const {
  // Generous, by the size of the maximum; without a range as many as a sensible number has.
  constexpr int kWithoutRange = 30;
  if (!HasRange()) return kWithoutRange;
  const int limit = static_cast<int>(maximum_) / 10 + (wholeOnly_ ? 1 : 3);
  // A small range still takes each of its numbers.
  constexpr int kMinCharacters = 6;
  return std::max(limit, kMinCharacters);
}

// --- NumEditRules

int NumEditRules::CountIntegerDigits(const QString& text) const {
  const QString integer = text.section(decimalSign, 0, 0);
  return static_cast<int>(std::count_if(integer.begin(), integer.end(), IsDigit));
}

int NumEditRules::CountDecimalDigits(const QString& text) const {
  const QString decimals = text.section(decimalSign, 1);
  return static_cast<int>(std::count_if(decimals.begin(), decimals.end(), IsDigit));
}

bool NumEditRules::IsInside(const QString& text) const {
  const double value = ReadNumber(text, decimalSign);
  return value > minimum && value < maximum;
}

bool NumEditRules::FitsShape(const FieldText& field, QChar key) const {
  if (!FitsPlace(field, key, decimalSign)) return false;
  if (key == kMinus) return minimum < 0.0;
  if (key == decimalSign) return decimalDigits != 0;
  if (!IsDigit(key)) return false;
  const QString text = field.With(key);
  return CountIntegerDigits(text) <= integerDigits && CountDecimalDigits(text) <= decimalDigits;
}

bool NumEditRules::AcceptsKey(const FieldText& field, QChar key) const {
  return FitsShape(field, key) && (!IsDigit(key) || IsInside(field.With(key)));
}

bool NumEditRules::AcceptsRemoval(const QString& remaining) const {
  return remaining.isEmpty() ||
         (IsInside(remaining) && CountIntegerDigits(remaining) <= integerDigits);
}

bool NumEditRules::AcceptsText(const QString& text) const {
  const auto fits = [this](const FieldText& field, QChar key) { return FitsShape(field, key); };
  return text.isEmpty() || (EachFits(text, fits) && IsInside(text));
}

}  // namespace rvx
