#pragma once

#include <QoKernel/Kernel.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>

namespace qo::host
{
/// The one thread that calls the kernel. Tasks run one after the other in the order in which they
/// came; the destructor runs what is left and ends the thread. Any thread may hand in tasks.
class KernelThread
{
public:
    KernelThread();
    ~KernelThread();
    KernelThread(const KernelThread&) = delete;
    KernelThread& operator=(const KernelThread&) = delete;

    /// The future brings the result, or the failure: exceptions that the kernel throws as pointers
    /// come as HostError.
    template <class Function>
    auto post(Function function) -> std::future<std::invoke_result_t<Function>>
    {
        using Result = std::invoke_result_t<Function>;
        auto task = std::make_shared<std::packaged_task<Result()>>(
            [function = std::move(function)]() mutable -> Result
            {
                try
                {
                    return function();
                }
                catch (...)
                {
                    rethrowAsHostError();
                }
            });
        std::future<Result> result = task->get_future();
        add([task] { (*task)(); });
        return result;
    }
    /// Hands in the task and waits. A task that calls it has the function run at once.
    template <class Function>
    auto run(Function function)
    {
        if (std::this_thread::get_id() != m_thread.get_id())
            return post(std::move(function)).get();
        try
        {
            return function();
        }
        catch (...)
        {
            rethrowAsHostError();
        }
    }

    /// Throws the exception of this moment again; one that travels as a pointer as HostError. A
    /// failure of the database names this one, or the collection's own.
    [[noreturn]] static void rethrowAsHostError(const CString& database = CString());

private:
    void add(std::function<void()> task);
    void work();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    bool m_isEnding = false;
    std::thread m_thread; ///< last: it uses the others
};
} // namespace qo::host
