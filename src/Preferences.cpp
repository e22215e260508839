#include "Preferences.h"

#include "Support/Log.h"

#include <QVariant>

#include <cmath>
#include <limits>

namespace {

constexpr const char* recordMicKey = "recordMic";
constexpr const char* lastCapturePathKey = "lastCapturePath";
constexpr const char* hotKeyCodeKey = "hotKeyCode";
constexpr const char* hotKeyModifiersKey = "hotKeyModifiers";
constexpr const char* chipPositionKey = "chipPosition";
constexpr const char* chipCustomXKey = "chipCustomX";
constexpr const char* chipCustomYKey = "chipCustomY";

constexpr std::uint32_t defaultHotKeyCode = 1;
constexpr std::uint32_t defaultHotKeyModifiers = 2560;
constexpr Geometry::Point defaultCustomOrigin = {24, 24};

std::optional<QString> asString(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

/// A number as a double, whether it was stored with or without a fraction; 0 for anything else.
double asDouble(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toDouble();
    default: // every type that is not a number
        return 0;
    }
}

/// A whole number as a double, absent for anything else. A double holds every value of the unsigned
/// 32-bit range, and a larger one stays outside that range.
std::optional<double> asWholeNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toDouble();
    case QMetaType::Double: // a store may keep whole numbers beyond 64 bits, or 1.0, as doubles
        if (const double number = value.toDouble(); std::floor(number) == number)
            return number;
        return std::nullopt;
    default: // every type that is not a number
        return std::nullopt;
    }
}

} // namespace

Preferences::Preferences(std::unique_ptr<QSettings> store)
    : m_store(std::move(store))
{
}

bool Preferences::recordMic() const
{
    const QVariant value = stored(recordMicKey);
    return value.typeId() == QMetaType::Bool && value.toBool();
}

void Preferences::setRecordMic(bool on)
{
    store(recordMicKey, on);
}

std::optional<QString> Preferences::lastCapturePath() const
{
    return asString(stored(lastCapturePathKey));
}

void Preferences::setLastCapturePath(const std::optional<QString>& path)
{
    store(lastCapturePathKey, path ? QVariant(*path) : QVariant());
}

std::uint32_t Preferences::hotKeyCode() const
{
    return unsigned32(hotKeyCodeKey, defaultHotKeyCode);
}

std::uint32_t Preferences::hotKeyModifiers() const
{
    return unsigned32(hotKeyModifiersKey, defaultHotKeyModifiers);
}

ChipPosition Preferences::chipPosition() const
{
    const auto raw = asString(stored(chipPositionKey));
    if (!raw)
        return ChipPosition::bottomLeft;
    return chipPositionFromRawValue(*raw).value_or(ChipPosition::bottomLeft);
}

void Preferences::save(ChipPosition position)
{
    store(chipPositionKey, rawValue(position));
}

Geometry::Point Preferences::chipCustomOrigin() const
{
    const QVariant x = stored(chipCustomXKey);
    if (!x.isValid())
        return defaultCustomOrigin;
    return {asDouble(x), asDouble(stored(chipCustomYKey))};
}

void Preferences::saveCustom(Geometry::Point origin)
{
    // All three or none.
    m_store->setValue(QLatin1String(chipCustomXKey), origin.x);
    m_store->setValue(QLatin1String(chipCustomYKey), origin.y);
    save(ChipPosition::custom);
}

QVariant Preferences::stored(const char* key) const
{
    m_store->sync();
    return m_store->value(QLatin1String(key));
}

void Preferences::store(const char* key, const QVariant& value)
{
    if (value.isValid())
        m_store->setValue(QLatin1String(key), value);
    else
        m_store->remove(QLatin1String(key));
    // A store that cannot be written keeps its old file, and the value for this run; the program
    // has no way to tell the user.
    m_store->sync();
}

std::uint32_t Preferences::unsigned32(const char* key, std::uint32_t fallback) const
{
    const auto number = asWholeNumber(stored(key));
    if (!number)
        return fallback;
    if (*number < 0 || *number > std::numeric_limits<std::uint32_t>::max()) {
        Log::fatal(QStringLiteral("preference %1 is outside the unsigned 32-bit range: %2")
                       .arg(QLatin1String(key))
                       .arg(*number, 0, 'f', 0));
    }
    return static_cast<std::uint32_t>(*number);
}
