#pragma once

#include "Subsystems.h"

#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

/// The open editors of one kind. Each is kept until its window closes; no file has two. Main thread
/// only.
class OpenEditors : public QObject {
public:
    using Factory = std::function<std::shared_ptr<Subsystems::Editor>(const QUrl& file)>;

    /// Brings the editor of `file` to the front, made by `make` when there is none yet. Does
    /// nothing when `make` is not set or cannot open the file. `onFileProduced` is handed to a new
    /// editor.
    void open(const QUrl& file, const Factory& make,
              std::function<void(const QUrl& produced)> onFileProduced);

private:
    std::shared_ptr<Subsystems::Editor> find(const QUrl& file) const;

    std::vector<std::shared_ptr<Subsystems::Editor>> m_editors;
};
