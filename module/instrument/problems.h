// Refusals and failures of what a person or a program asks for, in words for people.
#pragma once

#include <string>

#include "boundary/scripting_problem.h"
#include "module/instrument/access_check.h"

namespace rvx {

using Code = ScriptingProblem::Code;
using Field = ScriptingProblem::Field;

inline constexpr char kNothingChanged[] = "Nothing was changed.";
inline constexpr char kNothingSent[] = "Nothing was sent.";
inline constexpr char kTrayNotChanged[] = "The tray was not changed.";

// A value that is not accepted, with what is accepted instead.
inline ScriptingProblem BadValue(Code code, Field field, std::string found,
                                 std::string accepted = std::string(),
                                 std::string outcome = std::string()) {
  ScriptingProblem problem;
  problem.code = code;
  problem.field = field;
  problem.found = std::move(found);
  problem.accepted = std::move(accepted);
  problem.outcome = std::move(outcome);
  return problem;
}

// A problem that is not about a value.
inline ScriptingProblem Unable(Code code, std::string found, std::string outcome = std::string()) {
  return BadValue(code, Field::None, std::move(found), std::string(), std::move(outcome));
}

inline ScriptingProblem OfTest(ScriptingProblem problem, int32_t test) {
  problem.test = test;
  return problem;
}

inline ScriptingProblem OfSetting(ScriptingProblem problem, std::string key) {
  problem.field = Field::Setting;
  problem.setting = std::move(key);
  return problem;
}

// `detail`: the archive's reason and whether the change was kept.
inline ScriptingProblem NotStored(Code code, const std::string& detail) {
  return Unable(code, "Unable to store new instrument configuration. Please try again.", detail);
}

// Returns nothing if the present user has the level.
inline ScriptingResult CheckLevel(int32_t needed, const std::string& what) {
  const std::optional<std::string> refusal = FindLevelRefusal(needed, what);
  if (!refusal) return std::nullopt;
  return Unable(Code::LevelTooLow, *refusal);
}

}  // namespace rvx
