#pragma once

#include "platform/WaitShare.h"
#include "types/String.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace qo
{
/// Does work on files or folders that are known to come, on threads of its own, and gives the
/// results one by one. Where the work keeps its threads waiting, there will be up to sixteen. All
/// calls come from one thread.
///
/// There are two queues. What is to come waits as a path; a thread that begins one moves it to the
/// end of the second queue, whose front is what is asked for next. Example with two threads, while
/// the caller asks for b:
///
///   begun:  b (at work)  c (done)  d (at work)     to come:  e  f  g ...
template <class Result>
class AheadPool
{
public:
    /// Runs on several threads at once; gives the bytes that the result takes.
    using Work = std::function<std::size_t(const CString& path, Result& result)>;
    using Stop = std::function<bool()>;

    struct Limits
    {
        int threads = 0;              ///< to begin with; without any, the caller's does the work
        bool grows = true;            ///< up to sixteen, where the work is mostly waiting
        std::size_t results = 16'384; ///< that wait for being asked for
        std::size_t bytes = 8 << 20;  ///< that these take
        std::uint32_t patience = 0;   ///< milliseconds to wait for one result; 0: any time
    };

    AheadPool(Work work, const Limits& limits)
        : m_shared(std::make_shared<Shared>(std::move(work), limits))
    {
    }
    /// Waits for what is at work, but not for what keeps its thread waiting: such a thread ends by
    /// itself when the system gives it back.
    ~AheadPool() { m_shared->end(); }
    AheadPool(const AheadPool&) = delete;
    AheadPool& operator=(const AheadPool&) = delete;

    /// What will be asked for, in this order.
    void add(const CString& path) { m_shared->add(path); }

    enum class Outcome : std::uint8_t
    {
        done,
        givenUp, ///< it was waited for longer than the patience, or too many before it were
        stopped
    };
    /// The result for a path; what was added before it is passed over. One that does not come next
    /// is worked on at once, however long that takes. stop, which may be empty, is asked while a
    /// result is waited for. Throws what the work threw.
    Outcome take(const CString& path, Result& result, const Stop& stop)
    {
        return m_shared->take(path, result, stop);
    }

private:
    /// Something that a thread has begun.
    struct Item
    {
        explicit Item(CString&& name) : path(std::move(name)) {}

        CString path;
        Result result{};
        std::exception_ptr failure = {};
        std::size_t bytes = 0;
        bool isDone = false;
        bool isPassedOver = false; ///< nobody will ask for it
        bool isGivenUp = false;    ///< nor for its thread
    };
    class Shared;

    std::shared_ptr<Shared> m_shared; ///< the threads hold it too
};

template <class Result>
class AheadPool<Result>::Shared : public std::enable_shared_from_this<Shared>
{
public:
    Shared(Work&& work, const Limits& limits) : m_work(std::move(work)), m_limits(limits) {}

    void add(const CString& path)
    {
        const std::lock_guard lock(m_mutex);
        m_toCome.push_back(path);
        if (m_threads < m_limits.threads)
            startThreads(m_threads + 1);
        if (m_idle > 0 && canBegin())
            m_woken.notify_one();
    }

    void end()
    {
        std::unique_lock lock(m_mutex);
        m_hasEnded = true;
        m_toCome.clear();
        m_begun.clear();
        m_woken.notify_all();
        m_done.wait_for(lock, farewell, [this] { return m_threads == 0; });
    }

    Outcome take(const CString& path, Result& result, const Stop& stop)
    {
        std::unique_lock lock(m_mutex);
        if (m_givenUp >= mostGivenUp)
            return Outcome::givenUp;
        if (moveTo(path))
            return takeFront(lock, result, stop);
        lock.unlock();
        const WaitShare::Measured measured = WaitShare::measure([&] { m_work(path, result); });
        lock.lock();
        note(measured);
        return Outcome::done;
    }

private:
    static constexpr int mostThreads = 16;
    /// A disk that let so many wait in vain has gone. Without an end there would be a thread for
    /// each of its files.
    static constexpr int mostGivenUp = 4;
    /// How far from the front a path may lie, when others are left out.
    static constexpr std::ptrdiff_t searchedItems = 64;
    static constexpr int missesToASearch = 64;
    static constexpr std::chrono::milliseconds poll{50};
    /// How long the end waits for what is at work.
    static constexpr std::chrono::milliseconds farewell{250};

    void run()
    {
        std::unique_lock lock(m_mutex);
        while (!m_hasEnded)
        {
            if (!canBegin())
            {
                ++m_idle;
                m_woken.wait(lock);
                --m_idle;
                continue;
            }
            const auto item = std::make_shared<Item>(std::move(m_toCome.front()));
            m_toCome.pop_front();
            m_begun.push_back(item);
            lock.unlock();
            const WaitShare::Measured measured = WaitShare::measure([&] { work(*item); });
            lock.lock();
            item->isDone = true;
            if (item->isGivenUp)
                return; // another thread took this one's place
            m_bytes += item->isPassedOver ? 0 : item->bytes;
            note(measured);
            if (!m_begun.empty() && m_begun.front() == item)
                m_done.notify_one();
        }
        --m_threads;
        m_done.notify_one();
    }

    void work(Item& item) noexcept
    {
        try
        {
            item.bytes = m_work(item.path, item.result);
        }
        catch (...)
        {
            item.failure = std::current_exception();
        }
    }

    // The following are called with the lock held.

    /// Whether the path comes next; then it is the front of what is begun or to come.
    bool moveTo(const CString& path)
    {
        const bool isFound = isNext(path, searchedItems);
        // Who left out more than are searched is found again by a whole search now and then.
        m_misses = isFound ? 0 : m_misses + 1;
        return isFound || (m_misses % missesToASearch == 0 && isNext(path, PTRDIFF_MAX));
    }

    bool isNext(const CString& path, std::ptrdiff_t range)
    {
        const auto searched = [range](auto& queue)
        { return queue.begin() + std::min<std::ptrdiff_t>(std::ssize(queue), range); };
        const auto begunEnd = searched(m_begun);
        const auto begun = std::find_if(
            m_begun.begin(), begunEnd, [&](const auto& item) { return item->path == path; });
        if (begun != begunEnd)
        {
            for (auto passedOver = begun - m_begun.begin(); passedOver > 0; --passedOver)
                dropFront();
            return true;
        }
        if (begunEnd != m_begun.end())
            return false;
        const auto toComeEnd = searched(m_toCome);
        const auto toCome = std::find(m_toCome.begin(), toComeEnd, path);
        if (toCome == toComeEnd)
            return false;
        m_toCome.erase(m_toCome.begin(), toCome);
        while (!m_begun.empty())
            dropFront();
        if (m_threads == 0)
            m_toCome.pop_front();
        return m_threads > 0;
    }

    /// Waits for the front and takes it away.
    Outcome takeFront(std::unique_lock<std::mutex>& lock, Result& result, const Stop& stop)
    {
        // Counted in polls, so that no patience is lost while the whole process is stopped.
        for (std::uint32_t waited = 0; m_begun.empty() || !m_begun.front()->isDone;)
        {
            if (m_done.wait_for(lock, poll) == std::cv_status::no_timeout)
                continue;
            waited += static_cast<std::uint32_t>(poll.count());
            if (m_limits.patience > 0 && waited >= m_limits.patience)
            {
                giveUpFront();
                return Outcome::givenUp;
            }
            lock.unlock();
            if (stop && stop())
                return Outcome::stopped;
            lock.lock();
        }
        const std::shared_ptr<Item> item = m_begun.front();
        dropFront();
        lock.unlock();
        if (item->failure)
            std::rethrow_exception(item->failure);
        result = std::move(item->result);
        return Outcome::done;
    }

    void note(const WaitShare::Measured& measured)
    {
        m_share.add(measured);
        if (m_limits.grows && !m_hasEnded && m_share.isMostlyWaiting())
            startThreads(std::clamp(2 * m_threads, fewThreads, mostThreads));
    }
    static constexpr int fewThreads = 4;

    void startThreads(int wanted)
    {
        try
        {
            for (; m_threads < wanted; ++m_threads)
                std::thread([shared = this->shared_from_this()] { shared->run(); }).detach();
        }
        catch (const std::exception&)
        {
            return; // the threads that there are do the work
        }
    }

    bool canBegin() const
    {
        return !m_toCome.empty() && m_begun.size() < m_limits.results && m_bytes < m_limits.bytes;
    }

    void dropFront()
    {
        Item& front = *m_begun.front();
        front.isPassedOver = true;
        if (front.isDone)
            m_bytes -= front.bytes;
        m_begun.pop_front();
        // A thread woken for each result that is taken would cost as much as the work.
        const bool hasRoom = m_begun.size() < m_limits.results / 2 && m_bytes < m_limits.bytes / 2;
        if (m_idle > 0 && hasRoom && canBegin())
            m_woken.notify_all();
    }

    /// Another thread takes the place of the one that hangs. Where no thread was free to begin the
    /// front, all hang on what was passed over.
    void giveUpFront()
    {
        ++m_givenUp;
        if (m_begun.empty())
            m_toCome.pop_front();
        else
        {
            m_begun.front()->isGivenUp = true;
            m_begun.pop_front();
            --m_threads;
        }
        startThreads(m_threads + 1);
    }

    const Work m_work;
    const Limits m_limits;
    std::mutex m_mutex;
    std::condition_variable m_woken;
    std::condition_variable m_done; ///< the front is, or a thread has ended
    std::deque<CString> m_toCome;
    std::deque<std::shared_ptr<Item>> m_begun;
    std::size_t m_bytes = 0; ///< of what is done and not taken
    WaitShare m_share;
    int m_threads = 0; ///< without those that were given up
    int m_givenUp = 0;
    int m_idle = 0;
    int m_misses = 0; ///< in a row
    bool m_hasEnded = false;
};
} // namespace qo
