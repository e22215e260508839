#pragma once

#include <QTemporaryDir>

/// A home of the test's own: the user's files, preferences and runtime folder stay out of reach.
/// Sets the environment for this process and its children.
class PrivateHome {
public:
    PrivateHome()
    {
        // Without one the tests would work in the user's own home.
        if (!m_folder.isValid())
            qFatal("no temporary folder: %s", qPrintable(m_folder.errorString()));
        set("HOME", QString());
        set("XDG_CONFIG_HOME", QStringLiteral("/.config"));
        set("XDG_DATA_HOME", QStringLiteral("/.local/share"));
        set("XDG_CACHE_HOME", QStringLiteral("/.cache"));
        set("XDG_RUNTIME_DIR", QString()); // QTemporaryDir is its owner's alone, as Qt demands
    }

    QString path() const { return m_folder.path(); }

private:
    void set(const char* variable, const QString& subfolder)
    {
        qputenv(variable, (m_folder.path() + subfolder).toLocal8Bit());
    }

    QTemporaryDir m_folder;
};
