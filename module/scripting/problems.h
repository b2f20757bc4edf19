// The failures of scripting operations, in words for people.
#pragma once

#include <string>

#include "boundary/instrument_scripting.h"
#include "module/instrument/access_check.h"

namespace rvx {

inline ScriptingProblem Problem(ScriptingProblem::Kind kind, std::string message,
                                std::string field = std::string(), int32_t test = -1) {
  return {kind, std::move(message), std::move(field), test};
}

inline ScriptingProblem BadValue(std::string message, std::string field, int32_t test = -1) {
  return Problem(ScriptingProblem::Kind::BadValue, std::move(message), std::move(field), test);
}

// `detail`: the archive's reason and what became of the change.
inline ScriptingProblem NotStored(const std::string& detail) {
  return Problem(ScriptingProblem::Kind::Archive,
                 "Unable to store new instrument configuration. Please try again. " + detail);
}

// Nothing if the present user has the level.
inline ScriptingResult CheckLevel(int32_t needed, const std::string& what) {
  const std::optional<std::string> refusal = FindLevelRefusal(needed, what);
  if (!refusal) return std::nullopt;
  return Problem(ScriptingProblem::Kind::NotAllowed, *refusal);
}

}  // namespace rvx
