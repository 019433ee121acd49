#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"
#include "ui/PromptEdit.h"
#include "ui/WindowState.h"

#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <map>
#include <set>

namespace varnel {

/// What the composer and the line above it show, and when what is written may go.
class ComposerState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY canSendChanged)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY statusLineChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(bool asksCloud READ asksCloud NOTIFY asksCloudChanged)
    Q_PROPERTY(QString cloudName READ cloudName NOTIFY cloudNameChanged)
    Q_PROPERTY(double contextShare READ contextShare NOTIFY contextChanged)
    Q_PROPERTY(QString contextLabel READ contextLabel NOTIFY contextChanged)
    Q_PROPERTY(QString contextDetail READ contextDetail NOTIFY contextChanged)
    Q_PROPERTY(
        bool sendsWithControl READ sendsWithControl WRITE setSendsWithControl NOTIFY sendsWithControlChanged)

public:
    /// The model and the edit outlive the object.
    ComposerState(AppModel& app, PromptEdit& edit, const WindowState& state, QObject* parent = nullptr);
    static ComposerState* create(QQmlEngine* engine, QJSEngine*) { return provided<ComposerState>(engine); }

    /// What stands in the composer: the prompt that is being edited, else the draft.
    QString text() const;
    void setText(const QString& text);
    /// Whether there is something to send and nothing is being answered.
    bool canSend() const { return m_canSend; }
    /// Sends what stands in the composer. What is still being copied into the library goes with it; before
    /// the first turn to a provider it asks instead.
    Q_INVOKABLE void send();

    /// Whether the user is asked about sending to the provider of the selected conversation.
    bool asksCloud() const { return m_asksCloud; }
    /// The answers to that.
    Q_INVOKABLE void agreeToCloud();
    Q_INVOKABLE void refuseCloud();
    /// The name of the provider that answers the selected conversation; empty for Ollama.
    QString cloudName() const;

    /// The status as one line that can be shown, whatever a server put into it; or what the window itself had
    /// to say since.
    QString statusLine() const;
    /// Says something in the line of the status, until there is a new status or another conversation.
    void remark(const QString& text);
    /// What is worth knowing before the prompt is sent; empty for nothing.
    QString notice() const;
    /// How much of its context the conversation takes, from 0 upwards; an estimate.
    double contextShare() const { return m_app.contextUse().share(); }
    /// The same in a word or two, such as "≈ 54 %".
    QString contextLabel() const;
    /// The same in tokens.
    QString contextDetail() const;

    /// Where the cursor stood in the text of the selected conversation; its end if it was never there.
    Q_INVOKABLE int cursor() const;
    Q_INVOKABLE void rememberCursor(int position);
    /// Brings the last prompt of the selected conversation back to be edited, if nothing is written; whether
    /// there was one. One that failed is taken back, so that it is not there twice.
    Q_INVOKABLE bool editLastPrompt();

    /// Does something that sends the selected conversation, at once or, where a provider would be sent it for
    /// the first time, when the user has agreed; never if they refuse.
    void afterConsent(std::function<void()> action);

    /// Whether Enter alone is a new line, and with Control sends.
    bool sendsWithControl() const { return m_sendsWithControl; }
    void setSendsWithControl(bool control);
    /// Puts what is to be remembered into the state.
    void store(WindowState& state) const { state.sendsWithControl = m_sendsWithControl; }

Q_SIGNALS:
    void textChanged();
    void canSendChanged();
    void statusLineChanged();
    void noticeChanged();
    void asksCloudChanged();
    /// The user is asked because of something they did just now, and expects the question.
    void cloudAsked();
    void cloudNameChanged();
    void contextChanged();
    void sendsWithControlChanged();

private:
    void updateCanSend();
    void setAsksCloud(bool asks);
    void sendNow();
    void sendImported();

    AppModel& m_app;
    PromptEdit& m_edit;
    std::map<QUuid, int> m_cursors;
    bool m_canSend = false;
    bool m_asksCloud = false;
    bool m_sendsByItself = false;
    std::function<void()> m_afterConsent; // what the question is about
    bool m_sendsWithControl = false;
    QString m_remark;
    // The conversations whose prompt goes as soon as its attachments are there.
    std::set<QUuid> m_sendWhenImported;
};

} // namespace varnel
