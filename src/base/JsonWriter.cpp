#include "base/JsonWriter.h"

#include "base/Error.h"

#include <QJsonArray>
#include <QJsonObject>

#include <array>
#include <charconv>
#include <cmath>

namespace varnel {

namespace {

constexpr std::size_t flushSize = 64 * 1024;

void appendCodePoint(std::string& buffer, char32_t codePoint)
{
    if (codePoint < 0x800) {
        buffer.push_back(static_cast<char>(0xC0U | (codePoint >> 6U)));
    } else {
        if (codePoint < 0x10000) {
            buffer.push_back(static_cast<char>(0xE0U | (codePoint >> 12U)));
        } else {
            buffer.push_back(static_cast<char>(0xF0U | (codePoint >> 18U)));
            buffer.push_back(static_cast<char>(0x80U | ((codePoint >> 12U) & 0x3FU)));
        }
        buffer.push_back(static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU)));
    }
    buffer.push_back(static_cast<char>(0x80U | (codePoint & 0x3FU)));
}

void appendEscape(std::string& buffer, char16_t unit)
{
    constexpr std::string_view hex = "0123456789abcdef";
    buffer.push_back('\\');
    switch (unit) {
    case u'"':
    case u'\\':
        buffer.push_back(static_cast<char>(unit));
        break;
    case u'\n':
        buffer.push_back('n');
        break;
    case u'\r':
        buffer.push_back('r');
        break;
    case u'\t':
        buffer.push_back('t');
        break;
    case u'\b':
        buffer.push_back('b');
        break;
    case u'\f':
        buffer.push_back('f');
        break;
    default:
        buffer += "u00";
        buffer.push_back(hex[unit >> 4U]);
        buffer.push_back(hex[unit & 0xFU]);
    }
}

} // namespace

JsonWriter::JsonWriter(Style style, Sink sink)
    : m_style(style)
    , m_sink(std::move(sink))
{}

void JsonWriter::lineBreak()
{
    if (m_style == Style::Pretty) {
        m_buffer.push_back('\n');
        m_buffer.append(m_levels.size() * 2, ' ');
    }
}

void JsonWriter::beginValue()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_levels.empty())
        return;
    if (!m_levels.back().empty)
        m_buffer.push_back(',');
    m_levels.back().empty = false;
    lineBreak();
}

void JsonWriter::open(char opening, char closing)
{
    beginValue();
    m_buffer.push_back(opening);
    m_levels.push_back({closing, true, {}});
}

void JsonWriter::close()
{
    const Level level = std::move(m_levels.back());
    m_levels.pop_back();
    if (!level.empty)
        lineBreak();
    m_buffer.push_back(level.closing);
    flushIfLarge();
}

void JsonWriter::beginObject()
{
    open('{', '}');
}
void JsonWriter::endObject()
{
    close();
}
void JsonWriter::beginArray()
{
    open('[', ']');
}
void JsonWriter::endArray()
{
    close();
}

void JsonWriter::key(std::string_view key)
{
    Level& level = m_levels.back();
    Q_ASSERT_X(m_style == Style::Compact || level.empty || level.lastKey < key, "JsonWriter::key",
               "the keys of an object are written in ascending order");
    level.lastKey = key;
    beginValue();
    m_buffer.push_back('"');
    appendEscaped(QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())));
    m_buffer += m_style == Style::Pretty ? "\": " : "\":";
    m_afterKey = true;
}

void JsonWriter::string(QStringView text)
{
    beginValue();
    m_buffer.push_back('"');
    appendEscaped(text);
    m_buffer.push_back('"');
    flushIfLarge();
}

void JsonWriter::appendEscaped(QStringView text)
{
    const char16_t* at = text.utf16();
    const char16_t* const end = at + text.size();
    while (at != end) {
        const char16_t unit = *at++;
        if (unit < 0x80) {
            if (unit >= 0x20 && unit != u'"' && unit != u'\\')
                m_buffer.push_back(static_cast<char>(unit));
            else
                appendEscape(m_buffer, unit);
        } else if (!QChar::isSurrogate(unit)) {
            appendCodePoint(m_buffer, unit);
        } else if (QChar::isHighSurrogate(unit) && at != end && QChar::isLowSurrogate(*at)) {
            appendCodePoint(m_buffer, QChar::surrogateToUcs4(unit, *at++));
        } else {
            appendCodePoint(m_buffer, QChar::ReplacementCharacter);
        }
        if (m_buffer.size() >= 2 * flushSize)
            flushIfLarge();
    }
}

void JsonWriter::integer(qint64 value)
{
    beginValue();
    m_buffer += std::to_string(value);
}

void JsonWriter::number(double value)
{
    if (!std::isfinite(value))
        throw Error(QStringLiteral("A number that is not finite cannot be saved as JSON."));
    beginValue();
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    m_buffer.append(text.data(), result.ptr);
}

void JsonWriter::boolean(bool value)
{
    beginValue();
    m_buffer += value ? "true" : "false";
}

void JsonWriter::null()
{
    beginValue();
    m_buffer += "null";
}

void JsonWriter::base64(QByteArrayView bytes, QStringView prefix)
{
    beginValue();
    m_buffer.push_back('"');
    appendEscaped(prefix);
    // In pieces that are a multiple of three bytes long, so that they can be put one behind the other.
    constexpr qsizetype pieceSize = 48 * 1024;
    for (qsizetype at = 0; at < bytes.size(); at += pieceSize) {
        const QByteArrayView piece = bytes.sliced(at, std::min(pieceSize, bytes.size() - at));
        m_buffer += QByteArray::fromRawData(piece.data(), piece.size()).toBase64().toStdString();
        flushIfLarge();
    }
    m_buffer.push_back('"');
}

void JsonWriter::value(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        boolean(value.toBool());
        break;
    case QJsonValue::Double:
        // Qt keeps whole numbers apart; written as they are they stay exact.
        if (value.toInteger(0) == value.toInteger(1))
            integer(value.toInteger());
        else
            number(value.toDouble());
        break;
    case QJsonValue::String:
        string(value.toString());
        break;
    case QJsonValue::Array: {
        beginArray();
        const QJsonArray elements = value.toArray();
        for (const QJsonValue element : elements)
            this->value(element);
        endArray();
        break;
    }
    case QJsonValue::Object: {
        beginObject();
        const QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            key(member.key().toUtf8().toStdString());
            this->value(member.value());
        }
        endObject();
        break;
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        null();
        break;
    }
}

void JsonWriter::flushIfLarge()
{
    if (m_buffer.size() >= flushSize) {
        m_sink(m_buffer);
        m_buffer.clear();
    }
}

void JsonWriter::finish()
{
    if (m_style == Style::Pretty)
        m_buffer.push_back('\n');
    m_sink(m_buffer);
    m_buffer.clear();
}

QByteArray compactJson(const std::function<void(JsonWriter&)>& write, qsizetype expectedSize)
{
    QByteArray text;
    text.reserve(expectedSize);
    JsonWriter writer(JsonWriter::Style::Compact, [&text](std::string_view piece) {
        text.append(piece.data(), static_cast<qsizetype>(piece.size()));
    });
    write(writer);
    writer.finish();
    return text;
}

} // namespace varnel
