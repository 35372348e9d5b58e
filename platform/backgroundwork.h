#pragma once

#include "clock.h"

#include <functional>
#include <memory>
#include <optional>

// Work run on a worker thread while the calling thread's event loop goes on (the window answers),
// until the work ends or `milliseconds` pass on `clock`. A late result is dropped: the call
// reports failure and the worker finishes on its own, its result thrown away.
//
// There is one worker at a time, so hostile files cannot pile up stuck threads: a call made while
// the worker runs for another caller still waiting (a nested call from the event loop) waits for
// it within its own deadline; a call made while the worker runs work whose caller gave up is
// refused at once, until that work ends.
namespace BackgroundWork {

bool run(std::function<void()> work, const Clock &clock, int milliseconds);

// Whether the worker runs (abandoned work included).
bool busy();

template<typename T>
std::optional<T> call(std::function<T()> work, const Clock &clock, int milliseconds)
{
    // Shared with the worker, which may outlive this call.
    auto result = std::make_shared<std::optional<T>>();
    if (!run([result, work = std::move(work)] { *result = work(); }, clock, milliseconds))
        return std::nullopt;
    return std::move(*result);
}

} // namespace BackgroundWork
