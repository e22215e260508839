#include "Editor/Sidecar.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace {

const QByteArray arrowJson =
    R"({"id":"8C1A2E6B-0D3F-4B7A-9E51-2F6C7D8A9B10","kind":"arrow","start":[120.5,88],)"
    R"("end":[310,240],"colorHex":"#FF3B30","lineWidth":4})";
const QByteArray counterJson =
    R"({"id":"5B2F9C40-7E11-4A2D-8C3B-1D0E6F7A8B92","kind":"counter","start":[60,400],)"
    R"("end":[60,400],"number":1,"colorHex":"#FF3B30","lineWidth":4})";

QByteArray fileWith(const QByteArray& annotations, const QByteArray& version = "1")
{
    return "{\"version\":" + version + ",\"annotations\":[" + annotations + "]}";
}

Annotation arrow()
{
    return {.id = QUuid(QStringLiteral("8c1a2e6b-0d3f-4b7a-9e51-2f6c7d8a9b10")),
            .kind = AnnotationKind::arrow,
            .start = {120.5, 88},
            .end = {310, 240},
            .colorHex = QStringLiteral("#FF3B30"),
            .lineWidth = 4};
}

Annotation counter()
{
    return {.id = QUuid(QStringLiteral("5b2f9c40-7e11-4a2d-8c3b-1d0e6f7a8b92")),
            .kind = AnnotationKind::counter,
            .start = {60, 400},
            .end = {60, 400},
            .number = 1,
            .colorHex = QStringLiteral("#FF3B30"),
            .lineWidth = 4};
}

QByteArray encoded(const QList<Annotation>& annotations)
{
    const auto json = Sidecar::encode({1, annotations});
    EXPECT_TRUE(json);
    return json ? *json : QByteArray();
}

/// What a file with one annotation reads as; absent when it does not.
std::optional<Annotation> decodedOne(const QByteArray& annotation)
{
    const auto sidecar = Sidecar::decode(fileWith(annotation));
    if (!sidecar || sidecar->annotations.size() != 1)
        return {};
    return sidecar->annotations.front();
}

/// The arrow with one of its values replaced, or a member added.
QByteArray arrowWith(const QByteArray& key, const QByteArray& value)
{
    QByteArray json = arrowJson;
    const QByteArray quoted = '"' + key + "\":";
    const qsizetype at = json.indexOf(quoted);
    if (at < 0)
        return json.replace(0, 1, '{' + quoted + value + ',');
    const qsizetype start = at + quoted.size();
    qsizetype end = json.indexOf(json[start] == '[' ? ']' : ',', start);
    if (end < 0)
        end = json.size() - 1;
    else if (json[end] == ']')
        ++end;
    return json.replace(start, end - start, value);
}

