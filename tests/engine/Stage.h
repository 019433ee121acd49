#pragma once

#include "engine/AppModel.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"
#include "support/ModelProfile.h"

#include <QTest>

namespace varnel::test {

using Exchange = std::shared_ptr<practice::HttpExchange>;

inline QByteArray line(const QByteArray& content)
{
    return "{\"message\":{\"content\":\"" + content + "\"}}\n";
}

inline QByteArray thinkingLine(const QByteArray& thinking)
{
    return "{\"message\":{\"thinking\":\"" + thinking + "\"}}\n";
}

inline const QByteArray doneLine = "{\"done\":true}\n";

/// What a model says of itself while things happen: each change of the status and of the link, in order.
class Trace
{
public:
    void follow(const AppModel& model)
    {
        QObject::connect(&model, &AppState::statusMessageChanged, &model,
                         [this, &model] { entries.push_back(model.statusMessage()); });
        QObject::connect(&model, &AppState::linkStateChanged, &model, [this, &model] {
            static const QStringList names{QStringLiteral("unknown"), QStringLiteral("connecting"),
                                           QStringLiteral("connected"), QStringLiteral("offline")};
            entries.push_back(QLatin1Char('<') + names.at(static_cast<int>(model.linkState())) +
                              QLatin1Char('>'));
        });
    }

    QStringList entries;
};

/// Whether the lines are the expected ones. An expected line that ends in "*" stands for what begins like it;
/// "SERVER" stands for `server`.
inline bool matches(const QStringList& lines, QStringList expected, const QString& server)
{
    expected.replaceInStrings(QStringLiteral("SERVER"), server);
    const bool same =
        std::equal(lines.begin(), lines.end(), expected.begin(), expected.end(),
                   [](const QString& text, const QString& pattern) {
                       return pattern.endsWith(u'*') ? text.startsWith(pattern.chopped(1)) : text == pattern;
                   });
    if (!same)
        qWarning("found    %s\nexpected %s", qPrintable(lines.join(QStringLiteral(" | "))),
                 qPrintable(expected.join(QStringLiteral(" | "))));
    return same;
}

/// A model on a temporary profile whose server is in the test's hands: what is not known otherwise waits in
/// `chats` for its answer.
class Stage
{
public:
    Stage()
        : server([this](const Exchange& exchange) { answer(exchange); })
    {
        server.listen();
        profile.connectTo(server.url());
        start();
    }
    /// Begins the program, once more if it ran.
    void start()
    {
        model.reset();
        const AppModel::Services basic = profile.services();
        model = std::make_unique<AppModel>(AppModel::Services{.preferences = basic.preferences,
                                                              .clock = *time,
                                                              .secrets = basic.secrets,
                                                              .log = basic.log,
                                                              .environment = basic.environment,
                                                              .location = basic.location,
                                                              .programs = basic.programs,
                                                              .images = nullptr,
                                                              .pages = pages,
                                                              .stallTime = stallTime});
        trace.entries.clear();
        trace.follow(*model);
    }

    const ChatSession& session() const { return *model->selectedSession(); }
    QString lastText() const { return session().messages.back().content; }
    QStringList contents() const
    {
        QStringList texts;
        for (const ChatMessage& message : session().messages)
            texts.push_back(message.content);
        return texts;
    }

    /// Sends a prompt and waits until its request is here.
    void send(const QString& prompt)
    {
        const std::size_t before = chats.size();
        model->setDraft(prompt);
        model->send();
        QVERIFY(waitForChats(before + 1));
    }
    bool waitForChats(std::size_t count) const
    {
        return waitUntil([&] { return chats.size() >= count; });
    }
    void begin(const QByteArray& text) const
    {
        chats.back()->beginReply(200, {});
        chats.back()->sendChunk(text);
    }
    bool waitForText(const QString& text) const
    {
        return waitUntil([&] { return lastText() == text; });
    }
    bool waitForEnd() const
    {
        return waitUntil([this] { return !model->isBusy(); });
    }

    std::vector<Exchange> chats;
    practice::HttpServer server;
    SystemClock clock;
    /// Takes effect with the next start, like what follows.
    const Clock* time = &clock;
    std::chrono::milliseconds stallTime = std::chrono::seconds(600);
    PageNetwork* pages = nullptr;
    ModelProfile profile{clock};
    Trace trace;
    std::unique_ptr<AppModel> model;

private:
    void answer(const Exchange& exchange)
    {
        if (exchange->path() == "/api/version")
            exchange->reply(200, "application/json", "{\"version\":\"0.24.0\"}");
        else if (exchange->path() == "/api/tags")
            exchange->reply(200, "application/json", "{\"models\":[{\"name\":\"a\"},{\"name\":\"b\"}]}");
        else if (exchange->path() == "/api/ps")
            exchange->reply(200, "application/json", "{\"models\":[]}");
        else
            chats.push_back(exchange);
    }
};

} // namespace varnel::test
