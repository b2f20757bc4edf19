#include "platform/process_locale.h"

#include <clocale>

namespace platform {

KeptProcessLocale::KeptProcessLocale() : before_(std::setlocale(LC_ALL, nullptr)) {}

KeptProcessLocale::~KeptProcessLocale() { std::setlocale(LC_ALL, before_.c_str()); }

}  // namespace platform
