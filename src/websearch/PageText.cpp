#include "websearch/PageText.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace varnel {

namespace {

constexpr qsizetype textLimit = 12'000;
constexpr qsizetype titleLimit = 300;
// Longer clusters than this are made to be long; they are cut after all.
constexpr qsizetype longestCluster = 64;

bool isWhiteSpace(QChar character)
{
    // The Mongolian vowel separator was white space once and still is to regular expressions.
    return character.isSpace() || character == QChar(0x180E);
}

constexpr char16_t longS = 0x017F;

/// Lower case as a case-insensitive regular expression sees it, to which a long s is an s. Other characters
/// that are no letters may change too, but never into a letter or a slash.
char16_t folded(char16_t unit)
{
    if (unit == longS)
        return u's';
    return unit >= u'A' ? static_cast<char16_t>(unit | 0x20U) : unit;
}

bool beginsWith(const char16_t* text, QStringView word)
{
    return std::all_of(word.begin(), word.end(),
                       [&text](QChar character) { return folded(*text++) == character.unicode(); });
}

/// Where a word that begins with "<" is found, in any case, at `from` or behind it; -1 if nowhere.
qsizetype findTag(QStringView text, QStringView word, qsizetype from)
{
    // The fast search for a character costs more to begin than it saves where tags are close together.
    constexpr qsizetype close = 16;
    const char16_t* const units = text.utf16();
    const char16_t second = word.at(1).unicode();
    const qsizetype end = text.size() - word.size() + 1;
    qsizetype opening = from;
    for (qsizetype at = from; at < end; ++at) {
        if (units[at] != u'<') {
            if (at - opening <= close)
                continue;
            at = text.indexOf(u'<', at);
            if (at < 0 || at >= end)
                return -1;
        }
        opening = at;
        if (folded(units[at + 1]) == second && beginsWith(units + at + 2, word.sliced(2)))
            return at;
    }
    return -1;
}

/// The text with `replacement` in place of everything from `opening` to the nearest `closing` behind it.
QString withoutElements(const QString& text, QStringView opening, QStringView closing,
                        const QString& replacement)
{
    QString rest;
    qsizetype copied = 0;
    qsizetype begin = findTag(text, opening, 0);
    while (begin >= 0) {
        const qsizetype end = findTag(text, closing, begin + opening.size());
        if (end < 0)
            break; // no later one is closed either
        rest += QStringView(text).sliced(copied, begin - copied);
        rest += replacement;
        copied = end + closing.size();
        begin = findTag(text, opening, copied);
    }
    if (copied == 0)
        return text;
    rest += QStringView(text).sliced(copied);
    return rest;
}

/// Where the tag that begins at `at` ends, behind its ">"; -1 if there is none.
qsizetype endOfTag(QStringView text, qsizetype at)
{
    if (at + 1 >= text.size() || text.at(at + 1) == u'>')
        return -1;
    const qsizetype end = text.indexOf(u'>', at + 1);
    return end < 0 ? -1 : end + 1;
}

/// Tags and white space as single blanks; ends early once there is enough for the limit.
QString plainText(QStringView html)
{
    constexpr qsizetype enough = 2 * textLimit + longestCluster;
    const qsizetype lastClosing = html.lastIndexOf(u'>');
    QString text;
    bool blankIsDue = false;
    qsizetype at = 0;
    while (at < html.size() && text.size() < enough) {
        const QChar character = html.at(at);
        if (character == u'<' && at < lastClosing) {
            if (const qsizetype end = endOfTag(html, at); end >= 0) {
                blankIsDue = true;
                at = end;
                continue;
            }
        }
        ++at;
        if (isWhiteSpace(character)) {
            blankIsDue = true;
            continue;
        }
        if (blankIsDue && !text.isEmpty())
            text += u' ';
        blankIsDue = false;
        text += character;
    }
    return text;
}

QString titleOf(const QString& html)
{
    const QStringView opening = u"<title";
    qsizetype at = findTag(html, opening, 0);
    while (at >= 0) {
        const qsizetype next = at + opening.size();
        if (next < html.size() && (html.at(next) == u'>' || html.at(next) == u'/' || html.at(next).isSpace()))
            break;
        at = findTag(html, opening, next);
    }
    if (at < 0)
        return {};
    const qsizetype begin = html.indexOf(u'>', at) + 1;
    const qsizetype end = begin > 0 ? findTag(html, u"</title", begin) : -1;
    if (end < 0)
        return {};
    return firstCharacters(withSingleBlanks(QStringView(html).sliced(begin, end - begin)), titleLimit);
}

} // namespace

QString withSingleBlanks(QStringView text)
{
    QString line;
    line.reserve(text.size());
    bool blankIsDue = false;
    for (const QChar character : text) {
        if (isWhiteSpace(character)) {
            blankIsDue = true;
            continue;
        }
        if (blankIsDue && !line.isEmpty())
            line += u' ';
        blankIsDue = false;
        line += character;
    }
    return line;
}

QString firstCharacters(const QString& text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    qsizetype end = 0;
    for (qsizetype characters = 0; characters < limit && end < text.size(); ++characters)
        end += text.at(end).isHighSurrogate() && end + 1 < text.size() && text.at(end + 1).isLowSurrogate()
                   ? 2
                   : 1;
    if (end == text.size())
        return text;
    const qsizetype windowBegin = std::max<qsizetype>(0, end - longestCluster);
    const QString window = text.sliced(windowBegin, std::min(text.size(), end + 2) - windowBegin);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, window);
    finder.setPosition(end - windowBegin);
    if (!finder.isAtBoundary()) {
        const qsizetype boundary = finder.toPreviousBoundary();
        if (boundary > 0)
            end = windowBegin + boundary;
    }
    return text.first(end);
}

PageText reducePage(const QString& html)
{
    QString body = withoutElements(html, u"<head", u"</head>", QString());
    body = withoutElements(body, u"<script", u"</script>", QStringLiteral(" "));
    body = withoutElements(body, u"<style", u"</style>", QStringLiteral(" "));
    return {.title = titleOf(html), .text = firstCharacters(plainText(body), textLimit)};
}

} // namespace varnel
