#include "ui/SpelledWords.h"

#include <QLocale>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cstdlib>

namespace varnel {

namespace {

bool isApostrophe(QChar character)
{
    return character == u'\'' || character == u'\u2019';
}

/// How many of one mark a fence begins with, negative for tildes; 0 if the paragraph is none.
int fenceOf(QStringView paragraph)
{
    constexpr int deepest = 3;
    constexpr int shortest = 3;
    qsizetype start = 0;
    while (start < paragraph.size() && start <= deepest && paragraph[start] == u' ')
        ++start;
    const QStringView line = paragraph.sliced(std::min(start, paragraph.size()));
    const QChar mark = line.isEmpty() ? QChar() : line.front();
    if (start > deepest || (mark != u'`' && mark != u'~'))
        return 0;
    const auto end = std::ranges::find_if(line, [mark](QChar character) { return character != mark; });
    const auto length = static_cast<int>(end - line.begin());
    // Marks that come again in their line are a span of code.
    if (length < shortest || (mark == u'`' && line.sliced(length).contains(mark)))
        return 0;
    return mark == u'`' ? length : -length;
}

bool closes(int open, int line)
{
    return (open > 0) == (line > 0) && std::abs(line) >= std::abs(open);
}

/// Whether a piece between two blanks is written for a machine: an address, a path, a name of code.
bool isTechnical(QStringView piece)
{
    return piece.contains(u"://") || piece.startsWith(u"www.") ||
           std::ranges::any_of(piece, [](QChar character) {
               return character == u'@' || character == u'/' || character == u'\\' || character == u'_' ||
                      character == u'`';
           });
}

bool isWord(QStringView word, const std::set<QChar::Script>& scripts)
{
    if (word.size() < 2)
        return false;
    const bool known = std::ranges::all_of(word, [&scripts](QChar character) {
        return isApostrophe(character) || character.isMark() ||
               (character.isLetter() && scripts.contains(character.script()));
    });
    // Capitals inside are names of code or of firms; capitals alone are short for something.
    return known && std::ranges::none_of(word.sliced(1), [](QChar character) { return character.isUpper(); });
}

void addWords(QStringView piece, qsizetype offset, const std::set<QChar::Script>& scripts,
              std::vector<WordRange>& words)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, piece.data(), piece.size());
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
        if (isWord(piece.sliced(start, end - start), scripts))
            words.push_back({static_cast<int>(offset + start), static_cast<int>(end - start)});
        start = end;
    }
}

} // namespace

std::vector<WordRange> wordsToSpell(const QString& paragraph, const std::set<QChar::Script>& scripts,
                                    int& fence)
{
    std::vector<WordRange> words;
    const int line = fenceOf(paragraph);
    if (fence != 0 || line != 0) {
        fence = fence == 0 ? line : line != 0 && closes(fence, line) ? 0 : fence;
        return words;
    }
    bool inCode = false;
    qsizetype start = 0;
    while (start < paragraph.size()) {
        qsizetype end = start;
        while (end < paragraph.size() && !paragraph[end].isSpace())
            ++end;
        const QStringView piece = QStringView(paragraph).sliced(start, end - start);
        if (!inCode && !isTechnical(piece))
            addWords(piece, start, scripts, words);
        if (piece.count(u'`') % 2 != 0)
            inCode = !inCode;
        start = end + 1;
    }
    return words;
}

QStringList spellingLanguages(const QStringList& uiLanguages)
{
    QStringList languages;
    for (QString language : uiLanguages) {
        language.replace(u'-', u'_');
        if (language == QLatin1String("C") || language.isEmpty())
            continue;
        languages.append(language);
        languages.append(language.section(u'_', 0, 0));
    }
    languages.removeDuplicates();
    return languages;
}

std::set<QChar::Script> scriptsOf(const QStringList& languages)
{
    std::set<QChar::Script> scripts;
    for (const QString& language : languages) {
        const QString name = QLocale(language).nativeLanguageName();
        const auto letter = std::ranges::find_if(name, [](QChar character) { return character.isLetter(); });
        if (letter != name.end())
            scripts.insert(letter->script());
    }
    return scripts;
}

} // namespace varnel