QByteArray arrowWithout(const QByteArray& key)
{
    QJsonObject object = QJsonDocument::fromJson(arrowJson).object();
    EXPECT_TRUE(object.contains(QString::fromLatin1(key)));
    object.remove(QString::fromLatin1(key));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

TEST(SidecarFormat, WritesCompactJson)
{
    EXPECT_EQ(encoded({arrow(), counter()}), fileWith(arrowJson + ',' + counterJson));
}

TEST(SidecarFormat, ReadsWhatItWrites)
{
    Annotation label = arrow();
    label.kind = AnnotationKind::text;
    label.text = QStringLiteral(u"\"quoted\" \\ / \b\f\n\r\t\u0001\u007F é \u2028 \U0001F600");
    label.fontSize = 19;
    Annotation stroke = arrow();
    stroke.kind = AnnotationKind::highlight;
    stroke.path = QList<Geometry::Point>{{1, 2}, {3.25, -4}, {1e-9, 1e21}};
    Annotation empty = arrow();
    empty.path.emplace();
    empty.text.emplace(QStringLiteral(""));
    const QList<Annotation> annotations{arrow(), counter(), label, stroke, empty};
    const auto sidecar = Sidecar::decode(encoded(annotations));
    ASSERT_TRUE(sidecar);
    EXPECT_EQ(*sidecar, (Sidecar{1, annotations}));
}

TEST(SidecarFormat, KnowsEveryKindByName)
{
    const char* const names[] = {"arrow",     "line", "rect",    "ellipse", "freehand",
                                 "highlight", "text", "counter", "redact"};
    for (int i = 0; i < 9; ++i) {
        Annotation annotation = arrow();
        annotation.kind = static_cast<AnnotationKind>(i);
        QByteArray json = arrowJson;
        json.replace("\"arrow\"", '"' + QByteArray(names[i]) + '"');
        EXPECT_EQ(encoded({annotation}), fileWith(json));
        EXPECT_EQ(decodedOne(json), annotation);
    }
}

TEST(SidecarFormat, OtherReadersUnderstandIt)
{
    Annotation label = arrow();
    label.text = QStringLiteral(u"\"\\\n\u0000é\U0001F600");
    const QJsonDocument document = QJsonDocument::fromJson(encoded({label}));
    EXPECT_EQ(document[QStringLiteral("version")].toInteger(), 1);
    EXPECT_EQ(document[QStringLiteral("annotations")][0][QStringLiteral("text")].toString(),
              *label.text);
}

// Any 64-bit pattern that is a number, among them ones near powers of ten and of two.
TEST(SidecarFormat, EveryNumberReadsBackBitForBit)
{
    std::mt19937_64 random(20261121);
    std::vector<double> numbers{0.0,
                                -0.0,
                                3,
                                0.1,
                                1e21,
                                1e-7,
                                9007199254740993.0,
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::epsilon()};
    for (int i = 0; i < 20'000; ++i) {
        numbers.push_back(std::bit_cast<double>(random()));
        numbers.push_back(std::bit_cast<double>(random() >> 12)); // denormal
        numbers.push_back(std::bit_cast<double>(random() & 0xFFF0'0000'0000'000F));
        numbers.push_back(std::ldexp(static_cast<double>(random() % 100'000'000), -10));
    }
    QList<Annotation> annotations;
    for (const double each : numbers) {
        if (!std::isfinite(each))
            continue;
        Annotation stroke = arrow();
        stroke.start = {each, -each};
        stroke.end = {-each, each};
        stroke.path = QList<Geometry::Point>{{each, each}};
        stroke.fontSize = each;
        stroke.lineWidth = each;
        annotations.append(stroke);
    }
    const auto sidecar = Sidecar::decode(encoded(annotations));
    ASSERT_TRUE(sidecar);
    ASSERT_EQ(sidecar->annotations.size(), annotations.size());
    EXPECT_GT(annotations.size(), 70'000);
    const auto bits = [](const Annotation& a) {
        const Geometry::Point p = a.path->front();
        return QList<std::uint64_t>{
            std::bit_cast<std::uint64_t>(a.start.x),   std::bit_cast<std::uint64_t>(a.start.y),
            std::bit_cast<std::uint64_t>(a.end.x),     std::bit_cast<std::uint64_t>(a.end.y),
            std::bit_cast<std::uint64_t>(p.x),         std::bit_cast<std::uint64_t>(p.y),
            std::bit_cast<std::uint64_t>(*a.fontSize), std::bit_cast<std::uint64_t>(a.lineWidth)};
    };
    for (qsizetype i = 0; i < annotations.size(); ++i)
        ASSERT_EQ(bits(sidecar->annotations[i]), bits(annotations[i])) << annotations[i].lineWidth;
}

TEST(SidecarFormat, NumbersAreAsShortAsTheyCanBe)
{
    Annotation annotation = arrow();
    annotation.start = {0.1, 5e-324};
    annotation.end = {2.0 / 3.0, -0.0};
    annotation.lineWidth = 1e23;
    const QByteArray json = encoded({annotation});
    EXPECT_TRUE(json.contains("\"start\":[0.1,5e-324],\"end\":[0.6666666666666666,-0]"))
        << json.data();
    EXPECT_TRUE(json.contains("\"lineWidth\":1e+23}")) << json.data();
}

TEST(SidecarFormat, IntegersOf64BitsAreExact)
{
    for (const std::int64_t number :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min(),
          std::int64_t{9007199254740993}, std::int64_t{0}})
    {
        Annotation annotation = counter();
        annotation.number = number;
        const auto sidecar = Sidecar::decode(encoded({annotation}));
        ASSERT_TRUE(sidecar);
        EXPECT_EQ(sidecar->annotations.front().number, number);
    }
}

TEST(SidecarFormat, NumbersThatAreNotFiniteCannotBeWritten)
{
    for (const double number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()})
    {
        Annotation annotation = arrow();
        annotation.path = QList<Geometry::Point>{{0, number}};
        EXPECT_FALSE(Sidecar::encode({1, {arrow(), annotation}}));
    }
}

TEST(SidecarFormat, AnyIntegerIsAVersion)
{
    for (const char* version : {"1", "2", "0", "-7", "9223372036854775807", "3.0", "1e2"}) {
        const auto sidecar = Sidecar::decode(fileWith(arrowJson, version));
        ASSERT_TRUE(sidecar) << version;
        EXPECT_EQ(sidecar->annotations, QList<Annotation>{arrow()});
    }
    for (const char* version : {"1.5", "\"1\"", "null", "true", "[1]", "{}", "1e30"})
        EXPECT_FALSE(Sidecar::decode(fileWith(arrowJson, version))) << version;
}

TEST(SidecarFormat, VersionAndAnnotationsMustBeThere)
{
    EXPECT_TRUE(Sidecar::decode(R"({"annotations":[],"version":1})"));
    for (const char* json :
         {R"({"version":1})", R"({"annotations":[]})", "{}", "[]", "null", "", "1",
          R"({"version":1,"annotations":null})", R"({"version":1,"annotations":{}})",
          R"({"version":1,"annotations":[null]})", R"({"version":1,"annotations":[[]]})",
          R"({"Version":1,"annotations":[]})"})
        EXPECT_FALSE(Sidecar::decode(json)) << json;
}

TEST(SidecarFormat, RequiredValuesMustBeThereAndOfTheirType)
{
    ASSERT_EQ(decodedOne(arrowJson), arrow());
    const char* const notOfAnyType[] = {"null", "true", "{}", "[]", "[[1,2]]"};
    for (const char* key : {"id", "kind", "start", "end", "colorHex", "lineWidth"}) {
        EXPECT_FALSE(decodedOne(arrowWithout(key))) << key;
        for (const char* value : notOfAnyType)
            EXPECT_FALSE(decodedOne(arrowWith(key, value))) << key << value;
    }
    for (const char* key : {"id", "kind", "colorHex"})
        EXPECT_FALSE(decodedOne(arrowWith(key, "5"))) << key;
    for (const char* key : {"start", "end", "lineWidth"})
        EXPECT_FALSE(decodedOne(arrowWith(key, "\"5\""))) << key;
}

TEST(SidecarFormat, APointIsTwoNumbers)
{
    EXPECT_EQ(decodedOne(arrowWith("start", "[7.0,8e0]"))->start, (Geometry::Point{7, 8}));
    for (const char* value : {"[]", "[1]", "[1,2,3]", "[1,null]", "[\"1\",2]", "[true,2]",
                              "[1,1e309]", "{\"x\":1,\"y\":2}", "1"})
    {
        EXPECT_FALSE(decodedOne(arrowWith("start", value))) << value;
        EXPECT_FALSE(decodedOne(arrowWith("path", '[' + QByteArray(value) + ']'))) << value;
    }
}

TEST(SidecarFormat, OptionalValuesMayBeNullOrMissing)
{
    QByteArray json = arrowJson;
    json.chop(1);
    json += R"(,"path":null,"text":null,"fontSize":null,"number":null})";
    const auto annotation = decodedOne(json);
    EXPECT_EQ(annotation, arrow());
    EXPECT_EQ(encoded({*annotation}), fileWith(arrowJson)) << "absent values are left out";
}

TEST(SidecarFormat, OptionalValuesMustBeOfTheirType)
{
    EXPECT_TRUE(decodedOne(arrowWith("path", "[]"))->path);
    EXPECT_EQ(decodedOne(arrowWith("number", "3.0"))->number, 3);
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"path", "1"},
             {"path", "{}"},
             {"path", "\"\""},
             {"path", "[null]"},
             {"path", "[1,2]"},
             {"text", "1"},
             {"text", "[]"},
             {"text", "false"},
             {"fontSize", "\"14\""},
             {"fontSize", "true"},
             {"fontSize", "[14]"},
             {"number", "1.5"},
             {"number", "\"1\""},
             {"number", "9223372036854775808"},
             {"number", "false"}})
        EXPECT_FALSE(decodedOne(arrowWith(key, value))) << key << value;
}

