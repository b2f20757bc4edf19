// Why an instrument did not do what a program asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rvx {

// A refusal as a record: the program that shows it decides by `code` and `field`, and composes the
// sentences for its readers from the texts, or shows Sentences() as they are.
struct ScriptingProblem {
  // The kinds of refusal that a script has to distinguish.
  enum class Kind { BadValue, NotAllowed, Busy, NoAnswer, Refused, Archive };

  enum class Code {
    // BadValue
    OutOfRange,
    NotAccepted,  // a text that is not one of the accepted ones
    Missing,      // something that is needed was not given
    NotWanted,    // something was given where nothing is accepted
    TooMany,
    UnknownSetting,       // there is no setting of this key
    FixedSetting,         // nobody may change this setting
    DamagedText,          // a settings text that can't be taken as a whole
    NoSampleAction,       // an action that has no tests
    NoCellConstants,      // a temperature without calibration constants
    DiffersFromStandard,  // another viscosity than the stored standard of this name has
    StandardsLacking,     // the stored standards do not conform at a temperature
    ChoiceNotConforming,  // the chosen ones do not
    // NotAllowed
    LevelTooLow,
    NotSimulated,  // only a simulated instrument does this
    // Busy
    TrayRunning,
    SampleStarted,  // the sample runs or has run
    // NoAnswer
    NoReply,
    // Refused
    RefusedByInstrument,
    NotDrawn,          // a sheet could not be made into a PDF
    NoStepperService,  // the model has no steppers that a person may move
    // Archive
    NotStored,           // and nothing was changed
    ConstantsNotStored,  // new constants are in force all the same
    NotRead
  };

  // What the problem is about.
  enum class Field {
    None,
    Setting,  // `setting` has its key
    Temperature,
    RotorOnTime,
    KnownViscosity,
    InjectionTime,
    CoolDownTime,
    Constants,
    Hours,
    Standards,  // the names of standards to be used
    SettingsText,
    Action,
    Target  // of an axis
  };

  Code code = Code::OutOfRange;
  Field field = Field::None;
  // Whole sentences: what is wrong.
  std::string found;
  // What is accepted instead, without a full stop; empty where there is nothing to name.
  std::string accepted;
  // Whole sentences: what was done and what helps; may be empty.
  std::string outcome;
  std::string setting;
  int32_t test = -1;  // its index in a list of tests; -1: not about one test

  // Each code belongs to one kind.
  Kind kind() const {
    if (code <= Code::ChoiceNotConforming) return Kind::BadValue;
    if (code <= Code::NotSimulated) return Kind::NotAllowed;
    if (code <= Code::SampleStarted) return Kind::Busy;
    if (code <= Code::NoReply) return Kind::NoAnswer;
    if (code <= Code::NoStepperService) return Kind::Refused;
    return Kind::Archive;
  }

  // The three texts as one, complete for people. It names no command and no menu, which only the
  // program that shows it knows.
  std::string Sentences() const {
    std::string text = found;
    if (!accepted.empty()) text += " Accepted: " + accepted + ".";
    if (!outcome.empty()) text += " " + outcome;
    return text;
  }
};

using ScriptingResult = std::optional<ScriptingProblem>;  // nothing: done

}  // namespace rvx
