#pragma once

#include <QSettings>

#include <memory>

namespace Platform {

/// Opens the user-defaults store. Values keep their types: text stays text, a whole number a whole
/// number. What another process wrote shows after sync(). A write is on disk, whole, after sync().
std::unique_ptr<QSettings> openDefaults();

} // namespace Platform
