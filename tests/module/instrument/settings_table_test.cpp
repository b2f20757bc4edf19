#include "module/instrument/settings_table.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>

#include "platform/text.h"
#include "tests/support/fake_host.h"

namespace rvx {
namespace {

// The range that the number fields of the settings screens accept, without both limits.
struct TypedLimits {
  const char* key;
  int integerDigits, decimals;
  double below, above;
};
const TypedLimits kTyped[] = {
    {"probe-a0", 1, 6, -1e-6, 2.0},           {"probe-a1", 1, 6, -1e-6, 1.0},
    {"probe-a2", 1, 9, -1e-9, 1.0},           {"check-standard-interval", 3, 0, -1.0, 1000.0},
    {"precondition-time", 1, 0, -0.01, 9.1},  {"injection-time", 3, 0, -0.01, 255.1},
    {"cool-down-time", 3, 0, -0.01, 255.1},   {"rotor-on-time", 3, 0, -0.01, 255.1},
    {"temperature-offset", 1, 2, -0.001, 1.0}};

// A number near an end or anywhere around the range, with about as many decimals as are allowed.
std::string AnyNumber(double least, double most, int decimals) {
  const int shown = std::max(0, decimals + *rc::gen::inRange(-1, 2));
  const double step = std::pow(10.0, -shown);
  const double value = *rc::gen::elementOf(std::vector<double>{
      least + step * *rc::gen::inRange(-2, 3), most + step * *rc::gen::inRange(-2, 3),
      least + (most - least) * *rc::gen::inRange(-20, 121) / 100.0});
  return platform::FormatText("%.*f", shown, value);
}

// Writes the text. No other setting may change.
SettingAnswer Answer(const Setting& setting, const std::string& text) {
  ConfigurationFields record = MakeDefaultConfiguration('4');
  const std::string before = record.ToText();
  const SettingAnswer answer = WriteSetting(setting, record, text);
  if (answer == SettingAnswer::Refused) {
    RC_ASSERT(record.ToText() == before);
    return answer;
  }
  const double kept = platform::ParseLeadingDouble(ReadSetting(setting, record));
  RC_ASSERT(std::fabs(kept - platform::ParseLeadingDouble(text)) <
            std::pow(10.0, -setting.decimals));
  ConfigurationFields back = MakeDefaultConfiguration('4');
  CopySetting(setting, back, record);
  RC_ASSERT(back.ToText() == record.ToText());
  CopySetting(setting, back, MakeDefaultConfiguration('4'));
  RC_ASSERT(back.ToText() == before);
  return answer;
}

// Whether it is accepted without a question.
bool Write(const Setting& setting, const std::string& text) {
  return Answer(setting, text) == SettingAnswer::Accepted;
}

RC_GTEST_PROP(SettingsTable, TakesWhatAScreenLetsBeTyped, ()) {
  FakeHost host;
  const TypedLimits typed =
      *rc::gen::elementOf(std::vector<TypedLimits>(std::begin(kTyped), std::end(kTyped)));
  const Setting& setting = *FindSetting(typed.key);
  const std::string text =
      AnyNumber(std::ceil(typed.below), std::floor(typed.above), typed.decimals);
  const double value = *platform::ParseDouble(text);
  // Trailing zeros do not change the number.
  const bool fits =
      typed.decimals == 0
          ? text.find('.') == std::string::npos
          : platform::ParseDouble(platform::FormatText("%.*f", typed.decimals, value)) == value;
  // With a 0 as a constant of the probe every temperature is wrong.
  const bool isDoubtful = setting.group == SettingGroup::Probe && value == 0.0;
  const bool isTyped = value > typed.below && value < typed.above && fits;
  RC_ASSERT(Answer(setting, text) == (!isTyped     ? SettingAnswer::Refused
                                      : isDoubtful ? SettingAnswer::Doubtful
                                                   : SettingAnswer::Accepted));
  RC_ASSERT(setting.integerDigits == typed.integerDigits);
  RC_ASSERT(setting.decimals == typed.decimals);
}

RC_GTEST_PROP(SettingsTable, TakesTheEndsThatItNamesAndNothingBeyond, ()) {
  FakeHost host;
  for (const Setting& setting : GetSettingsTable()) {
    const std::string accepted = AcceptedText(setting);
    const size_t to = accepted.find(" to ");
    if (setting.level == kLevelUnreachable || to == std::string::npos) continue;
    const double ends[] = {*platform::ParseDouble(accepted.substr(0, to)),
                           *platform::ParseDouble(accepted.substr(to + 4))};
    const double off = std::pow(10.0, -setting.decimals) * *rc::gen::inRange(1, 1000);
    for (const int i : {0, 1}) {
      const auto text = [&](double value) {
        return platform::FormatText("%.*f", setting.decimals, value);
      };
      RC_ASSERT(Write(setting, text(ends[i])));
      RC_ASSERT(!Write(setting, text(i == 0 ? ends[i] - off : ends[i] + off)));
    }
    for (const char* text : {"nan", "", "1,5", "3x"}) RC_ASSERT(!Write(setting, text));
  }
}

TEST(SettingsTable, TakesItsOwnDefaultsOnTheModelsThatHaveThem) {
  const FakeHost host;
  for (const char model : {'1', '4'}) {
    ConfigurationFields record = MakeDefaultConfiguration(model);
    record.testRecord.saveLocation = "/";
    const std::string before = record.ToText();
    for (const Setting& setting : GetSettingsTable()) {
      const bool isWritten =
          WriteSetting(setting, record, ReadSetting(setting, record)) == SettingAnswer::Accepted;
      const bool isOffsetWithout = setting.key == std::string("temperature-offset") && model == '1';
      EXPECT_EQ(isWritten, setting.level != kLevelUnreachable && !isOffsetWithout) << setting.key;
    }
    EXPECT_EQ(record.ToText(), before);
  }
}

TEST(SettingsTable, TakesTextsThatCanBeKept) {
  const FakeHost host;
  ConfigurationFields record;
  const auto write = [&record](const char* key, const std::string& text) {
    return WriteSetting(*FindSetting(key), record, text) == SettingAnswer::Accepted;
  };
  EXPECT_TRUE(write("instrument-id", " RVX 7 "));
  EXPECT_TRUE(write("probe-id", " \"1\", "));
  EXPECT_TRUE(write("save-location", "/tmp"));
  for (const char* wrong : {"a\"b", "a,b", "a\vb"}) {
    EXPECT_FALSE(write("instrument-id", wrong));
  }
  EXPECT_FALSE(write("probe-id", "a\nb") || write("save-location", "/a\tb"));
  EXPECT_FALSE(write("injection-temperature", "7") || write("save-csv", "yes"));
  EXPECT_EQ(record.instrumentId + "|" + record.probeId + "|" + record.testRecord.saveLocation,
            "RVX 7|\"1\",|/tmp/");
  EXPECT_EQ(FindSetting("nonsense"), nullptr);
  EXPECT_EQ(WriteSetting(*FindSetting("instrument-id"), record, " "), SettingAnswer::Doubtful);
  EXPECT_EQ(record.instrumentId, "");
}

}  // namespace
}  // namespace rvx
