#pragma once

#include "base/Error.h"

#include <QString>

#include <simdjson.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace varnel {

class JsonObject;

/// A value inside a parsed document. Valid as long as the JsonParser that read it has read nothing else.
/// Every accessor throws DecodeError when the value is of another kind.
class JsonValue
{
public:
    explicit JsonValue(simdjson::dom::element element) noexcept
        : m_element(element)
    {}

    bool isNull() const noexcept { return m_element.is_null(); }
    bool isObject() const noexcept { return m_element.is_object(); }
    bool isArray() const noexcept { return m_element.is_array(); }
    bool isString() const noexcept { return m_element.is_string(); }
    bool isTrue() const noexcept { return m_element.is_bool() && m_element.get_bool().value_unsafe(); }
    bool boolean() const;
    /// A whole number; 8192.0 counts as one.
    qint64 integer() const;
    double number() const;
    QString string() const;
    /// The UTF-8 bytes of a string.
    std::string_view utf8() const;
    JsonObject object() const;

    /// The elements of an array, each read by `decode`; an error names the index.
    template <typename Decode>
    auto list(Decode decode) const
    {
        using Item = std::invoke_result_t<Decode, JsonValue>;
        const simdjson::dom::array elements = array();
        std::vector<Item> items;
        items.reserve(elements.size());
        for (const simdjson::dom::element element : elements) {
            try {
                items.push_back(std::invoke(decode, JsonValue(element)));
            } catch (const DecodeError& error) {
                throw error.within(QStringLiteral("[%1]").arg(items.size()));
            }
        }
        return items;
    }

    /// The value as compact JSON text.
    QByteArray text() const;

private:
    simdjson::dom::array array() const;
    [[noreturn]] void fail(const char* expected) const;

    simdjson::dom::element m_element;
};

/// An object inside a parsed document. A key that is null counts as absent; unknown keys are nobody's
/// business.
class JsonObject
{
public:
    explicit JsonObject(simdjson::dom::object object) noexcept
        : m_object(object)
    {}

    std::optional<JsonValue> find(std::string_view key) const;

    /// The value of a key that must be there, read by `decode`; an error names the key.
    template <typename Decode>
    auto required(std::string_view key, Decode decode) const
    {
        const std::optional<JsonValue> value = find(key);
        if (!value)
            throw missing(key);
        return read(key, *value, decode);
    }

    /// The value of a key that may be absent, read by `decode`; an error names the key.
    template <typename Decode>
    auto optional(std::string_view key, Decode decode) const
        -> std::optional<std::invoke_result_t<Decode, JsonValue>>
    {
        const std::optional<JsonValue> value = find(key);
        if (!value)
            return std::nullopt;
        return read(key, *value, decode);
    }

private:
    template <typename Decode>
    static auto read(std::string_view key, JsonValue value, Decode& decode)
    {
        try {
            return std::invoke(decode, value);
        } catch (const DecodeError& error) {
            throw error.within(QString::fromUtf8(key.data(), qsizetype(key.size())));
        }
    }
    DecodeError missing(std::string_view key) const;

    simdjson::dom::object m_object;
};

/// For required() and optional(): an array whose elements `decode` reads.
template <typename Decode>
auto listOf(Decode decode)
{
    return [decode](JsonValue value) { return value.list(decode); };
}

/// Parses JSON texts strictly (RFC 8259, UTF-8 only), one at a time, reusing its memory.
///
/// The only leniency: an escaped lone surrogate, which strict readers refuse and careless writers produce
/// when they cut a text in two, is read as U+FFFD.
class JsonParser
{
public:
    JsonParser();
    JsonParser(JsonParser&&) noexcept;
    JsonParser& operator=(JsonParser&&) noexcept;
    JsonParser(const JsonParser&) = delete;
    JsonParser& operator=(const JsonParser&) = delete;
    ~JsonParser();

    /// How many bytes behind a text must be readable for parsePadded().
    static constexpr qsizetype padding = simdjson::SIMDJSON_PADDING;

    /// Parses a text; the value is valid until the next call. Throws DecodeError with line and column.
    JsonValue parse(std::string_view text);
    /// The same without copying the text: `padding` bytes behind it, of any content, must be readable.
    JsonValue parsePadded(std::string_view text);
    /// The same without looking for what is wrong: nothing if the text is not valid.
    std::optional<JsonValue> tryPadded(std::string_view text);

private:
    std::optional<JsonValue> parseRepaired(std::string_view text);

    std::unique_ptr<simdjson::dom::parser> m_parser;
};

} // namespace varnel
