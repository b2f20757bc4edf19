// The locale of a laboratory that writes a comma as decimal sign.
#pragma once

#include <clocale>
#include <string>

namespace platform {

// Sets this locale for the whole process until the end of the scope. set() is false on a machine
// that lacks it.
class GermanLocale {
 public:
  GermanLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
    set_ = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  }
  ~GermanLocale() { std::setlocale(LC_ALL, before_.c_str()); }
  GermanLocale(const GermanLocale&) = delete;
  GermanLocale& operator=(const GermanLocale&) = delete;
  bool set() const { return set_; }

 private:
  std::string before_;
  bool set_ = false;
};

}  // namespace platform
