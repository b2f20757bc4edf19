// Adds commands to the parser; the one that is chosen becomes Invocation::command.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "host/cli/options.h"

namespace torvell {

// `parent` is the program or a group of commands. `invocation` must outlive the parser; the result
// belongs to `parent`.
inline CLI::App& AddCommand(CLI::App& parent, Invocation& invocation, const std::string& name,
                            const std::string& description, std::function<int(Session&)> command) {
  CLI::App* added = parent.add_subcommand(name, description);
  added->callback([&invocation, command = std::move(command)] { invocation.command = command; });
  return *added;
}

// The same for a command of arguments, which the caller's options fill.
template <class Run, class Arguments>
CLI::App& AddCommand(CLI::App& parent, Invocation& invocation, const std::string& name,
                     const std::string& description, Run run,
                     const std::shared_ptr<Arguments>& arguments) {
  return AddCommand(parent, invocation, name, description,
                    [run, arguments](Session& session) { return run(session, *arguments); });
}

// A name under which commands stand, of which one has to be chosen.
inline CLI::App& AddCommandGroup(CLI::App& app, const std::string& name,
                                 const std::string& description) {
  CLI::App* group = app.add_subcommand(name, description);
  group->require_subcommand(1);
  return *group;
}

}  // namespace torvell
