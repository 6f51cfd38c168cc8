// Shared declarations of the qmr program's subcommands.
#pragma once

namespace qmrtool
{

// Prints a tour of the library on its built-in defaults; returns the exit code.
int run_demo(int argc, char **argv);

} // namespace qmrtool
