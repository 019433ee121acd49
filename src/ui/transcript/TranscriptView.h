#pragma once

#include "ui/transcript/TranscriptFinder.h"
#include "ui/transcript/TranscriptModel.h"
#include "ui/transcript/TranscriptPainter.h"
#include "ui/transcript/TranscriptScrollBar.h"
#include "ui/transcript/TranscriptStyle.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <set>

namespace varnel {

/// Shows a conversation: lays out and draws what is near the view, follows a reply while the reader is at its
/// end, and handles wheel, touch, keyboard, selection and links itself.
///
/// It never opens anything: links are reported by linkActivated(), and nothing it draws can name a file or an
/// address to be loaded.
class TranscriptView : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(varnel::TranscriptModel* model READ model WRITE setModel NOTIFY modelChanged)
    Q_PROPERTY(varnel::TranscriptStyle* style READ style WRITE setStyle NOTIFY styleChanged)
    Q_PROPERTY(bool following READ isFollowing NOTIFY followingChanged)
    Q_PROPERTY(int unseenBelow READ unseenBelow NOTIFY unseenBelowChanged)
    Q_PROPERTY(QString hoveredLink READ hoveredLink NOTIFY hoveredChanged)
    Q_PROPERTY(QString hoveredName READ hoveredName NOTIFY hoveredChanged)
    Q_PROPERTY(QRectF hoveredRect READ hoveredRect NOTIFY hoveredChanged)
    Q_PROPERTY(QString findText READ findText WRITE setFindText NOTIFY findChanged)
    Q_PROPERTY(int findCount READ findCount NOTIFY findChanged)
    Q_PROPERTY(int findNumber READ findNumber NOTIFY findChanged)
    Q_PROPERTY(bool finding READ isFinding NOTIFY findChanged)
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY selectionChanged)

public:
    explicit TranscriptView(QQuickItem* parent = nullptr);
    ~TranscriptView() override;

    /// The model and the style are not owned and may go before the view; null for none.
    TranscriptModel* model() const { return m_model; }
    void setModel(TranscriptModel* model);
    TranscriptStyle* style() const { return m_style; }
    void setStyle(TranscriptStyle* style);

    bool isFollowing() const { return m_position->isFollowing(); }
    /// How many messages came, or went on, below the view since it was let go of the end.
    int unseenBelow() const { return m_unseenBelow; }
    /// The real target of the link under the pointer or with the focus, empty for none.
    QString hoveredLink() const;
    /// What the button under the pointer does, empty for none; and where it is, for a hint beside it.
    QString hoveredName() const;
    QRectF hoveredRect() const;
    bool hasSelection() const { return !m_selection.isEmpty(); }
    QString selectedPlainText();

    /// Goes to the end and follows it: "Jump to latest", and whenever a prompt is sent.
    Q_INVOKABLE void jumpToLatest();
    /// Puts the selected text on the clipboard, as text and as HTML. False without a selection.
    Q_INVOKABLE bool copySelection();
    Q_INVOKABLE void clearSelection();
    /// Brings a message into view, its beginning at the top.
    Q_INVOKABLE void showMessage(const QString& id);

    /// What is looked for in the conversation and marked wherever it stands; empty for nothing. The first
    /// place from the view on is shown.
    QString findText() const;
    void setFindText(const QString& text);
    /// How often it was found so far, which of them is shown, from 1, and whether the search goes on.
    int findCount() const;
    int findNumber() const;
    bool isFinding() const;
    Q_INVOKABLE void findNext();
    Q_INVOKABLE void findPrevious();
    /// Brings a message into view and looks for a text from there on.
    Q_INVOKABLE void showMatch(const QString& id, const QString& text);

    /// The rows in view; brings everything up to date first.
    std::vector<PlacedRow> rowsInView();
    TranscriptDocument& document() { return *m_document; }
    const TranscriptAttention& attention() const { return m_attention; }
    TranscriptScrollBar& scrollBar() { return *m_scrollBar; }
    /// What pressing a target does.
    void activate(TargetRef target);
    /// All targets of the rows in view, in reading order.
    std::vector<TargetRef> targetsInView();
    /// A target, with its place in its row; none if it is gone.
    std::optional<RowTarget> targetAt(TargetRef ref) const;
    /// The first rectangle of a target, in the view; empty if it is gone.
    QRectF placeOf(TargetRef ref) const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void modelChanged();
    void styleChanged();
    void followingChanged();
    void unseenBelowChanged();
    void hoveredChanged();
    void selectionChanged();
    void findChanged();
    /// A link to http, https or mailto was pressed.
    void linkActivated(const QUrl& url);
    /// A message's text went to the clipboard.
    void messageCopied(const QString& id);
    /// @param action "regenerate", "edit", "writeFiles", "handOff", "save" or "more".
    /// @param place where what asked for it is, in the view.
    void actionRequested(const QString& id, const QString& action, const QRectF& place);
    void writeRequested(const QString& id, const QString& path);
    void tryAgainRequested(const QString& id);
    void logsRequested();
    /// A failed turn is to be tried again with a temperature of 1, or without the web tools.
    void temperatureResetRequested();
    void searchOffRequested();
    /// A reply is complete; said once, for reading aloud.
    void replyFinished(const QString& id, const QString& text);
    void focusedTargetChanged();
    /// What is in view, and where, changed.
    void contentMoved();

