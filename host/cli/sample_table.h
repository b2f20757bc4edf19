// Samples as a table for people.
#pragma once

#include <string>

#include "host/cli/table.h"
#include "host/tray/sample_text.h"
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

}  // namespace torvell
