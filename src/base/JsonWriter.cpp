#include "base/JsonWriter.h"

#include "base/Error.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace varnel {

namespace {

constexpr std::size_t bufferSize = 128 * 1024;

constexpr qsizetype pieceSize = 8 * 1024;
/// What a UTF-16 unit becomes at most: an escape of six bytes.
constexpr std::size_t longestForm = 6;

char* writeCodePoint(char* at, char32_t codePoint)
{
    if (codePoint < 0x800) {
        *at++ = static_cast<char>(0xC0U | (codePoint >> 6U));
    } else {
        if (codePoint < 0x10000) {
            *at++ = static_cast<char>(0xE0U | (codePoint >> 12U));
        } else {
            *at++ = static_cast<char>(0xF0U | (codePoint >> 18U));
            *at++ = static_cast<char>(0x80U | ((codePoint >> 12U) & 0x3FU));
        }
        *at++ = static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU));
    }
    *at++ = static_cast<char>(0x80U | (codePoint & 0x3FU));
    return at;
}

/// The letter behind the backslash for the controls that have one; 0 for the others.
constexpr auto shortEscapes = [] {
    std::array<char, 0x20> letters{};
    letters['\n'] = 'n';
    letters['\r'] = 'r';
    letters['\t'] = 't';
    letters['\b'] = 'b';
    letters['\f'] = 'f';
    return letters;
}();

char* writeEscape(char* at, char16_t unit)
{
    constexpr std::string_view hex = "0123456789abcdef";
    *at++ = '\\';
    if (unit >= 0x20) {
        *at++ = static_cast<char>(unit);
    } else if (shortEscapes[unit] != 0) {
        *at++ = shortEscapes[unit];
    } else {
        *at++ = 'u';
        *at++ = '0';
        *at++ = '0';
        *at++ = hex[unit >> 4U];
        *at++ = hex[unit & 0xFU];
    }
    return at;
}

bool standsForItself(char16_t unit)
{
    return unit >= 0x20 && unit < 0x80 && unit != u'"' && unit != u'\\';
}

constexpr std::ptrdiff_t blockSize = 16;
// Vectors of the compiler: it makes a few instructions of what is done to all their elements.
using Units [[gnu::vector_size(blockSize * sizeof(char16_t))]] = std::uint16_t;
using Bytes [[gnu::vector_size(blockSize)]] = std::uint8_t;

/// Writes a block of units as a byte each and yields how many of them, from the front, may be written so.
std::ptrdiff_t copyPlain(const char16_t* from, char* to)
{
    static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");
    Units units{};
    std::memcpy(&units, from, sizeof units);
    const Bytes bytes = __builtin_convertvector(units, Bytes);
    std::memcpy(to, &bytes, sizeof bytes);
    const auto special = (units < 0x20) | (units >= 0x80) | (units == '"') | (units == '\\');
    const auto marks = __builtin_convertvector(special, Bytes);
    std::array<std::uint64_t, 2> words{};
    std::memcpy(words.data(), &marks, sizeof marks);
    return (words[0] != 0 ? std::countr_zero(words[0]) : 64 + std::countr_zero(words[1])) / 8;
}

/// Writes one unit, or the two of a character, that does not stand for itself.
char* writeSpecial(const char16_t*& at, const char16_t* end, char* to)
{
    const char16_t unit = *at++;
    if (unit < 0x80)
        return writeEscape(to, unit);
    if (!QChar::isSurrogate(unit))
        return writeCodePoint(to, unit);
    if (QChar::isHighSurrogate(unit) && at != end && QChar::isLowSurrogate(*at))
        return writeCodePoint(to, QChar::surrogateToUcs4(unit, *at++));
    return writeCodePoint(to, QChar::ReplacementCharacter);
}

/// Writes units as UTF-8 with what JSON wants escaped; yields the end. There is room for the longest form.
char* writeEscaped(const char16_t* at, const char16_t* end, char* to)
{
    while (at != end) {
        std::ptrdiff_t plain = blockSize;
        while (plain == blockSize && end - at >= blockSize) {
            plain = copyPlain(at, to);
            at += plain;
            to += plain;
        }
        if (plain == blockSize) {
            while (at != end && standsForItself(*at))
                *to++ = static_cast<char>(*at++);
        }
        // Writing systems other than Latin come in runs.
        while (at != end && !standsForItself(*at))
            to = writeSpecial(at, end, to);
    }
    return to;
}

} // namespace

JsonWriter::JsonWriter(Style style, Sink sink)
    : m_style(style)
    , m_sink(std::move(sink))
    , m_buffer(std::make_unique_for_overwrite<char[]>(bufferSize))
{}

