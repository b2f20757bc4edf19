// What a port receives before it is known whether there is an instrument.
#include "fuzz/require.h"
#include "module/protocol/identification.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  rvx::IdentificationListener listener;
  for (size_t i = 0; i < size; ++i) {
    const auto reply = listener.Feed(data[i]);
    if (!reply) continue;
    fuzz::Require(data[i] == '\r', "a reply ends at a line end");
    fuzz::Require(reply->size() == 25, "a reply has 25 characters");
    fuzz::Require(reply->compare(4, 4, "RVX ") == 0, "only this instrument family is heard");
  }

  // A text of any length can be parsed as an identification, stored ones included.
  const rvx::Identification found = rvx::ParseIdentification(fuzz::ToText(data, size));
  fuzz::Require(found.firmwareVersion.size() <= 5 && found.serialNumber.size() <= 10,
                "a field keeps to its place");
  fuzz::Require(found.serialNumber.empty() || found.serialNumber.back() != ' ',
                "blanks at the end of a serial number do not count");
  rvx::FirmwareNumber(found.firmwareVersion);
  rvx::ModelName(found.modelCode, found.optionByte);
  rvx::OptionNames(found.optionByte);

  constexpr std::string_view kGood = "0QMTRVX 4 02.17SN-1      ";
  std::string heard;
  for (const char c : "\r-" + std::string(kGood) + "\r") {
    if (const auto reply = listener.Feed(static_cast<uint8_t>(c))) heard = *reply;
  }
  fuzz::Require(heard == kGood, "an instrument is found behind any noise");
  return 0;
}
