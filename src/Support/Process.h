#pragma once

#include "Support/Result.h"

#include <QMap>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

/// One child process. Its standard streams are the program's own, unless the command says
/// otherwise.
class Process : public QObject {
public:
    struct Command {
        QString program;
        QStringList arguments;
        /// Set in the child's environment on top of the program's own.
        QMap<QString, QString> environment;
        /// Whether what it says on standard error is kept for `errors` instead.
        bool keepsErrors = false;
        /// A descriptor of ours that it gets too, under the same number; -1 for none.
        int sharedDescriptor = -1;
        /// Whether it may outlive this object, which else kills it.
        bool isLeftRunning = false;
        /// How long this object waits at its end for the child's.
        std::chrono::milliseconds grace = std::chrono::seconds(3);
    };

    explicit Process(QObject* parent = nullptr);

    /// Waits as `waitForEnd` does, so that quitting in the middle of a screenshot does not lose it;
    /// a child that still runs is killed then or left to itself, as the command says.
    ~Process() override;

    /// Starts the child. `ended` is called once on the main thread, never before this function has
    /// returned, when the child has exited or was killed; not at all when starting failed.
    [[nodiscard]] PossibleFailure start(const Command& command, std::function<void()> ended);

    /// Sends the child SIGINT; does nothing once it has ended.
    void interrupt();

    /// Waits until the child has ended, for as long as the command says; a second time it only
    /// looks. Whether it has; `ended` may come later.
    bool waitForEnd();

    /// What the child has said on standard error, if that is kept; all of it once it has ended.
    QByteArray errors();

private:
    std::unique_ptr<QProcess> m_process;
    bool m_isLeftRunning = false;
    std::chrono::milliseconds m_grace{0};
};
