// The JSON of instruments, readings, samples and reports: keys are a contract with scripts.
#pragma once

#include "host/cli/output.h"
#include "host/core/error_store.h"
#include "host/core/sample_store.h"
#include "instrument/host/instrument_scripting.h"

namespace torvell {

Json IdentityJson(const rvx::InstrumentIdentity& identity);
Json ReadingsJson(const rvx::InstrumentReadings& readings);
// Every column of the archive by its name, in the archive's order, and then "Simulated".
Json SampleJson(const StoredSample& sample);
Json ReportJson(const ErrorReport& report);

}  // namespace torvell
