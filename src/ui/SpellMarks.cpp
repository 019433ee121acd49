#include "ui/SpellMarks.h"

#include "ui/SpelledWords.h"

#include <QAbstractTextDocumentLayout>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QSyntaxHighlighter>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>

namespace varnel {

namespace {

/// A text that is longer, in characters, was not typed by hand.
constexpr int longestText = 50'000;
/// Words that are remembered.
constexpr qsizetype mostKnown = 20'000;
constexpr qsizetype mostSuggestions = 5;

QStringList userLanguages()
{
    return spellingLanguages(QLocale::system().uiLanguages());
}

/// As dictionaries write it.
QString plain(QString word)
{
    return word.replace(u'\u2019', u'\'');
}

} // namespace

/// A word of a paragraph as dictionaries write it.
struct SpelledWord
{
    WordRange range;
    QString text;
};

namespace {

struct ParagraphWords : QTextBlockUserData
{
    std::vector<SpelledWord> words;
};

const std::vector<SpelledWord>& wordsOf(const QTextBlock& block)
{
    static const std::vector<SpelledWord> none;
    const auto* const data = static_cast<const ParagraphWords*>(block.userData());
    return data ? data->words : none;
}

} // namespace

/// Reads the paragraphs that change, and those after a fence that opens or closes.
class SpellHighlighter final : public QSyntaxHighlighter
{
public:
    SpellHighlighter(SpellMarks& marks, QTextDocument* document)
        : QSyntaxHighlighter(document)
        , m_marks(marks)
    {}

protected:
    void highlightBlock(const QString& text) override
    {
        auto words = std::make_unique<ParagraphWords>();
        int fence = previousBlockState() < 0 ? 0 : previousBlockState() - noFence;
        if (document()->characterCount() <= longestText)
            words->words = m_marks.read(text, fence);
        setCurrentBlockUserData(words.release());
        setCurrentBlockState(noFence + fence);
    }

private:
    // States below nothing mean that there is none yet.
    static constexpr int noFence = longestText + 1;

