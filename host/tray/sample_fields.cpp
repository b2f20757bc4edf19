#include "host/tray/sample_fields.h"

#include "boundary/sample_constants.h"
#include "host/tray/sample_text.h"

namespace torvell {
namespace {

using Order = SampleQuery::Order;
using S = StoredSample;

constexpr SampleField kFields[] = {
    {Order::Time, "time", "Time", false, [](const S& s) -> ShownValue { return s.timestamp; }},
    {Order::Instrument, "instrument", "Instrument", false,
     [](const S& s) -> ShownValue { return s.instrument; }},
    {Order::Position, "position", "Pos.", true,
     [](const S& s) -> ShownValue { return int64_t{s.position}; }},
    {Order::SampleId, "sample id", "Sample ID", false,
     [](const S& s) -> ShownValue { return s.sampleId; }},
    {Order::Temperature, "temperature (degC)", "Test (°C)", true,
     [](const S& s) -> ShownValue {
       return ShownNumber{TestTemperature(s), 1};
     }},
    {Order::Average, "average (degC)", "Average (°C)", true,
     [](const S& s) -> ShownValue {
       return ShownNumber{s.averageTemperature, 2};
     }},
    {Order::Speed, "speed (rpm/1000)", "Speed (rpm/1000)", true,
     [](const S& s) -> ShownValue {
       return ShownNumber{s.speed, 5, true};
     }},
    {Order::Viscosity, "viscosity (mPa*s)", "Viscosity (mPa*s)", true,
     [](const S& s) -> ShownValue {
       return ShownNumber{s.viscosity, 1, true};
     }},
    {Order::Known, "known (mPa*s)", "Known (mPa*s)", true,
     [](const S& s) -> ShownValue {
       return ShownNumber{s.constants[rvx::kConstantKnownViscosity], 1, true};
     }},
    {Order::Operator, "operator", "Operator", false,
     [](const S& s) -> ShownValue { return s.operatorName; }},
    {Order::Origin, "origin", "Origin", false,
     [](const S& s) -> ShownValue { return ShownOrigin{s.simulated}; }},
};

}  // namespace

std::span<const SampleField> SampleFields() { return kFields; }

}  // namespace torvell
