#pragma once

#include "Support/Result.h"

#include <functional>
#include <memory>

/// How the program presents itself to the desktop.
namespace Platform {

/// Called first of all, before the application object is made: settles which window system to use.
/// Fails, with a line for the user, when there is no desktop to run on.
[[nodiscard]] PossibleFailure prepareApplication();

/// The claim to be the user's only instance on this desktop; two desktops of one user, two X
/// servers say, have an instance each. Where the desktop itself keeps to one instance, the claim
/// always succeeds, and the desktop tells of further starts.
class SingleInstance {
public:
    enum class Role {
        First,      ///< this process is the instance
        HandedOver, ///< another process is, and it has answered this start
        Unanswered, ///< another process is, and it does not answer
    };

    /// Makes the claim, which stands until this object goes or the process ends, however it ends.
    /// Blocks while the other instance answers, for at most two seconds. Call it before the
    /// application object is made and before anything is made that there may be once only.
    SingleInstance();
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    Role role() const;

    /// From now on `startedAgain` is called for each further start, also for those that already
    /// wait for their answer. On the main thread, from the event loop of the application object.
    /// Only when this is the first instance; call it once.
    void onStartedAgain(std::function<void()> startedAgain);

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

/// No task bar entry, no main menu; the program goes on when its last window closes.
void becomeAccessory();

/// From now on a signal that asks the process to end ends the event loop, as the menu's Quit does:
/// windows close and save first. A second one of the kind ends the process at once. On the main
/// thread, after the application object is made.
void quitOnSignals();

/// Makes the program the active one, whichever is now, where the desktop knows of such a thing; X11
/// only knows of windows.
void activateIgnoringOthers();

} // namespace Platform
