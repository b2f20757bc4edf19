// The JSON of instruments, readings, samples and reports. The keys are a contract with scripts.
#pragma once

#include "boundary/instrument_scripting.h"
#include "host/cli/output.h"
#include "host/core/error_store.h"
#include "host/core/sample_store.h"

namespace torvell {

Json IdentityJson(const rvx::InstrumentIdentity& identity);
Json ReadingsJson(const rvx::InstrumentReadings& readings);
// Every column of the archive by its name, in the archive's order, and then "Simulated".
Json SampleJson(const StoredSample& sample);
Json ReportJson(const ErrorReport& report);

}  // namespace torvell
