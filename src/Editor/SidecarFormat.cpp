#include "Editor/Sidecar.h"
#include "Support/JsonReader.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

// The JSON of a sidecar: one object with "version" and "annotations".

namespace {

constexpr std::array<std::pair<AnnotationKind, const char*>, 9> kindNames{{
    {AnnotationKind::arrow, "arrow"},
    {AnnotationKind::line, "line"},
    {AnnotationKind::rect, "rect"},
    {AnnotationKind::ellipse, "ellipse"},
    {AnnotationKind::freehand, "freehand"},
    {AnnotationKind::highlight, "highlight"},
    {AnnotationKind::text, "text"},
    {AnnotationKind::counter, "counter"},
    {AnnotationKind::redact, "redact"},
}};

// --- writing ---

class Writer {
public:
    void raw(const char* text) { m_json += text; }

    template <class Number>
    void number(Number value)
    {
        if constexpr (std::is_floating_point_v<Number>)
            m_isWritable = m_isWritable && std::isfinite(value);
        std::array<char, 32> digits; // the longest is 24: -2.2250738585072014e-308
        const auto [end, error] =
            std::to_chars(digits.data(), digits.data() + digits.size(), value);
        Q_ASSERT(error == std::errc{});
        m_json.append(digits.data(), end - digits.data());
    }

    void string(const QString& text)
    {
        m_json += '"';
        for (const char c : text.toUtf8()) {
            if (c == '"' || c == '\\') {
                m_json += '\\';
                m_json += c;
            } else if (static_cast<unsigned char>(c) < ' ') {
                m_json += "\\u00";
                m_json += QByteArray(1, c).toHex();
            } else {
                m_json += c;
            }
        }
        m_json += '"';
    }

    void point(Geometry::Point point)
    {
        raw("[");
        number(point.x);
        raw(",");
        number(point.y);
        raw("]");
    }

    void points(const QList<Geometry::Point>& points)
    {
        raw("[");
        for (qsizetype i = 0; i < points.size(); ++i) {
            raw(i > 0 ? "," : "");
            point(points[i]);
        }
        raw("]");
    }