    SpellMarks& m_marks;
};

SpellMarks::SpellMarks(QQuickItem* parent)
    : QQuickPaintedItem(parent)
    , m_checker(systemSpellChecker(userLanguages()))
    , m_scripts(scriptsOf(userLanguages()))
{
    setAntialiasing(true);
    for (QTimer* const timer : {&m_askSoon, &m_moveEnds})
        timer->setSingleShot(true); // of no time: once what happens now is over
    connect(&m_askSoon, &QTimer::timeout, this, &SpellMarks::ask);
    connect(&m_moveEnds, &QTimer::timeout, this, [this] { m_textMoved = false; });
    connect(this, &SpellMarks::looksChanged, this, [this] { update(); });
    connect(this, &SpellMarks::checked, this, [this] { update(); });
}

SpellMarks::~SpellMarks()
{
    delete m_highlighter;
}

void SpellMarks::setDocument(QQuickTextDocument* document)
{
    if (document == m_document)
        return;
    m_document = document;
    delete m_highlighter;
    if (document && !m_scripts.empty()) {
        QTextDocument* const text = document->textDocument();
        m_highlighter = new SpellHighlighter(*this, text);
        // Of the highlighter's, so that it ends along with it.
        connect(text, &QTextDocument::contentsChange, m_highlighter, [this] { noteChange(); });
    }
    Q_EMIT documentChanged();
}

void SpellMarks::noteChange()
{
    // What is still looked up for a word that has changed is for nobody.
    if (m_choice.isRunning()) {
        m_choice.reset();
        m_word.clear();
    }
    m_isTyping = true;
    m_textMoved = true;
    m_moveEnds.start();
    update();
}

void SpellMarks::setCursorPosition(int position)
{
    if (position == m_cursor)
        return;
    m_cursor = position;
    // Where the cursor goes by itself nothing is being typed.
    if (!std::exchange(m_textMoved, false))
        m_isTyping = false;
    update();
    Q_EMIT cursorPositionChanged();
}

std::vector<SpelledWord> SpellMarks::read(const QString& paragraph, int& fence)
{
    std::vector<SpelledWord> words;
    for (const WordRange& range : wordsToSpell(paragraph, m_scripts, fence)) {
        words.push_back({range, plain(paragraph.mid(range.start, range.length))});
        if (!m_known.contains(words.back().text))
            m_asked.insert(words.back().text);
    }
    if (!m_asked.empty())
        m_askSoon.start();
    return words;
}

void SpellMarks::ask()
{
    if (!m_asked.empty() && !m_words.isRunning())
        m_words = followWords();
}

Task<void> SpellMarks::followWords()
{
    while (!m_asked.empty()) {
        std::set<QString> words = std::exchange(m_asked, {});
        QHash<QString, bool> answers;
        try {
            answers = co_await m_worker.run(
                [checker = m_checker, words = std::move(words)](const std::stop_token&) {
                    QHash<QString, bool> found;
                    for (const QString& word : words)
                        found.insert(word, checker->isRight(word));
                    return found;
                });
        } catch (const Cancelled&) {
            co_return;
        }
        // What is wrong stays marked, and what is to be ignored is no word of the text.
        if (m_known.size() > mostKnown)
            m_known.removeIf([](const auto& word) { return word.value(); });
        m_known.insert(answers);
        for (const QString& word : m_ignored)
            m_known.insert(word, true);
        Q_EMIT checked();
    }
}

bool SpellMarks::isMarked(const QTextBlock& block, const SpelledWord& word) const
{
    const int start = block.position() + word.range.start;
    const bool isTyped = m_isTyping && m_cursor >= start && m_cursor <= start + word.range.length;
    return !isTyped && !m_known.value(word.text, true);
}

QStringList SpellMarks::marked() const
{
    QStringList words;
    for (QTextBlock block = m_highlighter ? m_highlighter->document()->begin() : QTextBlock();
         block.isValid(); block = block.next()) {
        for (const SpelledWord& word : wordsOf(block)) {
            if (isMarked(block, word))
                words.append(word.text);
        }
    }
    return words;
}

void SpellMarks::choose(int position)
{
    m_isTyping = false;
    m_word.clear();
    m_suggestions.clear();
    const QTextBlock block = m_highlighter ? m_highlighter->document()->findBlock(position) : QTextBlock();
    for (const SpelledWord& word : wordsOf(block)) {
        const int start = block.position() + word.range.start;
        if (position >= start && position <= start + word.range.length && isMarked(block, word)) {
            m_word = word.text;
            m_wordStart = start;
        }
    }
    update();
    if (m_word.isEmpty())
        Q_EMIT chosen();
    else
        m_choice = followSuggestions(m_word);
}

Task<void> SpellMarks::followSuggestions(QString word)
{
    QStringList found;
    try {
        found = co_await m_worker.run(
            [checker = m_checker, word](const std::stop_token&) { return checker->suggestions(word); });
    } catch (const Cancelled&) {
        co_return;
    }
    if (m_word != word)
        co_return;
    m_suggestions = found.mid(0, mostSuggestions);
    Q_EMIT chosen();
}

void SpellMarks::addWord()
{
    if (m_word.isEmpty())
        return;
    m_addition = followAddition(m_word);
    ignoreWord();
}

Task<void> SpellMarks::followAddition(QString word)
{
    try {
        co_await m_worker.run([checker = m_checker, word](const std::stop_token&) {
            checker->add(word);
            return true;
        });
    } catch (const Cancelled&) {
        co_return;
    }
}

void SpellMarks::ignoreWord()
{
    if (m_word.isEmpty())
        return;
    m_ignored.insert(m_word);
    m_known.insert(m_word, true);
    Q_EMIT checked();
}

void SpellMarks::paint(QPainter* painter)
{
    if (!m_highlighter || m_highlighter->document()->characterCount() > longestText)
        return;
    const QTextDocument* const text = m_highlighter->document();
    painter->setPen(QPen(m_color, 1.2 * m_zoom));
    for (QTextBlock block = text->begin(); block.isValid(); block = block.next()) {
        const QRectF place = text->documentLayout()->blockBoundingRect(block).translated(m_origin);
        if (place.top() > height())
            break;
        if (place.bottom() >= 0)
            paintBlock(*painter, block, place.topLeft());
    }
}

/// A word that goes on in the next line has a wave in each.
void SpellMarks::paintBlock(QPainter& painter, const QTextBlock& block, const QPointF& corner) const
{
    const qreal step = 2 * m_zoom;
    for (const SpelledWord& word : wordsOf(block)) {
        if (!isMarked(block, word))
            continue;
        const int last = word.range.start + word.range.length;
        for (int start = word.range.start; start < last;) {
            const QTextLine line = block.layout()->lineForTextPosition(start);
            if (!line.isValid())
                break;
            const int end = std::min(last, line.textStart() + line.textLength());
            const qreal edges[] = {line.cursorToX(start), line.cursorToX(end)};
            const qreal top = corner.y() + line.y() + line.ascent() + 2 * m_zoom;
            const qreal to = corner.x() + std::max(edges[0], edges[1]);
            QPainterPath wave({corner.x() + std::min(edges[0], edges[1]), top});
            const qreal from = wave.currentPosition().x();
            const int count = qFloor((to - from) / step);
            for (int i = 1; i <= count; ++i)
                wave.lineTo(from + i * step, i % 2 == 1 ? top + step : top);
            painter.drawPath(wave);
            start = std::max(end, start + 1);
        }
    }
}

} // namespace varnel
