// Keeps the locale of the process through code of libraries that set it.
#pragma once

#include <string>

namespace platform {

// Remembers the process's locale when it is made and puts it back when it is destroyed. Texts of
// this system never depend on that locale; those of libraries may. The caller makes sure that no
// other thread changes it meanwhile.
class KeptProcessLocale {
 public:
  KeptProcessLocale();
  ~KeptProcessLocale();
  KeptProcessLocale(const KeptProcessLocale&) = delete;
  KeptProcessLocale& operator=(const KeptProcessLocale&) = delete;

 private:
  const std::string before_;
};

}  // namespace platform
