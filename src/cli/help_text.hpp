#pragma once

#include <CLI/CLI.hpp>

namespace tidewell::cli {

/// Gives the tool its help, before any command is added (commands take their formatter from the tool when they
/// are made): `--help-all`, which adds one section per command with its arguments and options, and the footer
/// with what the option lists cannot say (exit statuses, the disk layout, the files). The manual page is made from
/// `--help-all`, so whatever the help says, the manual says too.
void installHelpText(CLI::App& app);

} // namespace tidewell::cli
