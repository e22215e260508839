#pragma once

#include "Support/Result.h"

#include <QMap>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

/// One child process. Its standard streams are the program's own.
class Process : public QObject {
public:
    struct Command {
        QString program;
        QStringList arguments;
        /// Set in the child's environment on top of the program's own.
        QMap<QString, QString> environment;
    };

    explicit Process(QObject* parent = nullptr);

    /// Waits for a child that still runs, for at most three seconds, so that quitting in the middle
    /// of a screenshot does not lose it; then ends it.
    ~Process() override;

    /// Starts the child. `ended` is called once on the main thread, never before this function has
    /// returned, when the child has exited or was killed; not at all when starting failed.
    [[nodiscard]] PossibleFailure start(const Command& command, std::function<void()> ended);

private:
    QProcess m_process;
};