    Result<QByteArray> take()
    {
        if (!m_isWritable)
            return Failure{"JSON has no number that is not finite"};
        return std::move(m_json);
    }

private:
    QByteArray m_json;
    bool m_isWritable = true;
};

const char* nameOf(AnnotationKind kind)
{
    for (const auto& [each, name] : kindNames) {
        if (each == kind)
            return name;
    }
    Q_UNREACHABLE();
}

void write(Writer& writer, const Annotation& annotation)
{
    writer.raw("{\"id\":");
    writer.string(annotation.id.toString(QUuid::WithoutBraces).toUpper());
    writer.raw(",\"kind\":");
    writer.string(QString::fromLatin1(nameOf(annotation.kind)));
    writer.raw(",\"start\":");
    writer.point(annotation.start);
    writer.raw(",\"end\":");
    writer.point(annotation.end);
    if (annotation.path) {
        writer.raw(",\"path\":");
        writer.points(*annotation.path);
    }
    if (annotation.text) {
        writer.raw(",\"text\":");
        writer.string(*annotation.text);
    }
    if (annotation.fontSize) {
        writer.raw(",\"fontSize\":");
        writer.number(*annotation.fontSize);
    }
    if (annotation.number) {
        writer.raw(",\"number\":");
        writer.number(*annotation.number);
    }
    writer.raw(",\"colorHex\":");
    writer.string(annotation.colorHex);
    writer.raw(",\"lineWidth\":");
    writer.number(annotation.lineWidth);
    writer.raw("}");
}

// --- reading: absent when the next value is not what it has to be ---

std::optional<QUuid> readId(JsonReader& reader)
{
    // Qt takes other forms too, such as with braces.
    const std::optional<QString> text = reader.readString();
    constexpr qsizetype length = 36;
    if (!text || text->size() != length)
        return {};
    for (qsizetype i = 0; i < length; ++i) {
        const bool isHyphen = i == 8 || i == 13 || i == 18 || i == 23;
        const char16_t c = (*text)[i].unicode();
        const bool isHex =
            (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
        if (isHyphen ? c != u'-' : !isHex)
            return {};
    }
    return QUuid(*text);
}

std::optional<AnnotationKind> readKind(JsonReader& reader)
{
    const std::optional<QString> text = reader.readString();
    for (const auto& [kind, name] : kindNames) {
        if (text && *text == QLatin1String(name))
            return kind;
    }
    return {};
}

std::optional<Geometry::Point> readPoint(JsonReader& reader)
{
    std::array<double, 2> numbers{};
    std::size_t count = 0;
    const bool isRead = reader.readArray([&] {
        const std::optional<double> number =
            count < numbers.size() ? reader.readNumber() : std::nullopt;
        if (number)
            numbers[count++] = *number;
        return number.has_value();
    });
    if (!isRead || count != numbers.size())
        return {};
    return Geometry::Point{numbers[0], numbers[1]};
}

std::optional<QList<Geometry::Point>> readPath(JsonReader& reader)
{
    QList<Geometry::Point> points;
    const bool isRead = reader.readArray([&] {
        const std::optional<Geometry::Point> point = readPoint(reader);
        if (point)
            points.append(*point);
        return point.has_value();
    });
    return isRead ? std::optional(points) : std::nullopt;
}

/// Puts `value` in its place; false when there is none.
template <class Place, class Value>
bool put(Place& place, std::optional<Value> value)
{
    if (value)
        place = std::move(*value);
    return value.has_value();
}

/// An annotation as its keys come in, in any order.
class AnnotationReader {
public:
    explicit AnnotationReader(JsonReader& reader)
        : m_reader(reader)
    {
    }

    std::optional<Annotation> read()
    {
        const bool isRead =
            m_reader.readObject([this](const QString& key) { return readMember(key); });
        if (!isRead || m_found != everyRequired)
            return {};
        return std::move(m_annotation);
    }

private:
    enum Required : unsigned {
        id = 1,
        kind = 2,
        start = 4,
        end = 8,
        colorHex = 16,
        lineWidth = 32
    };
    static constexpr unsigned everyRequired = 63;

    bool readMember(const QString& key)
    {
        if (key == u"id")
            return require(id, m_annotation.id, readId(m_reader));
        if (key == u"kind")
            return require(kind, m_annotation.kind, readKind(m_reader));
        if (key == u"start")
            return require(start, m_annotation.start, readPoint(m_reader));
        if (key == u"end")
            return require(end, m_annotation.end, readPoint(m_reader));
        if (key == u"colorHex")
            return require(colorHex, m_annotation.colorHex, m_reader.readString());
        if (key == u"lineWidth")
            return require(lineWidth, m_annotation.lineWidth, m_reader.readNumber());
        if (key == u"path")
            return allow(m_annotation.path, [this] { return readPath(m_reader); });
        if (key == u"text")
            return allow(m_annotation.text, [this] { return m_reader.readString(); });
        if (key == u"fontSize")
            return allow(m_annotation.fontSize, [this] { return m_reader.readNumber(); });
        if (key == u"number")
            return allow(m_annotation.number, [this] { return m_reader.readInteger(); });
        return m_reader.skip();
    }

    template <class Place, class Value>
    bool require(Required which, Place& place, std::optional<Value> value)
    {
        m_found |= which;
        return put(place, std::move(value));
    }

    /// A value that may be null, which is as if it were not there.
    template <class Place, class Read>
    bool allow(Place& place, Read read)
    {
        place.reset();
        return m_reader.readNull() || put(place, read());
    }

    JsonReader& m_reader;
    Annotation m_annotation{.id = {}};
    unsigned m_found = 0;
};

std::optional<QList<Annotation>> readAnnotations(JsonReader& reader)
{
    QList<Annotation> annotations;
    const bool isRead = reader.readArray([&] {
        std::optional<Annotation> annotation = AnnotationReader(reader).read();
        if (annotation)
            annotations.append(std::move(*annotation));
        return annotation.has_value();
    });
    return isRead ? std::optional(annotations) : std::nullopt;
}

} // namespace

Result<QByteArray> Sidecar::encode(const Sidecar& sidecar)
{
    Writer writer;
    writer.raw("{\"version\":");
    writer.number(sidecar.version);
    writer.raw(",\"annotations\":[");
    for (qsizetype i = 0; i < sidecar.annotations.size(); ++i) {
        writer.raw(i > 0 ? "," : "");
        write(writer, sidecar.annotations[i]);
    }
    writer.raw("]}");
    return writer.take();
}

Result<Sidecar> Sidecar::decode(QByteArrayView json)
{
    JsonReader reader(json);
    std::optional<std::int64_t> version;
    std::optional<QList<Annotation>> annotations;
    const bool isRead = reader.readObject([&](const QString& key) {
        if (key == u"version")
            return put(version, reader.readInteger());
        if (key == u"annotations")
            return put(annotations, readAnnotations(reader));
        return reader.skip();
    });
    if (!isRead || !reader.isAtEnd() || !version || !annotations)
        return Failure{"these are no annotations"};
    return Sidecar{*version, std::move(*annotations)};
}
