#pragma once

#include "ChipPosition.h"
#include "Support/Geometry.h"

#include <QSettings>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

/// Typed access to the seven keys that the program keeps in the user-defaults store. A value of
/// another type than the key's counts as absent, if not said otherwise. Main thread only.
class Preferences {
public:
    explicit Preferences(std::unique_ptr<QSettings> store);

    /// "recordMic": whether recordings take the microphone; false when never set.
    bool recordMic() const;
    void setRecordMic(bool on);

    /// "lastCapturePath": where the newest screenshot was written. The file may be gone.
    std::optional<QString> lastCapturePath() const;
    void setLastCapturePath(const std::optional<QString>& path);

    /// "hotKeyCode": the virtual key code of the capture hot key; 1 (the S key) when absent. A
    /// whole number outside the unsigned 32-bit range is fatal.
    std::uint32_t hotKeyCode() const;

    /// "hotKeyModifiers": the modifier mask of the capture hot key; 2560 (Option and Shift) when
    /// absent. A whole number outside the unsigned 32-bit range is fatal.
    std::uint32_t hotKeyModifiers() const;

    /// "chipPosition": bottomLeft when absent or unknown.
    ChipPosition chipPosition() const;
    void save(ChipPosition position);

    /// "chipCustomX" and "chipCustomY", in global points. (24, 24) when there is no X, whatever Y
    /// is; beside an X of any type, whatever is no number reads as 0.
    Geometry::Point chipCustomOrigin() const;
    /// Stores the origin and makes the position custom.
    void saveCustom(Geometry::Point origin);

private:
    /// The stored value, as another process may just have left it.
    QVariant stored(const char* key) const;
    void store(const char* key, const QVariant& value);
    std::uint32_t unsigned32(const char* key, std::uint32_t fallback) const;

    /// Behind a pointer to non-const: reading syncs the store with its file first.
    std::unique_ptr<QSettings> m_store;
};
