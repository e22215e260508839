#pragma once

#include <functional>

class QObject;

/// Whether the desktop mixes windows into one picture, so that they can be translucent. Main thread
/// only.
namespace Platform {

bool isComposited();

/// Calls `changed` each time that the answer has changed, as long as `context` lives.
void onCompositingChanged(QObject* context, std::function<void()> changed);

} // namespace Platform
