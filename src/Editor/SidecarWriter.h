#pragma once

#include "Editor/Annotation.h"

#include <functional>
#include <mutex>
#include <optional>
#include <thread>

/// Saves one picture's annotations without keeping the caller waiting: a thread of its own encodes
/// and writes them, and lives only while there is something to write. Of the lists that wait, the
/// newest alone is written.
///
/// A file is replaced when the new one is complete, and a failure leaves it as it was; see
/// `Sidecar::save`. To be called from one thread.
class SidecarWriter {
public:
    /// What writes, on the thread; `Sidecar::save` but in tests.
    using Save = std::function<void(const QList<Annotation>&, const QString& imagePath)>;

    explicit SidecarWriter(QString imagePath);
    SidecarWriter(QString imagePath, Save save);
    /// Finishes.
    ~SidecarWriter();
    SidecarWriter(const SidecarWriter&) = delete;
    SidecarWriter& operator=(const SidecarWriter&) = delete;

    /// Returns at once. No annotations remove the file.
    void save(QList<Annotation> annotations);

    /// Returns when the list that was saved last is in the file.
    void finish();

private:
    void write();

    const QString m_imagePath;
    const Save m_save;
    std::mutex m_mutex; ///< Holds neither encoding nor writing up.
    // Under the mutex.
    std::optional<QList<Annotation>> m_waiting;
    bool m_isWriting = false; ///< Whether the thread will look for a list again before it ends.
    // The caller's.
    std::thread m_thread;
};
