// Shared declarations of the qmr program's subcommands.
#pragma once

namespace qmrtool
{

// Prints a tour of the library on its built-in defaults; returns the exit code.
int run_demo(int argc, char **argv);
// qmr locale [NAME]: prints a locale environment as built; returns the exit code.
int run_locale(int argc, char **argv);
// qmr num [--decimal | --int8 | --bigint] [-w W] [-s S] TEXT: a number in
// every numeric form; returns the exit code.
int run_num(int argc, char **argv);
// qmr dt OPERATION ...: datetimes and intervals read, extended, added,
// subtracted and converted; returns the exit code.
int run_dt(int argc, char **argv);
// The demo's lines on the calendar.
void print_calendar();
// The demo's lines on the default locale environment.
void print_default_locale();

} // namespace qmrtool
