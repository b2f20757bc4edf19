#include "host/cli/sample_table.h"

#include "host/cli/number_text.h"

namespace torvell {

namespace {

// A viscosity, speed or known viscosity of exactly 0 stands for none.
std::string OrMissing(double value, int decimals) {
  return value == 0.0 ? "" : FixedNumber(value, decimals);
}

}  // namespace

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
              {"operator"}}) {}

void SampleTable::Add(const rvx::Sample& sample) {
  table_.AddRow({TimeText(sample.timestamp), sample.instrument, std::to_string(sample.position),
                 sample.sampleId, FixedNumber(TestTemperature(sample), 1),
                 FixedNumber(sample.averageTemperature, 2), OrMissing(sample.speed, 5),
                 ViscosityText(sample), OrMissing(sample.constants[4], 1), sample.operatorName});
}

std::string ViscosityText(const rvx::Sample& sample) { return OrMissing(sample.viscosity, 1); }

}  // namespace torvell
