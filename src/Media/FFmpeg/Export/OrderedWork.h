#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// Pieces of work that are done side by side, and whose outcomes are taken in order.
template <class Outcome>
class OrderedWork {
public:
    /// Does one piece, by its number. Each worker has one of its own.
    using Worker = std::function<Outcome(std::size_t number)>;

    /// Begins at once. So many outcomes at most wait for being taken as there are workers, and one.
    OrderedWork(std::size_t pieces, std::vector<Worker> workers)
        : m_pieces(pieces)
        , m_mostAhead(workers.size() + 1)
    {
        for (Worker& worker : workers)
            m_threads.emplace_back([this, work = std::move(worker)] { run(work); });
    }
    OrderedWork(const OrderedWork&) = delete;
    OrderedWork& operator=(const OrderedWork&) = delete;

    /// Waits for the pieces that have been begun.
    ~OrderedWork()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_pieces = 0;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

    /// The next piece's outcome. As often as there are pieces.
    Outcome take()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_done.count(m_taken) != 0; });
        Outcome outcome = std::move(m_done.extract(m_taken).mapped());
        ++m_taken;
        m_changed.notify_all();
        return outcome;
    }

private:
    void run(const Worker& work)
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(
                lock, [this] { return m_begun >= m_pieces || m_begun < m_taken + m_mostAhead; });
            if (m_begun >= m_pieces)
                return;
            const std::size_t number = m_begun++;
            lock.unlock();
            Outcome outcome = work(number);
            lock.lock();
            m_done.emplace(number, std::move(outcome));
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex; // for the next five
    std::size_t m_pieces;
    std::size_t m_begun = 0;
    std::size_t m_taken = 0;
    std::map<std::size_t, Outcome> m_done;
    std::condition_variable m_changed;
    const std::size_t m_mostAhead;
    std::vector<std::thread> m_threads; // last: they use all of the above
};
