#include "base/JsonReader.h"

#include "base/JsonSyntax.h"
#include "base/Text.h"

#include <cmath>
#include <limits>

namespace varnel {

namespace {

const char* nameOf(simdjson::dom::element_type type)
{
    using Type = simdjson::dom::element_type;
    switch (type) {
    case Type::ARRAY:
        return "an array";
    case Type::OBJECT:
        return "an object";
    case Type::INT64:
    case Type::UINT64:
    case Type::DOUBLE:
        return "a number";
    case Type::STRING:
        return "a string";
    case Type::BOOL:
        return "true or false";
    case Type::NULL_VALUE:
        return "null";
    }
    return "something else";
}

} // namespace

void JsonValue::fail(const char* expected) const
{
    throw DecodeError(QString(), QStringLiteral("expected %1, found %2")
                                     .arg(QLatin1String(expected), QLatin1String(nameOf(m_element.type()))));
}

bool JsonValue::boolean() const
{
    bool value = false;
    if (m_element.get(value) != simdjson::SUCCESS)
        fail("true or false");
    return value;
}

qint64 JsonValue::integer() const
{
    std::int64_t value = 0;
    if (m_element.get(value) == simdjson::SUCCESS)
        return value;
    double number = 0;
    // 2^63 is the first double that no longer fits; its negative still does.
    constexpr double limit = 9223372036854775808.0;
    if (m_element.get(number) == simdjson::SUCCESS && std::trunc(number) == number && number >= -limit &&
        number < limit)
        return static_cast<qint64>(number);
    fail("a whole number");
}

double JsonValue::number() const
{
    double value = 0;
    if (m_element.get(value) != simdjson::SUCCESS)
        fail("a number");
    return value;
}

std::string_view JsonValue::utf8() const
{
    std::string_view value;
    if (m_element.get(value) != simdjson::SUCCESS)
        fail("a string");
    return value;
}

QString JsonValue::string() const
{
    return textOf(utf8());
}

JsonObject JsonValue::object() const
{
    simdjson::dom::object value;
    if (m_element.get(value) != simdjson::SUCCESS)
        fail("an object");
    return JsonObject(value);
}

simdjson::dom::array JsonValue::array() const
{
    simdjson::dom::array value;
    if (m_element.get(value) != simdjson::SUCCESS)
        fail("an array");
    return value;
}

QByteArray JsonValue::text() const
{
    return QByteArray::fromStdString(simdjson::minify(m_element));
}

std::optional<JsonValue> JsonObject::find(std::string_view key) const
{
    simdjson::dom::element value;
    if (m_object.at_key(key).get(value) != simdjson::SUCCESS || value.is_null())
        return std::nullopt;
    return JsonValue(value);
}

DecodeError JsonObject::missing(std::string_view key) const
{
    simdjson::dom::element value;
    const bool isNull = m_object.at_key(key).get(value) == simdjson::SUCCESS;
    return {QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())),
            isNull ? QStringLiteral("must not be null") : QStringLiteral("missing")};
}

JsonParser::JsonParser()
    : m_parser(std::make_unique<simdjson::dom::parser>())
{}
JsonParser::JsonParser(JsonParser&&) noexcept = default;
JsonParser& JsonParser::operator=(JsonParser&&) noexcept = default;
JsonParser::~JsonParser() = default;

JsonValue JsonParser::parse(std::string_view text)
{
    simdjson::dom::element root;
    // A text that is empty may have no address either, which the parser would copy from.
    if (!text.empty() && m_parser->parse(text.data(), text.size(), true).get(root) == simdjson::SUCCESS)
        return JsonValue(root);
    if (const std::optional<JsonValue> value = parseRepaired(text))
        return *value;
    throw DecodeError(QString(), describeJsonSyntaxProblem(text));
}

JsonValue JsonParser::parsePadded(std::string_view text)
{
    if (const std::optional<JsonValue> value = tryPadded(text))
        return *value;
    throw DecodeError(QString(), describeJsonSyntaxProblem(text));
}

std::optional<JsonValue> JsonParser::tryPadded(std::string_view text)
{
    simdjson::dom::element root;
    if (m_parser->parse(text.data(), text.size(), false).get(root) == simdjson::SUCCESS)
        return JsonValue(root);
    return parseRepaired(text);
}

std::optional<JsonValue> JsonParser::parseRepaired(std::string_view text)
{
    simdjson::dom::element root;
    const auto repaired = replaceEscapedLoneSurrogates(text);
    if (!repaired || m_parser->parse(repaired->data(), repaired->size(), true).get(root) != simdjson::SUCCESS)
        return std::nullopt;
    return JsonValue(root);
}

} // namespace varnel
