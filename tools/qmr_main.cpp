// The qmr program: the user-facing face of the library, one subcommand per
// family, built on the public interface only.
#include <cstdio>
#include <cstring>

#include "qmr.hpp"

namespace
{

struct Subcommand {
    const char *name;
    const char *summary;
    int (*run)(int argc, char **argv);
};

constexpr Subcommand subcommands[] = {
    {"demo", "a tour of the library on its built-in defaults", qmrtool::run_demo},
    {"locale", "the locale environment for a name, or from CLIENT_LOCALE", qmrtool::run_locale},
    {"num", "a DECIMAL, INT8 or BIGINT number read and shown in every form", qmrtool::run_num},
    {"dt", "datetimes and intervals read, extended, added and subtracted", qmrtool::run_dt},
};

void print_usage(std::FILE *out)
{
    std::fprintf(out, "usage: qmr <command> [arguments]\n       qmr --version | --help\n\n"
                      "commands:\n");
    for (const Subcommand &sub : subcommands)
        std::fprintf(out, "  %-8s %s\n", sub.name, sub.summary);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        print_usage(stderr);
        return 2;
    }
    const char *command = argv[1];
    if (std::strcmp(command, "--help") == 0 || std::strcmp(command, "-h") == 0) {
        print_usage(stdout);
        return 0;
    }
    if (std::strcmp(command, "--version") == 0) {
        std::printf("qmr %s (qmrgen runtime library)\n", QMR_VERSION_TEXT);
        return 0;
    }
    for (const Subcommand &sub : subcommands)
        if (std::strcmp(command, sub.name) == 0)
            return sub.run(argc - 1, argv + 1);
    std::fprintf(stderr, "qmr: unknown command '%s'\n", command);
    print_usage(stderr);
    return 2;
}
