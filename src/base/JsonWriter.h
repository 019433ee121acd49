#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QStringView>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace varnel {

/// Writes a JSON text piece by piece into a sink, so that a big document never exists twice in memory.
///
/// What it writes always loads again: a number that is not finite is refused with an Error, a lone surrogate
/// is written as U+FFFD. In the pretty style, used for files, the caller gives the keys of each object in
/// ascending order of their bytes; this is asserted.
class JsonWriter
{
public:
    enum class Style {
        Pretty,  ///< a key a line, two blanks a level, for files that people open
        Compact, ///< no white space, for request bodies
    };
    /// Takes the next piece of the text; it may throw to end the writing.
    using Sink = std::function<void(std::string_view)>;

    JsonWriter(Style style, Sink sink);

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(std::string_view key);

    void string(QStringView text);
    /// A string given in UTF-8, which it has to be; for texts that the program makes itself.
    void utf8(std::string_view text);
    void integer(qint64 value);
    void number(double value);
    void boolean(bool value);
    void null();
    /// A string that holds the bytes in standard Base64 without line breaks (RFC 4648), behind a prefix such
    /// as that of a data URL.
    void base64(QByteArrayView bytes, QStringView prefix = {});
    /// A value of Qt's JSON types, whatever it holds.
    void value(const QJsonValue& value);

    /// Hands what is still buffered to the sink; to be called once, at the end.
    void finish();

private:
    struct Level
    {
        char closing = 0;
        bool empty = true;
#ifndef QT_NO_DEBUG
        std::string lastKey;
#endif
    };

    void beginValue();
    void open(char opening, char closing);
    void close();
    void lineBreak();
    void put(char character);
    void put(std::string_view bytes);
    void putEscaped(QStringView text);
    void putEscaped(std::string_view text);
    void flush();

    Style m_style;
    Sink m_sink;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_used = 0;
    std::vector<Level> m_levels;
    bool m_afterKey = false;
};

/// Runs `write` with a compact writer and returns the whole text; for request bodies.
/// @param expectedSize about how many bytes it will be, so that a big text is not moved while it grows.
QByteArray compactJson(const std::function<void(JsonWriter&)>& write, qsizetype expectedSize = 0);

} // namespace varnel
