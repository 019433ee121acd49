#include "markdown/WebAddress.h"

#include <QString>

#include <utility>

namespace varnel {

namespace {

bool isAsciiLetterOrDigit(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z') ||
           (character >= u'0' && character <= u'9');
}

/// What neither stands in an address nor inside a sentence's address: white space, quotes, angle brackets and
/// the punctuation of scripts that write without spaces.
bool endsAddress(QChar character)
{
    switch (character.unicode()) {
    case u'<':
    case u'>':
    case u'"':
    case u'`':
    case u'\\':
    case u'|':
        return true;
    default:
        return character <= u' ' || character == u'\x7f' || character.isSpace() ||
               (character > u'\x7f' && character.isPunct());
    }
}

/// The end of an address without what more likely belongs to the sentence around it.
qsizetype withoutTrailingPunctuation(QStringView text, qsizetype end, qsizetype unmatchedBrackets)
{
    while (end > 0) {
        const QChar last = text[end - 1];
        if (QStringView(u"?!.,:*_~'").contains(last)) {
            --end;
        } else if (last == u')' && unmatchedBrackets > 0) {
            --unmatchedBrackets;
            --end;
        } else if (last == u';') {
            qsizetype name = end - 1;
            while (name > 0 && isAsciiLetterOrDigit(text[name - 1]))
                --name;
            end = name > 0 && name < end - 1 && text[name - 1] == u'&' ? name - 1 : end - 1;
        } else {
            break;
        }
    }
    return end;
}

} // namespace

qsizetype webAddressLength(QStringView text)
{
    qsizetype begin = 0;
    for (const QStringView prefix :
         {QStringView(u"http://"), QStringView(u"https://"), QStringView(u"www.")}) {
        if (text.startsWith(prefix, Qt::CaseInsensitive))
            begin = prefix.size();
    }
    if (begin == 0 || begin == text.size())
        return 0;
    if (!isAsciiLetterOrDigit(text[begin]) && text[begin] != u'[' && text[begin].unicode() < 0x80)
        return 0;
    qsizetype opened = 0;
    qsizetype unmatched = 0;
    bool inBrackets = false;
    qsizetype end = begin;
    for (; end < text.size() && !endsAddress(text[end]); ++end) {
        if (text[end] == u'(')
            ++opened;
        else if (text[end] == u')' && --opened < 0)
            unmatched = qMax(unmatched, -opened);
        else if (text[end] == u'[')
            inBrackets = true;
        else if (text[end] == u']' && !std::exchange(inBrackets, false))
            break;
    }
    end = withoutTrailingPunctuation(text, end, unmatched);
    return end > begin ? end : 0;
}

QStringView mailAddressAround(QStringView text, qsizetype position, qsizetype earliest)
{
    const auto isNameCharacter = [](QChar character) {
        return isAsciiLetterOrDigit(character) || QStringView(u".-_+").contains(character);
    };
    qsizetype begin = position;
    while (begin > earliest && isNameCharacter(text[begin - 1]))
        --begin;
    qsizetype end = position + 1;
    while (end < text.size() && (isAsciiLetterOrDigit(text[end]) || QStringView(u".-_").contains(text[end])))
        ++end;
    while (end > position + 1 && text[end - 1] == u'.')
        --end;
    const QStringView host = text.sliced(position + 1, end - position - 1);
    if (begin == position || !host.contains(u'.') || !isAsciiLetterOrDigit(host.front()) ||
        !isAsciiLetterOrDigit(host.back()))
        return {};
    return text.sliced(begin, end - begin);
}

qsizetype angleLinkLength(QStringView text)
{
    qsizetype end = 1;
    while (end < text.size() && text[end] > u' ' && text[end] != u'<' && text[end] != u'>')
        ++end;
    if (end == 1 || end >= text.size() || text[end] != u'>')
        return 0;
    const QStringView target = text.sliced(1, end - 1);
    const qsizetype colon = target.first(qMin<qsizetype>(target.size(), 33)).indexOf(u':');
    if (colon >= 2 && target[0].unicode() < 0x80 && target[0].isLetter()) {
        for (const QChar character : target.first(colon)) {
            if (!isAsciiLetterOrDigit(character) && !QStringView(u"+-.").contains(character))
                return 0;
        }
        return end + 1;
    }
    const qsizetype at = target.indexOf(u'@');
    return at > 0 && mailAddressAround(target, at, 0) == target ? end + 1 : 0;
}

} // namespace varnel
