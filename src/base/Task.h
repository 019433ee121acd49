#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>
#include <variant>

namespace varnel {

template <typename T>
class Task;

namespace detail {

/// What the promises of all tasks share: who waits for the result, and waking them.
class TaskPromiseBase
{
public:
    std::suspend_never initial_suspend() const noexcept { return {}; }

    struct FinalAwaiter
    {
        bool await_ready() const noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept
        {
            const auto waiting = finished.promise().m_waiting;
            return waiting ? waiting : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };
    FinalAwaiter final_suspend() const noexcept { return {}; }

    void setWaiting(std::coroutine_handle<> waiting) noexcept { m_waiting = waiting; }

private:
    std::coroutine_handle<> m_waiting;
};

template <typename T>
class TaskPromise : public TaskPromiseBase
{
public:
    Task<T> get_return_object() noexcept;
    template <typename U>
    void return_value(U&& value)
    {
        m_result.template emplace<1>(std::forward<U>(value));
    }
    void unhandled_exception() noexcept { m_result.template emplace<2>(std::current_exception()); }

    T takeResult()
    {
        if (m_result.index() == 2)
            std::rethrow_exception(std::get<2>(m_result));
        return std::move(std::get<1>(m_result));
    }

private:
    std::variant<std::monostate, T, std::exception_ptr> m_result;
};

template <>
class TaskPromise<void> : public TaskPromiseBase
{
public:
    Task<void> get_return_object() noexcept;
    void return_void() const noexcept {}
    void unhandled_exception() noexcept { m_exception = std::current_exception(); }

    void takeResult() const
    {
        if (m_exception)
            std::rethrow_exception(m_exception);
    }

private:
    std::exception_ptr m_exception;
};

} // namespace detail

/// A piece of asynchronous work on the event loop of the thread that started it.
///
/// It starts at once, inside the call. Destroying it destroys its frame, which stops whatever it waits for:
/// nothing outlives its owner. That is for teardown, and never from inside the running frame itself; a user's
/// stop goes through the stop token instead. Only one may wait for a task.
template <typename T = void>
class [[nodiscard]] Task
{
public:
    using promise_type = detail::TaskPromise<T>;

    Task() noexcept = default;
    Task(Task&& other) noexcept
        : m_handle(std::exchange(other.m_handle, nullptr))
    {}
    Task& operator=(Task&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() { reset(); }

    /// Whether there is a task here at all, finished or not.
    bool isValid() const noexcept { return static_cast<bool>(m_handle); }
    bool isFinished() const noexcept { return m_handle && m_handle.done(); }
    /// Whether it began and has not ended.
    bool isRunning() const noexcept { return m_handle && !m_handle.done(); }

    /// The result of a finished task, once; throws what the task threw.
    T takeResult() { return m_handle.promise().takeResult(); }

    /// Destroys the task, finished or not.
    void reset() noexcept
    {
        if (m_handle)
            std::exchange(m_handle, nullptr).destroy();
    }

    class Awaiter
    {
    public:
        explicit Awaiter(std::coroutine_handle<promise_type> handle) noexcept
            : m_handle(handle)
        {}
        bool await_ready() const noexcept { return m_handle.done(); }
        void await_suspend(std::coroutine_handle<> waiting) const noexcept
        {
            m_handle.promise().setWaiting(waiting);
        }
        T await_resume() const { return m_handle.promise().takeResult(); }

    private:
        std::coroutine_handle<promise_type> m_handle;
    };
    Awaiter operator co_await() const noexcept { return Awaiter(m_handle); }

private:
    friend promise_type;
    explicit Task(std::coroutine_handle<promise_type> handle) noexcept
        : m_handle(handle)
    {}

    std::coroutine_handle<promise_type> m_handle;
};

namespace detail {

template <typename T>
Task<T> TaskPromise<T>::get_return_object() noexcept
{
    return Task<T>(std::coroutine_handle<TaskPromise<T>>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept
{
    return Task<void>(std::coroutine_handle<TaskPromise<void>>::from_promise(*this));
}

} // namespace detail
} // namespace varnel