TEST(SidecarFormat, OneUnknownKindLosesTheWholeList)
{
    EXPECT_FALSE(Sidecar::decode(fileWith(arrowJson + ',' + arrowWith("kind", "\"star\""))));
    EXPECT_FALSE(decodedOne(arrowWith("kind", "\"Arrow\"")));
    EXPECT_FALSE(decodedOne(arrowWith("kind", "\"\"")));
}

TEST(SidecarFormat, AnIdIsAWellFormedUuid)
{
    EXPECT_EQ(decodedOne(arrowWith("id", "\"8c1a2e6b-0D3F-4b7a-9e51-2f6c7d8a9b10\"")), arrow());
    for (const char* id :
         {"\"\"", "\"{8C1A2E6B-0D3F-4B7A-9E51-2F6C7D8A9B10}\"",
          "\"8C1A2E6B0D3F4B7A9E512F6C7D8A9B10\"", "\"8C1A2E6B-0D3F-4B7A-9E51-2F6C7D8A9B1\"",
          "\"8C1A2E6B-0D3F-4B7A-9E51-2F6C7D8A9B1G\"", "\"8C1A2E6B-0D3F-4B7A-9E51-2F6C7D8A9B100\"",
          "\"8C1A2E6B+0D3F-4B7A-9E51-2F6C7D8A9B10\""})
        EXPECT_FALSE(decodedOne(arrowWith("id", id))) << id;
}

