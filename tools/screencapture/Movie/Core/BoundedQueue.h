#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

/// Hands things from one thread to another, in order; holds a weight of `limit` at most, or one
/// thing that is heavier.
template <class Thing>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t limit)
        : m_limit(limit)
    {
    }

    /// Waits while it is full. What comes after close() is dropped.
    void push(Thing thing, std::size_t weight = 1)
    {
        std::unique_lock lock(m_mutex);
        m_hasRoom.wait(lock, [&] { return m_isClosed || fits(weight); });
        if (m_isClosed)
            return;
        m_things.push_back({std::move(thing), weight});
        m_weight += weight;
        m_hasThings.notify_one();
    }

    /// Whether a thing of weight 1 would fit, unless another thread is faster.
    bool hasRoom() const
    {
        const std::lock_guard lock(m_mutex);
        return fits(1);
    }

    /// Waits for the next; nothing when it is closed and empty.
    std::optional<Thing> pop()
    {
        std::unique_lock lock(m_mutex);
        m_hasThings.wait(lock, [&] { return m_isClosed || !m_things.empty(); });
        if (m_things.empty())
            return std::nullopt;
        Entry entry = std::move(m_things.front());
        m_things.pop_front();
        m_weight -= entry.weight;
        m_hasRoom.notify_all();
        return std::move(entry.thing);
    }

    /// What is in it is still handed over; nothing new gets in.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        m_hasThings.notify_all();
        m_hasRoom.notify_all();
    }

private:
    struct Entry {
        Thing thing;
        std::size_t weight;
    };

    bool fits(std::size_t weight) const { return m_things.empty() || m_weight + weight <= m_limit; }

    const std::size_t m_limit;
    mutable std::mutex m_mutex;
    std::condition_variable m_hasRoom;
    std::condition_variable m_hasThings;
    std::deque<Entry> m_things;
    std::size_t m_weight = 0;
    bool m_isClosed = false;
};
