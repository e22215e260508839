#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThread>

#include <functional>
#include <memory>
#include <utility>

/// Callbacks that outlive the call they were made in.
///
/// A guarded callback holds its owner weakly and does nothing once the owner is gone. Called on
/// another thread it only posts itself to the main thread; the owner is looked at there. The owner
/// lives on the main thread.
namespace Guarded {

enum class Calls {
    Any,  ///< runs every time
    Once, ///< runs the first time, later calls do nothing
};

namespace Detail {

/// Runs `work` now when this is the main thread, otherwise posts it there.
template <typename Work>
void onMainThread(Work work)
{
    QCoreApplication* app = QCoreApplication::instance();
    if (!app || app->thread() == QThread::currentThread())
        work();
    else
        QMetaObject::invokeMethod(app, std::move(work), Qt::QueuedConnection);
}

} // namespace Detail

/// Guards a callback that returns nothing.
template <typename... Args>
class Callback {
public:
    Callback(QObject* owner, Calls calls, std::function<void(Args...)> body)
        : m_state(std::make_shared<State>(State{owner, calls, std::move(body), false}))
    {
    }

    void operator()(Args... args) const
    {
        // shared_ptr, so that a posted call still finds its state after the callback was dropped.
        Detail::onMainThread([state = m_state, ... args = std::move(args)] {
            if (!state->owner || (state->calls == Calls::Once && state->called))
                return;
            state->called = true;
            // A copy: the body may drop the last reference to this callback.
            const auto body = state->body;
            body(args...);
        });
    }

private:
    struct State {
        QPointer<QObject> owner;
        Calls calls;
        std::function<void(Args...)> body;
        bool called;
    };
    std::shared_ptr<State> m_state;
};

/// A query to which `fallback` is the answer once `owner` is gone. Main thread only.
template <typename T, typename Body>
std::function<T()> query(QObject* owner, T fallback, Body body)
{
    return [guard = QPointer<QObject>(owner), fallback = std::move(fallback),
            body = std::move(body)]() -> T { return guard ? body() : fallback; };
}

/// `body` as a callback that runs every time it is called.
template <typename... Args, typename Body>
std::function<void(Args...)> any(QObject* owner, Body body)
{
    return Callback<Args...>(owner, Calls::Any, std::function<void(Args...)>(std::move(body)));
}

/// `body` as a callback that runs the first time it is called.
template <typename... Args, typename Body>
std::function<void(Args...)> once(QObject* owner, Body body)
{
    return Callback<Args...>(owner, Calls::Once, std::function<void(Args...)>(std::move(body)));
}

} // namespace Guarded
