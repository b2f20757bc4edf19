// Numbers as a screen shows them and a person types them: with the user's decimal sign. Stored
// texts never pass through here.
#pragma once

#include <QChar>
#include <QString>
#include <string>

namespace rvx {

// The decimal sign of the user's locale.
QChar DecimalSign();

// A number text with a point, "-20.00", with the user's decimal sign.
std::string ToLocal(const std::string& number);

// A typed number text, with a point as decimal sign.
std::string FromLocal(const std::string& number);

}  // namespace rvx
