#include "websearch/KnownAddresses.h"

#include <algorithm>

namespace varnel {

namespace {

/// How much of an address without a scheme is its host, port included.
qsizetype hostLength(const QString& address)
{
    const auto isEnd = [](QChar character) { return character == u'/' || character == u'?'; };
    return std::find_if(address.cbegin(), address.cend(), isEnd) - address.cbegin();
}

bool isBlank(QChar character)
{
    return character.isSpace();
}

/// What has to be in the text: the address without scheme, fragment and last slash, its host in lower case.
QString essence(const QString& url)
{
    QString text = url;
    const qsizetype fragment = text.indexOf(u'#');
    if (fragment >= 0)
        text.truncate(fragment);
    const qsizetype scheme = text.indexOf(QLatin1String("://"));
    if (scheme >= 0)
        text.remove(0, scheme + 3);
    if (text.endsWith(u'/'))
        text.chop(1);
    const qsizetype host = hostLength(text);
    return text.left(host).toLower() + text.mid(host);
}

bool continuesHost(QChar character)
{
    return character.isLetterOrNumber() || character == u'-' || character == u'.' || character == u'_' ||
           character == u'@';
}

/// Whether an address that ends at `end` goes on there: after punctuation only if more of it follows.
bool goesOn(const QString& text, qsizetype end)
{
    static constexpr QStringView punctuation = u"/.,;:!?'*_~)";
    while (end < text.size() && punctuation.contains(text.at(end)))
        ++end;
    return end < text.size() && !text.at(end).isSpace() &&
           !QStringView(u"#\"<>()[]{}|\\^`“”‘’„«»…").contains(text.at(end)) &&
           text.at(end).unicode() < 0x3000; // full-width punctuation and scripts written without blanks
}

bool holds(const QString& text, const QString& address)
{
    const qsizetype host = hostLength(address);
    qsizetype at = text.indexOf(address, 0, Qt::CaseInsensitive);
    while (at >= 0) {
        const bool sameCase =
            QStringView(text).sliced(at + host, address.size() - host) == QStringView(address).sliced(host);
        if (sameCase && (at == 0 || !continuesHost(text.at(at - 1))) && !goesOn(text, at + address.size()))
            return true;
        at = text.indexOf(address, at + 1, Qt::CaseInsensitive);
    }
    return false;
}

} // namespace

bool KnownAddresses::contains(const QString& url) const
{
    // A text ends every address at a blank: what goes on behind one is a sentence, and may be the user's.
    const QString trimmed = url.trimmed();
    if (std::any_of(trimmed.cbegin(), trimmed.cend(), isBlank))
        return false;
    const QString address = essence(trimmed);
    return !address.isEmpty() && std::any_of(m_texts.begin(), m_texts.end(), [&address](const QString& text) {
        return holds(text, address);
    });
}

} // namespace varnel
