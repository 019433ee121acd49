#include "markdown/LinkTarget.h"

#include <QUrl>

#include <algorithm>

namespace varnel {

namespace {

/// No address that anybody follows is longer, in UTF-16 units.
constexpr qsizetype longestAddress = 2048;

bool isInvisible(char32_t code)
{
    switch (QChar::category(code)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    case QChar::Separator_Space:
        return code != U' ';
    case QChar::Mark_NonSpacing:
        // Variation selectors and the joiner of graphemes combine with nothing that is seen.
        return code == 0x34f || (code >= 0xfe00 && code <= 0xfe0f) || (code >= 0xe0100 && code <= 0xe01ef) ||
               (code >= 0x180b && code <= 0x180f);
    default:
        // Letters without a shape: fillers of Hangul, and an empty pattern of Braille.
        return code == 0x115f || code == 0x1160 || code == 0x3164 || code == 0xffa0 || code == 0x2800;
    }
}

} // namespace

bool isOpenableLink(const QString& destination)
{
    if (destination.size() > longestAddress)
        return false;
    const auto isForbidden = [](QChar character) {
        return character <= u' ' || character == u'\x7f' || character == u'\\' || character.isSpace();
    };
    if (std::ranges::any_of(destination, isForbidden))
        return false;
    const QUrl url(destination, QUrl::TolerantMode);
    if (!url.isValid())
        return false;
    if (url.scheme() == QLatin1String("mailto"))
        return !url.path().isEmpty();
    return (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")) &&
           !url.host().isEmpty();
}

QString withVisibleControls(const QString& text)
{
    QString output;
    output.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        char32_t code = text[at].unicode();
        if (text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate())
            code = QChar::surrogateToUcs4(text[at], text[at + 1]);
        at += QChar::requiresSurrogates(code) ? 1 : 0;
        if (isInvisible(code))
            output += QStringLiteral("<U+%1>").arg(QString::number(code, 16).toUpper(), 4, u'0');
        else
            output += QString::fromUcs4(&code, 1);
    }
    return output;
}

} // namespace varnel
