// What the tests of durability share: distinct samples, and checks of an archive after a failure.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/host/core/temp_folder.h"

namespace torvell {

// A sample whose id, time and viscosity follow from `number`.
inline rvx::Sample NumberedSample(int number) {
  rvx::Sample sample;
  sample.sampleId = "oil " + std::to_string(number);
  sample.timestamp = platform::Date(2026, 1, 5, 8, 0, 0).PlusMilliseconds(1000 * number);
  sample.instrument = "RVX";
  sample.viscosity = 1000.25 + number;
  return sample;
}

// The number of samples with each sample id. Fails the test if a viscosity is not the stored one.
inline std::map<std::string, int> CountSamples(Host& host) {
  std::map<std::string, int> counts;
  for (const StoredSample& sample : host.samples().All()) {
    ++counts[sample.sampleId];
    const int number = std::stoi(sample.sampleId.substr(4));
    EXPECT_EQ(sample.viscosity, NumberedSample(number).viscosity) << sample.sampleId;
  }
  return counts;
}

// "ok", or what is wrong with the database's file.
inline std::string CheckIntegrity(Host& host) {
  platform::PlainGuard guard(host.database().lock());
  return host.database().connection().execAndGet("PRAGMA integrity_check").getString();
}

}  // namespace torvell
