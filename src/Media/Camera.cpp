#include "Media/Camera.h"

#include "Media/CameraModule.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <mutex>
#include <utility>

namespace {

using namespace std::chrono_literals;

/// How long the end of the program waits for a camera that does not stop.
constexpr auto endingTime = 2s;

/// The thread that everything about cameras happens on.
class Worker {
public:
    /// Called on the main thread.
    static Worker& get()
    {
        static Worker* const worker = [] {
            auto* const made = new Worker; // ended with the application, or never
            qAddPostRoutine([] { get().end(); });
            return made;
        }();
        return *worker;
    }

    void post(std::function<void()> work)
    {
        QMetaObject::invokeMethod(&m_context, std::move(work), Qt::QueuedConnection);
    }

private:
    Worker()
    {
        m_thread.setObjectName(QStringLiteral("camera"));
        m_context.moveToThread(&m_thread);
        m_thread.start();
    }

    void end()
    {
        // Behind whatever is still to be done.
        post([] { QThread::currentThread()->quit(); });
        m_thread.wait(QDeadlineTimer(endingTime));
    }

    QThread m_thread;
    QObject m_context;
};

/// The newest picture on its way from the camera's thread to the main one.
class Newest {
public:
    explicit Newest(std::function<void()> changed)
        : m_changed(std::move(changed))
    {
    }

    void put(const QImage& picture)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_picture = picture;
            if (std::exchange(m_isAnnounced, true))
                return;
        }
        m_changed();
    }

    QImage take()
    {
        const std::lock_guard lock(m_mutex);
        m_isAnnounced = false;
        return m_picture;
    }

private:
    std::function<void()> m_changed;
    std::mutex m_mutex;
    QImage m_picture;
    bool m_isAnnounced = false;
};

class Feed : public CameraFeed {
public:
    Feed(int side, std::function<void()> changed)
        : m_newest(std::make_shared<Newest>(std::move(changed)))
        , m_source(std::make_shared<std::unique_ptr<CameraSource>>())
    {
        Worker::get().post([side, newest = m_newest, source = m_source] {
            if (const CameraModule* const module = CameraModule::get())
                *source =
                    module->open(side, [newest](const QImage& picture) { newest->put(picture); });
        });
    }

    ~Feed() override
    {
        Worker::get().post([source = m_source] { source->reset(); });
    }

    QImage picture() const override { return m_newest->take(); }

    void setSide(int side) override
    {
        Worker::get().post([side, source = m_source] {
            if (*source)
                (*source)->setSide(side);
        });
    }

private:
    std::shared_ptr<Newest> m_newest;
    std::shared_ptr<std::unique_ptr<CameraSource>> m_source; // touched on the worker's thread alone
};

} // namespace

void Camera::find(std::function<void(bool exists)> found)
{
    Worker::get().post([found = std::move(found)] {
        const CameraModule* const module = CameraModule::get();
        found(module && module->exists());
    });
}

std::unique_ptr<CameraFeed> Camera::open(int side, std::function<void()> changed)
{
    return std::make_unique<Feed>(side, std::move(changed));
}
