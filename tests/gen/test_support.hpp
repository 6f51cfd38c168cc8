// Helpers for the context tests: run a body on a fresh thread (a thread that
// has no context yet) and collect what it saw.
#pragma once

#include <thread>
#include <utility>

namespace qmrtest
{

template <typename Body> void on_new_thread(Body &&body)
{
    std::thread worker(std::forward<Body>(body));
    worker.join();
}

// Replaceable hooks defined by the test program: what qmr_checkAPI answers,
// the arguments it last saw, and how often _sqThreadCleanup ran.
extern int check_api_answer;
extern int check_api_last_level;
extern int check_api_last_flag;
extern int thread_cleanup_calls;

} // namespace qmrtest
