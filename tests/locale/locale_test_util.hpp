// Helpers of the locale tests: a built environment for a locale name, made
// once per name on a thread of its own and kept for the program's life.
#pragma once

#include <map>
#include <string>
#include <thread>

#include "locale/environment.hpp"
#include "qmr/gl.h"

namespace loctest
{

struct Built {
    qmr_glsenv_t *env = nullptr;
    int status = 0;
};

// Builds `name` in an environment made for it; the environment stays
// reachable (and so is no leak) until the program ends.
inline Built build(const std::string &name)
{
    // Never destroyed, so that what it holds stays reachable at exit.
    static auto &built = *new std::map<std::string, Built>;
    auto found = built.find(name);
    if (found != built.end())
        return found->second;
    Built b;
    std::thread worker([&b, &name] {
        b.env = qmr_glsenv_create(name.c_str(), &b.status);
        if (b.env == nullptr)
            return;
        SetGlsEnv(b.env);
        b.status = chkglsinit();
        SetGlsEnv(nullptr);
    });
    worker.join();
    return built[name] = b;
}

// The locale handle of a name that must build.
inline void *handle(const std::string &name)
{
    Built b = build(name);
    return b.status == 0 && b.env != nullptr ? b.env->locale : nullptr;
}

inline std::string bytes(const char *s)
{
    return s == nullptr ? std::string("(null)") : std::string(s);
}

} // namespace loctest
