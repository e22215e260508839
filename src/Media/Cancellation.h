#pragma once

#include <atomic>
#include <memory>

/// Tells work on another thread to end early. Copies are one and the same; any thread.
class Cancellation {
public:
    void cancel() const { *m_isCancelled = true; }
    bool isCancelled() const { return *m_isCancelled; }

private:
    std::shared_ptr<std::atomic<bool>> m_isCancelled = std::make_shared<std::atomic<bool>>(false);
};
