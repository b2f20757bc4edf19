#include "host/cli/json_records.h"

#include "host/tray/number_text.h"

namespace torvell {

Json IdentityJson(const rvx::InstrumentIdentity& identity) {
  return {{"port", identity.portName},
          {"address", identity.address},
          {"modelCode", identity.modelCode},
          {"model", identity.model},
          {"options", identity.options},
          {"firmware", identity.firmware},
          {"serialNumber", identity.serialNumber},
          {"simulated", identity.simulated}};
}

Json ReadingsJson(const rvx::InstrumentReadings& readings) {
  return {{"intCount", readings.intCount},
          {"temperature", NumberOrNull(readings.temperature)},
          {"targetTemperature",
           readings.targetTemperature ? NumberOrNull(*readings.targetTemperature) : Json(nullptr)},
          {"plusVss", NumberOrNull(readings.plusVss)},
          {"minusVss", NumberOrNull(readings.minusVss)},
          {"speed", NumberOrNull(readings.speed)},
          {"machineStatus", readings.machineStatus},
          {"machineStatusText", readings.machineStatusText},
          {"switchByte", readings.switchByte},
          {"operation", readings.operation},
          {"operationText", readings.operationText},
          {"errorCode", readings.errorCode}};
}

Json SampleJson(const StoredSample& sample) {
  Json object = Json::object();
  const std::vector<ColumnValue> values = SampleValues(sample);
  for (size_t i = 0; i < values.size(); ++i) {
    Json& slot = object[SampleColumns()[i].name];
    std::visit(
        [&slot](const auto& value) {
          using Value = std::decay_t<decltype(value)>;
          if constexpr (std::is_same_v<Value, std::monostate>) {
            slot = nullptr;
          } else if constexpr (std::is_same_v<Value, double>) {
            slot = NumberOrNull(value);
          } else {
            slot = value;
          }
        },
        values[i]);
  }
  object["Simulated"] = sample.simulated;
  return object;
}

Json ReportJson(const ErrorReport& report) {
  const std::string time = TimeText(report.time);
  return {{"time", time.empty() ? Json(nullptr) : Json(time)},
          {"kind", report.kind},
          {"source", report.source},
          {"message", report.message},
          {"tray", report.tray},
          {"position", report.position},
          {"sampleId", report.sampleId},
          {"operator", report.operatorName}};
}

}  // namespace torvell
