// Each group of commands adds its subcommands to the program.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "output.h"
#include "session.h"

namespace qzctl {

// The action a subcommand runs once the command line is parsed.
using Action = std::function<void(Session&, Output&)>;

void add_device_commands(CLI::App& app, Action& action);
void add_card_commands(CLI::App& app, Action& action);
void add_field_card_commands(CLI::App& app, Action& action);
void add_identity_commands(CLI::App& app, Action& action);
void add_pin_commands(CLI::App& app, Action& action);
void add_pinpad_commands(CLI::App& app, Action& action);
void add_screen_commands(CLI::App& app, Action& action);
void add_lcd_commands(CLI::App& app, Action& action);
void add_memcard_commands(CLI::App& app, Action& action);
void add_scanner_commands(CLI::App& app, Action& action);
void add_mechanism_commands(CLI::App& app, Action& action);

}  // namespace qzctl