void JsonWriter::put(char character)
{
    if (m_used == bufferSize)
        flush();
    m_buffer[m_used++] = character;
}

void JsonWriter::put(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (m_used == bufferSize)
            flush();
        const std::size_t count = std::min(bytes.size(), bufferSize - m_used);
        std::memcpy(m_buffer.get() + m_used, bytes.data(), count);
        m_used += count;
        bytes.remove_prefix(count);
    }
}

void JsonWriter::flush()
{
    m_sink({m_buffer.get(), m_used});
    m_used = 0;
}

void JsonWriter::lineBreak()
{
    if (m_style == Style::Pretty) {
        constexpr std::string_view blanks = "                ";
        put('\n');
        for (std::size_t wanted = m_levels.size() * 2; wanted > 0;) {
            const std::size_t count = std::min(wanted, blanks.size());
            put(blanks.substr(0, count));
            wanted -= count;
        }
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
        put(',');
    m_levels.back().empty = false;
    lineBreak();
}

void JsonWriter::open(char opening, char closing)
{
    beginValue();
    put(opening);
    m_levels.emplace_back().closing = closing;
}

void JsonWriter::close()
{
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (!level.empty)
        lineBreak();
    put(level.closing);
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
#ifndef QT_NO_DEBUG
    Level& level = m_levels.back();
    Q_ASSERT_X(m_style == Style::Compact || level.empty || level.lastKey < key, "JsonWriter::key",
               "the keys of an object are written in ascending order");
    level.lastKey = key;
#endif
    beginValue();
    put('"');
    putEscaped(key);
    put(m_style == Style::Pretty ? "\": " : "\":");
    m_afterKey = true;
}

void JsonWriter::string(QStringView text)
{
    beginValue();
    put('"');
    putEscaped(text);
    put('"');
}

void JsonWriter::utf8(std::string_view text)
{
    beginValue();
    put('"');
    putEscaped(text);
    put('"');
}

void JsonWriter::putEscaped(std::string_view text)
{
    const auto isEscaped = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
    };
    // Nearly all are plain, and counting looks at many bytes at a time.
    if (std::count_if(text.begin(), text.end(), isEscaped) == 0)
        return put(text);
    while (!text.empty()) {
        const auto special = std::find_if(text.begin(), text.end(), isEscaped);
        const auto plain = static_cast<std::size_t>(special - text.begin());
        put(text.substr(0, plain));
        if (special == text.end())
            break;
        std::array<char, longestForm> escape{};
        const char* const end = writeEscape(escape.data(), static_cast<unsigned char>(*special));
        put({escape.data(), static_cast<std::size_t>(end - escape.data())});
        text.remove_prefix(plain + 1);
    }
}

void JsonWriter::putEscaped(QStringView text)
{
    // In pieces whose longest form fits into the buffer, so that nothing below looks at its size.
    while (!text.isEmpty()) {
        qsizetype length = std::min(text.size(), pieceSize);
        // Never between the halves of a character.
        if (length < text.size() && text[length - 1].isHighSurrogate())
            --length;
        if (bufferSize - m_used < static_cast<std::size_t>(length) * longestForm)
            flush();
        char* const begin = m_buffer.get() + m_used;
        m_used += static_cast<std::size_t>(writeEscaped(text.utf16(), text.utf16() + length, begin) - begin);
        text = text.sliced(length);
    }
}

void JsonWriter::integer(qint64 value)
{
    beginValue();
    put(std::to_string(value));
}

void JsonWriter::number(double value)
{
    if (!std::isfinite(value))
        throw Error(QStringLiteral("A number that is not finite cannot be saved as JSON."));
    beginValue();
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    put({text.data(), static_cast<std::size_t>(result.ptr - text.data())});
}

void JsonWriter::boolean(bool value)
{
    beginValue();
    put(value ? "true" : "false");
}

void JsonWriter::null()
{
    beginValue();
    put("null");
}

void JsonWriter::base64(QByteArrayView bytes, QStringView prefix)
{
    beginValue();
    put('"');
    putEscaped(prefix);
    // In pieces that are a multiple of three bytes long, so that they can be put one behind the other.
    constexpr qsizetype pieceSize = 48 * 1024;
    for (qsizetype at = 0; at < bytes.size(); at += pieceSize) {
        const QByteArrayView piece = bytes.sliced(at, std::min(pieceSize, bytes.size() - at));
        const QByteArray text = QByteArray::fromRawData(piece.data(), piece.size()).toBase64();
        put({text.constData(), static_cast<std::size_t>(text.size())});
    }
    put('"');
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

void JsonWriter::finish()
{
    if (m_style == Style::Pretty)
        put('\n');
    flush();
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
