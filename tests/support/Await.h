#pragma once

#include "base/Task.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace varnel::test {

/// Turns the event loop until `condition` holds; false if it does not within `limit`.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = std::chrono::seconds(10));

/// Turns the event loop until the task has ended and returns or throws its result; throws std::runtime_error
/// if it does not end within `limit`.
template <typename T>
T await(Task<T> task, std::chrono::milliseconds limit = std::chrono::seconds(10))
{
    if (!waitUntil([&task] { return task.isFinished(); }, limit))
        throw std::runtime_error("the task did not end in time");
    return task.takeResult();
}

} // namespace varnel::test
