#pragma once

#include <functional>

#include "cli/session.h"

namespace CLI {
class App;
}

namespace kolmera::cli {

/// A text of the help.
using HelpText = std::function<std::string(ModuleKey)>;

/// Describes all commands with their options to the parser, in the language of the session; of others than the command
/// `named`, unless that is empty, nothing but their names: a line begins with it. When a line has been parsed, `chosen`
/// carries out the command that it names and returns its exit code. `surroundings` are told how much to say, and must
/// outlive `chosen`.
void describeCommands(CLI::App& app, std::string_view named, const HelpText& text, Surroundings& surroundings,
                      std::function<int()>& chosen);

}  // namespace kolmera::cli
