// parallel.h - a loop spread over threads.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace codecs::jpeg2000 {

// How many threads a request stands for.
inline int threadCount(int asked) {
    const int n = asked > 0 ? asked : int(std::thread::hardware_concurrency());
    return n < 1 ? 1 : n > 256 ? 256 : n;
}

// Calls work(i, thread) for each i below `count`, in any order; `thread` is below `threads` and is at one call at a
// time. The first exception is thrown again at the end.
template <class Work> void parallelFor(std::size_t count, int threads, Work work) {
    if (threads <= 1 || count <= 1) {
        for (std::size_t i = 0; i < count; ++i) work(i, 0);
        return;
    }
    // Each thread takes the next index as it gets ready: blocks differ in how long they take.
    std::atomic<std::size_t> next{0};
    std::exception_ptr failure;
    std::mutex failing;
    const auto run = [&](int thread) {
        try {
            for (std::size_t i; (i = next++) < count;) work(i, thread);
        } catch (...) {
            const std::lock_guard lock(failing);
            if (!failure) failure = std::current_exception();
            // Nobody takes another one.
            next = count;
        }
    };
    std::vector<std::thread> team;
    try {
        for (int t = 1; t < threads && std::size_t(t) < count; ++t) team.emplace_back(run, t);
    } catch (const std::exception&) {
        // The system has no more threads, or no memory for one: those that there are do the work.
    }
    // The caller is a thread of the team, too.
    run(0);
    for (std::thread& t : team) t.join();
    if (failure) std::rethrow_exception(failure);
}

} // namespace codecs::jpeg2000
