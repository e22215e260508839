#include "Support/JsonReader.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

bool isJson(QByteArrayView text)
{
    JsonReader reader(text);
    return reader.skip() && reader.isAtEnd();
}

std::optional<double> number(QByteArrayView text)
{
    JsonReader reader(text);
    const auto value = reader.readNumber();
    return reader.isAtEnd() ? value : std::nullopt;
}

std::optional<std::int64_t> integer(QByteArrayView text)
{
    JsonReader reader(text);
    const auto value = reader.readInteger();
    return reader.isAtEnd() ? value : std::nullopt;
}

std::optional<QString> string(QByteArrayView text)
{
    JsonReader reader(text);
    const auto value = reader.readString();
    return reader.isAtEnd() ? value : std::nullopt;
}

} // namespace

TEST(JsonReader, TakesWhatIsJson)
{
    for (const char* text : {"null",
                             "true",
                             "false",
                             "0",
                             "-0",
                             "1",
                             "-12.50e+3",
                             "1E9",
                             "1e400",
                             "\"\"",
                             "\"a\"",
                             "[]",
                             "{}",
                             "[[]]",
                             "[{},[],{}]",
                             " [ 1 , 2 ] ",
                             "\t{\r\n\"a\" : [ ] , \"b\":{\"c\":null}}",
                             "{\"a\":1,\"a\":2}",
                             "\xEF\xBB\xBF[]",
                             R"("\"\\\/\b\f\n\r\t\u00e9\ud83d\ude00")",
                             "\"\xC3\xA9\""})
        EXPECT_TRUE(isJson(text)) << text;
}

TEST(JsonReader, RefusesWhatIsNot)
{
    for (const char* text : {"",
                             " ",
                             "nul",
                             "nulll",
                             "True",
                             "+1",
                             "01",
                             "-",
                             "-a",
                             ".5",
                             "1.",
                             "1.e3",
                             "1e",
                             "1e+",
                             "0x10",
                             "Infinity",
                             "NaN",
                             "'a'",
                             "\"",
                             "\"a",
                             "\"\\",
                             "\"\\x\"",
                             "\"\\u12\"",
                             "\"\\u+123\"",
                             "\"\\u12G4\"",
                             "\"\\ud800\"",
                             "\"\\ude00\\ud83d\"",
                             "\"a\nb\"",
                             "[",
                             "]",
                             "[1",
                             "[1,",
                             "[1,]",
                             "[,1]",
                             "[1 2]",
                             "[1}",
                             "{",
                             "}",
                             "{\"a\"",
                             "{\"a\":",
                             "{\"a\":1",
                             "{\"a\":1,}",
                             "{,}",
                             "{a:1}",
                             "{1:1}",
                             "{\"a\" 1}",
                             "{\"a\":1]",
                             "[] []",
                             "1 2",
                             "[]x",
                             "//\n[]",
                             "\"\xC3\"",
                             "\"\xED\xA0\x80\"",
                             "\"\xC0\x80\"",
                             "\"\xFF\"",
                             "[]\xFF"})
        EXPECT_FALSE(isJson(text)) << text;
    EXPECT_FALSE(isJson(QByteArrayView("[]\0", 3)));
    EXPECT_FALSE(isJson(QByteArrayView("\"a\0b\"", 5)));
}

TEST(JsonReader, ReadsMembersAndElementsOnlyWhereTheyAreRightlyApart)
{
    const auto elements = [](QByteArrayView text) {
        JsonReader reader(text);
        int count = 0;
        const bool isRead = reader.readArray([&] { return reader.readNumber() == ++count; });
        return isRead && reader.isAtEnd() ? count : -1;
    };
    EXPECT_EQ(elements("[]"), 0);
    EXPECT_EQ(elements(" [ 1 , 2,3 ] "), 3);
    for (const char* text :
         {"[1 2]", "[1,]", "[,1]", "[1,,2]", "[1", "[1,", "[", "[1}", "{1}", "1", ""})
        EXPECT_EQ(elements(text), -1) << text;

    const auto members = [](QByteArrayView text) {
        JsonReader reader(text);
        QString keys;
        const bool isRead = reader.readObject([&](const QString& key) {
            keys += key;
            return reader.readNumber().has_value();
        });
        return isRead && reader.isAtEnd() ? keys : QStringLiteral("none");
    };
    EXPECT_EQ(members("{}"), QString());
    EXPECT_EQ(members(R"( { "b" : 1 ,"a":2, "\u0063" :3 } )"), QStringLiteral("bac"));
    for (const char* text : {R"({"a":1 "b":2})", R"({"a":1,})", R"({,"a":1})", R"({"a":1,,"b":2})",
                             R"({"a" 1})", R"({"a"})", R"({"a":})", R"({a:1})", R"({1:1})",
                             R"({"a":1)", R"({"a":1])", R"(["a":1])", ""})
        EXPECT_EQ(members(text), QStringLiteral("none")) << text;
}

