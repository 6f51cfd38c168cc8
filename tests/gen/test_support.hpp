// Helpers for the context tests: run a body on a fresh thread (a thread that
// has no context yet) and wait for it.
#pragma once

#include <thread>
#include <utility>

namespace qmrtest
{

template <typename Body> void on_new_thread(Body &&body)
{
    std::thread(std::forward<Body>(body)).join();
}

} // namespace qmrtest
