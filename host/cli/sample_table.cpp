#include "host/cli/sample_table.h"

#include "host/tray/number_text.h"

namespace torvell {

SampleTable::SampleTable()
    : table_({{"time"},
              {"instrument"},
              {"position", Table::Align::Right},
              {"sample id"},
              {"temperature (degC)", Table::Align::Right},
              {"average (degC)", Table::Align::Right},
              {"speed (rpm/1000)", Table::Align::Right},
              {"viscosity (mPa*s)", Table::Align::Right},
              {"known (mPa*s)", Table::Align::Right},
              {"operator"},
              {"origin"}}) {}

void SampleTable::Add(const StoredSample& sample) {
  table_.AddRow({TimeText(sample.timestamp), sample.instrument, std::to_string(sample.position),
                 sample.sampleId, FixedNumber(TestTemperature(sample), 1),
                 FixedNumber(sample.averageTemperature, 2), OrMissing(sample.speed, 5),
                 ViscosityText(sample), OrMissing(sample.constants[4], 1), sample.operatorName,
                 OriginText(sample.simulated)});
}

}  // namespace torvell
