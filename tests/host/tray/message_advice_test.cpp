// Each fixed message that an instrument can report comes with advice.
#include "host/tray/message_advice.h"

#include <gtest/gtest.h>

#include <set>

#include "module/resources/string_table.h"

namespace torvell {
namespace {

TEST(MessageAdviceTest, EachMessageOfTheModuleHasIt) {
  // The strings that are headings, states or questions, and no messages.
  const std::set<int> others = {300, 307, 315, 340};
  int found = 0;
  for (int id = 300; id <= 367; ++id) {
    std::string text = rvx::LoadResourceString(id);
    if (text.empty() || others.count(id) > 0) continue;
    for (const auto& [format, value] :
         {std::pair{"%s", "RVX Monitor Action"}, {"%d", "50"}, {"%x", "5f"}}) {
      const size_t place = text.find(format);
      if (place != std::string::npos) text.replace(place, 2, value);
    }
    const auto advice = AdviceFor(text);
    EXPECT_TRUE(advice.has_value()) << id << ": " << text;
    ++found;
  }
  EXPECT_GT(found, 25);
}

TEST(MessageAdviceTest, OtherTextsGetNone) {
  for (const char* text : {"", "'x' is running. Almost.", "Instrument not responding",
                           "The line of COM1 is open again."}) {
    EXPECT_EQ(AdviceText(text), "") << text;
  }
  EXPECT_NE(AdviceText("Instrument not responding.").find("\nWhat to do: Check power"),
            std::string::npos);
}

}  // namespace
}  // namespace torvell