protected:
    void updatePolish() override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void touchEvent(QTouchEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    // TranscriptView.cpp
    void connectModel();
    void rebuild();
    void applyGeometry();
    void messageChanged(int index);
    void messageFinished(int index);
    void scheduleRefresh();
    void bringUpToDate();
    void afterMove(bool isWhole);
    void repaintFrom(RowRef row);
    void repaintAll();
    void measureInIdle();
    void updateUnseen();
    void tick();
    qreal ratio() const;

    // TranscriptViewPointer.cpp
    struct Hit
    {
        PlacedRow row;
        QPointF point; ///< from the row's top
        std::optional<TargetRef> target;
    };
    std::optional<Hit> hitAt(QPointF point);
    TextPosition textAt(QPointF point);
    void hover(QPointF point);
    void selectTo(QPointF point);
    void scrollWhileSelecting();
    void scrollPixels(qreal distance);
    bool scrollSideways(QPointF point, qreal distance);
    void glide();
    void selectionMoved();

    // TranscriptViewFind.cpp
    void startFinding(const QString& text, int from);
    void continueFinding();
    void stepFound(bool forward);
    void revealFound();

    // TranscriptViewKeys.cpp
    bool scrollByKey(const QKeyEvent& event);
    bool moveFocus(bool forward);
    void setFocusedTarget(std::optional<TargetRef> target);
    bool selectWholeMessage();
    void toggleThinking(RowRef row);
    void toggleWrap(RowRef row);
    void copyCode(RowRef row);
    void copyMessage(RowRef row);
    void requestAction(TargetRef ref, const RowTarget& target);
    void showCopied(RowRef row);

    QPointer<TranscriptModel> m_model;
    QPointer<TranscriptStyle> m_style;
    std::unique_ptr<TranscriptModel> m_noModel; ///< stand-ins while none is set
    std::unique_ptr<TranscriptStyle> m_ownStyle;
    std::unique_ptr<TranscriptDocument> m_document;
    std::unique_ptr<ScrollPosition> m_position;
    std::unique_ptr<TranscriptFinder> m_finder;
    bool m_seeksFirst = false; ///< the first place found is to be shown
    int m_showsFound = -1;     ///< only if it is in this message; -1 for any
    QTimer m_findTimer;
    TranscriptScrollBar* m_scrollBar; ///< owned as a child item
    TranscriptSelection m_selection;
    TranscriptAttention m_attention;

    bool m_wholeDirty = true; ///< more than news has to be drawn
    std::set<int> m_changed;  ///< messages whose news are not laid out yet
    QElapsedTimer m_sinceRefresh;
    QTimer m_refreshTimer;
    QTimer m_idleTimer;
    QTimer m_tickTimer;
    QTimer m_copiedTimer;
    bool m_wasFollowing = true;
    std::set<int> m_news; ///< messages that came or grew since the view let go of the end
    int m_unseenBelow = 0;

    bool m_showsFocus = false; ///< the focus came by the keyboard
    std::optional<TargetRef> m_pressed;
    bool m_selecting = false;
    QPointF m_pressPoint;
    QPointF m_pointer;
    qint64 m_doubleClickTime = -1000000;
    QTimer m_selectScrollTimer;
    qreal m_wheelRest = 0;
    QPointF m_touchPoint;
    qint64 m_touchTime = 0;
    qreal m_velocity = 0; ///< logical pixels a millisecond
    QTimer m_glideTimer;
};

} // namespace varnel
