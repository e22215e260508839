#include "Editor/SidecarWriter.h"

#include "Editor/Sidecar.h"

#include <system_error>
#include <utility>

SidecarWriter::SidecarWriter(QString imagePath)
    : SidecarWriter(std::move(imagePath), Sidecar::save)
{
}

SidecarWriter::SidecarWriter(QString imagePath, Save save)
    : m_imagePath(std::move(imagePath))
    , m_save(std::move(save))
{
}

SidecarWriter::~SidecarWriter()
{
    finish();
}

void SidecarWriter::save(QList<Annotation> annotations)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting = std::move(annotations);
        if (std::exchange(m_isWriting, true))
            return;
    }
    finish(); // an earlier thread has nothing left to do
    try {
        m_thread = std::thread([this] { write(); });
    } catch (const std::system_error&) {
        write(); // no thread is to be had: better late than never
    }
}

void SidecarWriter::finish()
{
    // It ends when no list waits, and nobody brings one meanwhile.
    if (m_thread.joinable())
        m_thread.join();
}

void SidecarWriter::write()
{
    for (;;) {
        std::optional<QList<Annotation>> next;
        {
            const std::lock_guard lock(m_mutex);
            next = std::exchange(m_waiting, std::nullopt);
            if (!next) {
                m_isWriting = false;
                return;
            }
        }
        m_save(*next, m_imagePath);
    }
}
