#pragma once

#include <QByteArrayView>
#include <QString>

#include <string_view>

namespace varnel {

/// The text with every lone surrogate replaced by U+FFFD. Text that enters the program from outside as UTF-16
/// goes through here, so that whatever is kept can be written as UTF-8 and read back the same.
QString wellFormed(QString text);

/// The text that UTF-8 stands for. Unlike Qt's conversion it keeps a U+FEFF at the beginning: behind the
/// beginning of a file that is a character like another.
QString textOf(std::string_view utf8);

/// Whether bytes are valid UTF-8 (RFC 3629); none are.
bool isUtf8(std::string_view bytes);
inline bool isUtf8(QByteArrayView bytes)
{
    return isUtf8(std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())));
}

/// A text of UTF-8 that was cut at its end, without the bytes of a character that was cut in two.
QByteArrayView withoutCutCharacter(QByteArrayView text);

} // namespace varnel