TEST(JsonReader, SkipsWhateverTheDepth)
{
    constexpr int depth = 3'000'000;
    EXPECT_TRUE(isJson(QByteArray(depth, '[') + QByteArray(depth, ']')));
    EXPECT_FALSE(isJson(QByteArray(depth, '[')));
    EXPECT_FALSE(isJson(QByteArray(depth, '[') + QByteArray(depth - 1, ']')));
    EXPECT_TRUE(isJson(QByteArray("{\"a\":").repeated(depth) + "1" + QByteArray(depth, '}')));
}

TEST(JsonReader, NumbersAreTheNearestFloat)
{
    EXPECT_EQ(number("0.1"), 0.1);
    EXPECT_EQ(number("3"), 3.0);
    EXPECT_EQ(number("3.0"), 3.0);
    EXPECT_EQ(number("-1.5e3"), -1500.0);
    EXPECT_EQ(number("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(number("9007199254740993.0000000000000000000000000000001"), 9007199254740994.0);
    EXPECT_EQ(number("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(number("1.7976931348623157e308"), std::numeric_limits<double>::max());
    for (const char* zero : {"-0", "-0.0", "-0e5"}) {
        ASSERT_EQ(number(zero), 0.0);
        EXPECT_TRUE(std::signbit(*number(zero))) << zero;
    }
    EXPECT_FALSE(std::signbit(*number("0")));
}

TEST(JsonReader, NumbersThatNoFloatCanBeAreErrors)
{
    for (const char* text :
         {"1e309", "-1e309", "1e99999999999999999999", "1e-400", "true", "null", "\"1\"", "[1]"})
        EXPECT_FALSE(number(text)) << text;
    EXPECT_FALSE(number(QByteArray(100'000, '9')));
}

TEST(JsonReader, IntegersAreExact)
{
    EXPECT_EQ(integer("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(integer("9007199254740993"), 9007199254740993);
    EXPECT_EQ(integer("-0"), 0);
    EXPECT_EQ(integer("3.0"), 3);
    EXPECT_EQ(integer("-3e2"), -300);
    EXPECT_EQ(integer("-9223372036854775808.0"), std::numeric_limits<std::int64_t>::min());
}

TEST(JsonReader, WhatIsNoIntegerIsAnError)
{
    for (const char* text :
         {"1.5", "1e-1", "9223372036854775808", "9223372036854775807.0", "-9223372036854775809",
          "-9223372036854777856.0", "1e19", "1e400", "true", "null", "\"1\"", ""})
        EXPECT_FALSE(integer(text)) << text;
}

TEST(JsonReader, StringsAreWhatTheirEscapesSay)
{
    EXPECT_EQ(string(R"("a\"\\\/\b\f\n\r\tz")"), QStringLiteral("a\"\\/\b\f\n\r\tz"));
    EXPECT_EQ(string(R"("\u0041\u00E9\u00e9")"), QStringLiteral(u"A\u00E9\u00E9"));
    EXPECT_EQ(string(R"("\ud83d\ude00")"), QStringLiteral(u"\U0001F600"));
    EXPECT_EQ(string("\"\xF0\x9F\x98\x80\""), QStringLiteral(u"\U0001F600"));
    EXPECT_EQ(string(R"("a\u0000b")"), QStringLiteral("a") + QChar(0) + QLatin1Char('b'));
    for (const char* text : {"1", "null", "[\"a\"]", "{\"a\":\"b\"}"})
        EXPECT_FALSE(string(text)) << text;
}

TEST(JsonReader, NullIsReadOnlyWhereItIs)
{
    JsonReader reader("[null,1,nil]");
    int index = 0;
    EXPECT_FALSE(reader.readArray([&] {
        switch (index++) {
        case 0:
            return reader.readNull();
        case 1:
            EXPECT_FALSE(reader.readNull());
            return reader.readNumber() == 1.0;
        default:
            EXPECT_FALSE(reader.readNull());
            EXPECT_FALSE(reader.skip()) << "a broken word ends it";
            return true;
        }
    }));
    EXPECT_EQ(index, 3);
}

TEST(JsonReader, AnErrorIsFinal)
{
    JsonReader reader("\"text\" ");
    EXPECT_FALSE(reader.readNumber());
    EXPECT_FALSE(reader.readString());
    EXPECT_FALSE(reader.skip());
    EXPECT_FALSE(reader.readNull());
    EXPECT_FALSE(reader.isAtEnd());
}

TEST(JsonReader, AWrongKindOfMemberEndsTheObject)
{
    JsonReader reader(R"({"a":1,"b":2})");
    int members = 0;
    EXPECT_FALSE(reader.readObject([&](const QString&) {
        ++members;
        return reader.readString().has_value();
    }));
    EXPECT_EQ(members, 1);
}
