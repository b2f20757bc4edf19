// Samples as a table for people.
#pragma once

#include <string>

#include "host/cli/table.h"
#include "instrument/host/sample.h"

namespace torvell {

class SampleTable {
 public:
  SampleTable();
  void Add(const rvx::Sample& sample);
  std::string Text() const { return table_.Text(); }

 private:
  Table table_;
};

// The temperature that a sample's test was made for, degrees C.
inline double TestTemperature(const rvx::Sample& sample) { return sample.constants[5]; }

// Its viscosity with a decimal, mPa*s; empty if none could be calculated.
std::string ViscosityText(const rvx::Sample& sample);

}  // namespace torvell
