#include "OpenEditors.h"

#include "Platform/Application.h"
#include "Support/Guarded.h"

#include <algorithm>

using Editor = Subsystems::Editor;

void OpenEditors::open(const QUrl& file, const Factory& make,
                       std::function<void(const QUrl&)> onFileProduced)
{
    auto editor = find(file);
    if (!editor) {
        if (make)
            editor = make(file);
        if (!editor)
            return;
        editor->onClose = Guarded::any<const Editor*>(this, [this](const Editor* closed) {
            std::erase_if(m_editors, [closed](const auto& e) { return e.get() == closed; });
        });
        editor->onFileProduced = std::move(onFileProduced);
        m_editors.push_back(editor);
    }
    editor->makeKeyAndOrderFront();
    Platform::activateIgnoringOthers();
}

std::shared_ptr<Editor> OpenEditors::find(const QUrl& file) const
{
    const auto found = std::find_if(m_editors.begin(), m_editors.end(),
                                    [&file](const auto& e) { return e->fileURL == file; });
    return found == m_editors.end() ? nullptr : *found;
}
