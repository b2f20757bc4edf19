#include "platform/guid.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <vector>

namespace platform {
namespace {

std::vector<Guid> Make(int count) {
  std::vector<Guid> guids;
  for (int i = 0; i < count; ++i) guids.push_back(CreateGuid());
  return guids;
}

// In one test, since a seed stays in force for the rest of the process.
TEST(Guids, AreNewEachTimeAndRepeatedBySeedAndStream) {
  const std::vector<Guid> random = Make(1000);
  SeedGuids(7, 0);
  const std::vector<Guid> first = Make(1000);
  SeedGuids(7, 0);
  EXPECT_EQ(first, Make(1000));
  std::set<Guid> all(random.begin(), random.end());
  all.insert(first.begin(), first.end());
  // Neighbouring seeds and streams give unrelated identifiers.
  for (const auto& [seed, stream] : {std::pair{7, 1}, {8, 0}, {6, 1}, {0, 8}}) {
    SeedGuids(static_cast<uint64_t>(seed), static_cast<uint64_t>(stream));
    for (const Guid& guid : Make(1000)) all.insert(guid);
  }
  EXPECT_EQ(6000u, all.size());
  const std::regex form("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
  for (const Guid& guid : all) EXPECT_TRUE(std::regex_match(FormatGuid(guid), form));
}

}  // namespace
}  // namespace platform