TEST(SidecarFormat, UnknownKeysAreIgnoredButMustBeJson)
{
    EXPECT_EQ(decodedOne(arrowWith("extra", R"({"a":[1,{"b":null}],"c":1e999})")), arrow());
    EXPECT_FALSE(decodedOne(arrowWith("extra", "{\"a\":}")));
    EXPECT_TRUE(
        Sidecar::decode(R"({"x":[{}],"version":1,"y":"\u0041","annotations":[],"z":null})"));
    EXPECT_FALSE(Sidecar::decode(R"({"x":nul,"version":1,"annotations":[]})"));
}

TEST(SidecarFormat, TheLastOfEqualKeysCounts)
{
    EXPECT_EQ(decodedOne(R"({"lineWidth":9,)" + arrowJson.mid(1)), arrow());
    EXPECT_FALSE(decodedOne(arrowWith("text", R"("a","text":null)"))->text);
}

TEST(SidecarFormat, NothingMayFollow)
{
    EXPECT_TRUE(Sidecar::decode(fileWith(arrowJson) + " \r\n\t"));
    EXPECT_FALSE(Sidecar::decode(fileWith(arrowJson) + 'x'));
    EXPECT_FALSE(Sidecar::decode(fileWith(arrowJson) + fileWith(arrowJson)));
    EXPECT_FALSE(Sidecar::decode(fileWith(arrowJson).chopped(1)));
}
