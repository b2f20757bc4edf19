// Samples as a table for people.
#pragma once

#include <string>

#include "host/cli/table.h"
#include "host/core/sample_store.h"
#include "host/tray/sample_text.h"

namespace torvell {

class SampleTable {
 public:
  SampleTable();
  void Add(const StoredSample& sample);
  std::string Text() const { return table_.Text(); }

 private:
  Table table_;
};

}  // namespace torvell
