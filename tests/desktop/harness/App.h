#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <memory>

namespace Desktop {

class VirtualDesktop;

/// How a program ended.
struct Exit {
    /// Its exit status, or the signal that ended it.
    int code = 0;
    bool wasSignal = false;

    friend bool operator==(const Exit&, const Exit&) = default;
};

/// A program on a desktop. Ends with the object at the latest.
class App {
public:
    /// Starts a program in the desktop's home and environment, to which `extra` adds.
    static Outcome<std::unique_ptr<App>> start(const VirtualDesktop& desktop,
                                               const QString& program,
                                               const QStringList& arguments = {},
                                               const QMap<QString, QString>& extra = {});
    /// Starts a program in an environment of its own, on no desktop in particular.
    static Outcome<std::unique_ptr<App>> start(const QProcessEnvironment& environment,
                                               const QString& program, const QStringList& arguments,
                                               const QString& workingDirectory = {});
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    /// 0 when it has ended.
    qint64 pid() const { return m_process.processId(); }
    bool isRunning();
    Outcome<Exit> waitForExit(std::chrono::milliseconds deadline = patience);
    /// Sends a signal such as SIGTERM; fails when the program has ended.
    Outcome<void> signal(int number);
    /// Asks it to end (SIGTERM) and waits; kills it, and fails, when it does not.
    Outcome<Exit> stop(std::chrono::milliseconds deadline = patience);

    /// What it wrote to standard output and standard error up to now.
    QString output() const;
    QString errorOutput() const;
    /// Waits until it wrote a text to standard output, or to standard error.
    Outcome<void> awaitOutput(const QString& text, std::chrono::milliseconds deadline = patience);
    Outcome<void> awaitErrorOutput(const QString& text,
                                   std::chrono::milliseconds deadline = patience);

private:
    explicit App(const QString& program);

    // Files, not pipes: nobody has to read them for the program to go on, and nothing is lost.
    QTemporaryDir m_folder;
    QProcess m_process;
};

} // namespace Desktop
