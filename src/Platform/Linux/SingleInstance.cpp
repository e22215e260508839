#include "Platform/Application.h"

#include "Platform/Linux/InstanceClaim.h"
#include "Platform/Linux/X11/DisplayName.h"

#include <QDir>
#include <QSocketNotifier>
#include <QTimer>
#include <QUrl>

#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// How long the first instance may take to answer, or to end: a quit waits for its child processes
/// and for files that are being read.
constexpr auto patience = 5s;

/// Where the claim may lie: in the user's runtime folder, otherwise among the temporary files. The
/// user's number keeps a program that root started in the user's session from taking the place.
std::vector<std::string> places()
{
    const QByteArray name = "/tamrik-" + QByteArray::number(getuid()) + '-' +
                            QUrl::toPercentEncoding(X11::displayName(), ":");
    std::vector<std::string> folders;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (runtime.startsWith('/'))
        folders.push_back((runtime + name).toStdString());
    else // as for what cron or su starts, where another start may know better
        folders.push_back(("/run/user/" + QByteArray::number(getuid()) + name).toStdString());
    folders.push_back((QFile::encodeName(QDir::tempPath()) + name).toStdString());
    return folders;
}

} // namespace

class Platform::SingleInstance::Implementation {
public:
    InstanceClaim claim{places(), getuid(), patience};
    std::unique_ptr<QSocketNotifier> notifier;
};

Platform::SingleInstance::SingleInstance()
    : m_implementation(std::make_unique<Implementation>())
{
}

Platform::SingleInstance::~SingleInstance() = default;

Platform::SingleInstance::Role Platform::SingleInstance::role() const
{
    return m_implementation->claim.role();
}

void Platform::SingleInstance::onStartedAgain(std::function<void()> startedAgain)
{
    const InstanceClaim& claim = m_implementation->claim;
    if (claim.listener() < 0)
        return;
    auto& notifier = m_implementation->notifier;
    notifier = std::make_unique<QSocketNotifier>(claim.listener(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [&claim, startedAgain = std::move(startedAgain), listening = notifier.get()] {
                         // One at a time, so that many of them leave room for all other events.
                         if (claim.answerOne(startedAgain))
                             return;
                         listening->setEnabled(false);
                         QTimer::singleShot(1s, listening,
                                            [listening] { listening->setEnabled(true); });
                     });
}
