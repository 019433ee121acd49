#include "base/Text.h"

#include <simdjson.h>

namespace varnel {

QString wellFormed(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        if (!unit.isSurrogate())
            continue;
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

bool isUtf8(std::string_view bytes)
{
    return bytes.empty() || simdjson::validate_utf8(bytes.data(), bytes.size());
}

QByteArrayView withoutCutCharacter(QByteArrayView text)
{
    qsizetype length = text.size();
    for (int back = 0; back < 3 && length > 0 && (static_cast<uchar>(text[length - 1]) & 0xC0U) == 0x80;
         ++back)
        --length;
    if (length > 0 && static_cast<uchar>(text[length - 1]) >= 0xC0)
        --length;
    else
        length = text.size();
    return text.first(length);
}

} // namespace varnel
