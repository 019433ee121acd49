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

QString textOf(std::string_view utf8)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    qsizetype marks = 0;
    for (; utf8.starts_with(mark); ++marks)
        utf8.remove_prefix(mark.size());
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (marks > 0)
        text.prepend(QString(marks, QChar(QChar::ByteOrderMark)));
    return text;
}

bool isUtf8(std::string_view bytes)
{
    return bytes.empty() || simdjson::validate_utf8(bytes.data(), bytes.size());
}

QByteArrayView withoutCutCharacter(QByteArrayView text)
{
    qsizetype start = text.size();
    while (start > 0 && text.size() - start < 3 && (static_cast<uchar>(text[start - 1]) & 0xC0U) == 0x80U)
        --start;
    if (start == 0)
        return text;
    const auto lead = static_cast<uchar>(text[--start]);
    const qsizetype length = lead >= 0xF0U ? 4 : lead >= 0xE0U ? 3 : lead >= 0xC0U ? 2 : 1;
    return text.size() - start < length ? text.first(start) : text;
}

} // namespace varnel
