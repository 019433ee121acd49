#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "ui/SpellChecker.h"

#include <QChar>
#include <QColor>
#include <QHash>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QQuickTextDocument>
#include <QSet>
#include <QStringList>
#include <QTextBlock>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <set>
#include <vector>

namespace varnel {

class SpellHighlighter;
struct SpelledWord;

/// Draws a wave below each word of a text that no dictionary of the desktop has; the text item itself cannot.
/// It lies over what is seen of the text and covers nothing. The words are looked up on another thread; until
/// it is known, a word counts as right. The word that is being typed is left alone.
class SpellMarks : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument* document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(int cursorPosition READ cursorPosition WRITE setCursorPosition NOTIFY cursorPositionChanged)
    Q_PROPERTY(QPointF origin MEMBER m_origin NOTIFY looksChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY looksChanged)
    Q_PROPERTY(double zoom MEMBER m_zoom NOTIFY looksChanged)
    Q_PROPERTY(QString word READ word NOTIFY chosen)
    Q_PROPERTY(int wordStart READ wordStart NOTIFY chosen)
    Q_PROPERTY(QStringList suggestions READ suggestions NOTIFY chosen)

public:
    explicit SpellMarks(QQuickItem* parent = nullptr);
    SpellMarks(const SpellMarks&) = delete;
    SpellMarks& operator=(const SpellMarks&) = delete;
    SpellMarks(SpellMarks&&) = delete;
    SpellMarks& operator=(SpellMarks&&) = delete;
    ~SpellMarks() override;

    QQuickTextDocument* document() const { return m_document; }
    /// The text that is looked at; it outlives the item or goes along with it.
    void setDocument(QQuickTextDocument* document);
    int cursorPosition() const { return m_cursor; }
    void setCursorPosition(int position);

    /// Looks at the word at a position of the text. chosen() comes when it is known what may have been meant.
    Q_INVOKABLE void choose(int position);
    /// The word that was chosen if it is wrong, else an empty text; where it begins; what to write instead.
    const QString& word() const { return m_word; }
    int wordStart() const { return m_wordStart; }
    const QStringList& suggestions() const { return m_suggestions; }
    /// From now on the chosen word is right: for good, or until the program ends.
    Q_INVOKABLE void addWord();
    Q_INVOKABLE void ignoreWord();

    /// The words that are marked, in the order of the text.
    QStringList marked() const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void documentChanged();
    void cursorPositionChanged();
    void looksChanged();
    void chosen();
    /// It is known of more words whether they are right.
    void checked();

private:
    friend class SpellHighlighter;

    /// Notes the words of a paragraph and asks for those that are not known.
    std::vector<SpelledWord> read(const QString& paragraph, int& fence);
    void noteChange();
    bool isMarked(const QTextBlock& block, const SpelledWord& word) const;
    void ask();
    Task<void> followWords();
    Task<void> followSuggestions(QString word);
    Task<void> followAddition(QString word);
    void paintBlock(QPainter& painter, const QTextBlock& block, const QPointF& corner) const;

    std::shared_ptr<SpellChecker> m_checker;
    std::set<QChar::Script> m_scripts;
    QQuickTextDocument* m_document = nullptr;
    QPointer<SpellHighlighter> m_highlighter; ///< goes with its document at the latest
    QHash<QString, bool> m_known;             ///< whether a word is right
    QSet<QString> m_ignored;
    QTimer m_askSoon;
    QTimer m_moveEnds;
    std::set<QString> m_asked;
    int m_cursor = 0;
    bool m_isTyping = false;
    bool m_textMoved = false; ///< the cursor is about to follow a change of the text
    QPointF m_origin;
    QColor m_color = Qt::red;
    double m_zoom = 1;
    QString m_word;
    int m_wordStart = 0;
    QStringList m_suggestions;
    Worker m_worker;
    // Last, so that they are gone before anything they use.
    Task<void> m_words;
    Task<void> m_choice;
    Task<void> m_addition;
};

} // namespace varnel
