#include "store/ChatSession.h"
#include "store/ConnectionSettings.h"
#include "store/LibraryItem.h"
#include "store/SessionModelChoice.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <limits>

using namespace varnel;

namespace {

template <typename Write, typename Value>
QByteArray pretty(Write write, const Value& value)
{
    QByteArray text;
    JsonWriter writer(JsonWriter::Style::Pretty, [&text](std::string_view piece) {
        text.append(piece.data(), qsizetype(piece.size()));
    });
    write(writer, value);
    writer.finish();
    return text;
}

template <typename Decode>
auto decoded(Decode decode, const QByteArray& text)
{
    JsonParser parser;
    return decode(parser.parse(text.toStdString()));
}

/// What decoding says, empty when it succeeds.
template <typename Decode>
QString problemOf(Decode decode, const QByteArray& text)
{
    try {
        decoded(decode, text);
        return {};
    } catch (const DecodeError& error) {
        return error.message();
    }
}

void writeChatSessions(JsonWriter& writer, const std::vector<ChatSession>& sessions)
{
    writeList(writer, sessions, writeChatSession);
}

/// A conversation in which no field has its default.
ChatSession fullSession()
{
    return {
        .id = QUuid::createUuid(),
        .title = QStringLiteral("Grüße \"🙂\"\n"),
        .model = QStringLiteral("llama3.2:3b"),
        .systemPrompt = QStringLiteral("Be brief."),
        .projectPath = QStringLiteral("~/code"),
        .messages = {{.id = QUuid::createUuid(),
                      .role = ChatRole::Assistant,
                      .content = QStringLiteral("Yes.\t"),
                      .thinking = QStringLiteral("Hm."),
                      .createdAt = *fromIso8601("2026-11-15T20:25:47Z"),
                      .backend = QStringLiteral("Ollama"),
                      .duration = 0.1}},
        .temperature = 1.25,
        .contextLength = 4096,
        .keepAlive = QStringLiteral("-1"),
        .answerBackend = AnswerBackend::Remote,
        .remoteProvider = RemoteProvider::OpenRouter,
        .remoteModel = QStringLiteral("x/y"),
        .search = SearchSource::Provider,
        .pinned = true,
        .createdAt = *fromIso8601("2026-11-15T20:25:40Z"),
        .updatedAt = *fromIso8601("2026-11-15T20:26:00Z"),
    };
}

const ConnectionSettings fullConnection{.mode = ConnectionMode::Direct,
                                        .sshHost = QStringLiteral("gpu-box"),
                                        .sshUser = QStringLiteral("me"),
                                        .localPort = 11500,
                                        .remoteBind = QStringLiteral("10.0.0.1:1"),
                                        .directURL = QStringLiteral("https://box.example"),
                                        .sshIdentityFile = QStringLiteral("/keys/ü")};

/// An item in which no field has its default.
LibraryItem fullItem()
{
    return {.id = QUuid::createUuid(),
            .kind = LibraryKind::Image,
            .title = QStringLiteral("Grüße"),
            .note = QStringLiteral("a\nb"),
            .folder = QStringLiteral("F/G"),
            .relativePath = QStringLiteral("F/G/x.png"),
            .urlString = QStringLiteral("https://x.example/?a=b"),
            .createdAt = *fromIso8601("2026-11-15T20:25:40Z"),
            .deletedAt = fromIso8601("2026-11-15T20:26:00Z")};
}

QJsonValue wrongTypeFor(const QJsonValue& value)
{
    return value.isBool() ? QJsonValue(1) : QJsonValue(true);
}

/// For every key of `object`: what decoding says when it is left out, when it is null and when it is of the
/// wrong type. `wrap` puts the object back into its document and `path` names its place there.
template <typename Decode>
void checkEveryKey(Decode decode, const QJsonObject& object, const QSet<QString>& optionalKeys,
                   const QString& path, const std::function<QJsonDocument(const QJsonObject&)>& wrap)
{
    for (const QString& key : object.keys()) {
        const auto problemWith = [&](const QJsonValue& value) {
            QJsonObject changed = object;
            changed.insert(key, value); // an undefined value takes the key out
            return problemOf(decode, wrap(changed).toJson());
        };
        const QString wrong = problemWith(wrongTypeFor(object.value(key)));
        QVERIFY2(wrong.startsWith(path + key + QStringLiteral(": expected ")), qPrintable(wrong));
        const bool isOptional = optionalKeys.contains(key);
        QCOMPARE(problemWith(QJsonValue::Undefined),
                 isOptional ? QString() : path + key + QStringLiteral(": missing"));
        QCOMPARE(problemWith(QJsonValue::Null),
                 isOptional ? QString() : path + key + QStringLiteral(": must not be null"));
    }
}

} // namespace

class ConversationTypesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFieldSurvives()
    {
        const std::vector<ChatSession> sessions{fullSession(), fullSession()};
        const QByteArray text = pretty(writeChatSessions, sessions);
        QVERIFY(decoded(listOf(decodeChatSession), text) == sessions);
        QCOMPARE(QJsonDocument::fromJson(text).array().first().toObject().size(), 16);
        QVERIFY(decoded(decodeConnectionSettings, pretty(writeConnectionSettings, fullConnection)) ==
                fullConnection);
        const std::vector<LibraryItem> items{fullItem(), fullItem()};
        QVERIFY(decoded(decodeLibraryItems, pretty(writeLibraryItems, items)) == items);
    }

    void everyKeyIsCheckedByName()
    {
        const QJsonArray sessions =
            QJsonDocument::fromJson(pretty(writeChatSessions, std::vector{fullSession(), fullSession()}))
                .array();
        const QJsonObject session = sessions.last().toObject();
        const auto wrapSession = [&sessions](const QJsonObject& changed) {
            return QJsonDocument(QJsonArray{sessions.first(), changed});
        };
        checkEveryKey(listOf(decodeChatSession), session,
                      {QStringLiteral("projectPath"), QStringLiteral("search"), QStringLiteral("pinned")},
                      QStringLiteral("[1]."), wrapSession);
        checkEveryKey(listOf(decodeChatSession), session.value(u"messages").toArray().first().toObject(),
                      {QStringLiteral("thinking"), QStringLiteral("duration")},
                      QStringLiteral("[1].messages[0]."), [&](const QJsonObject& message) {
                          QJsonObject changed = session;
                          changed.insert(QStringLiteral("messages"), QJsonArray{message});
                          return wrapSession(changed);
                      });
        checkEveryKey(decodeConnectionSettings,
                      QJsonDocument::fromJson(pretty(writeConnectionSettings, fullConnection)).object(),
                      {QStringLiteral("sshIdentityFile")}, QString(),
                      [](const QJsonObject& changed) { return QJsonDocument(changed); });
        const QJsonObject item = QJsonDocument::fromJson(pretty(writeLibraryItem, fullItem())).object();
        checkEveryKey(
            decodeLibraryItems, item,
            {QStringLiteral("relativePath"), QStringLiteral("urlString"), QStringLiteral("deletedAt")},
            QStringLiteral("[0]."),
            [](const QJsonObject& changed) { return QJsonDocument(QJsonArray{changed}); });
    }

    void missingOptionalKeysHaveTheirFallbacks()
    {
        QJsonObject object = QJsonDocument::fromJson(pretty(writeChatSession, fullSession())).object();
        for (const char* key : {"projectPath", "search", "pinned"})
            object.remove(QLatin1String(key));
        QJsonObject message = object.value(u"messages").toArray().first().toObject();
        message.remove(QStringLiteral("thinking"));
        message.remove(QStringLiteral("duration"));
        object.insert(QStringLiteral("messages"), QJsonArray{message});
        const ChatSession session = decoded(decodeChatSession, QJsonDocument(object).toJson());
        QCOMPARE(session.projectPath, QString());
        QCOMPARE(session.search, SearchSource::Off);
        QVERIFY(!session.pinned);
        QCOMPARE(session.messages.front().thinking, QString());
        QVERIFY(!session.messages.front().duration);
        QVERIFY(!pretty(writeChatSession, session).contains("duration"));
    }

    void valuesAreReadStrictly_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("problem"); // empty: accepted
        const QString id = QStringLiteral("0123ABCD-89ab-cdef-0123-456789abcdef");
        const QString uuid = QStringLiteral("expected a UUID, found \"%1\"");
        QTest::newRow("role") << "role" << "bot" << "unknown value \"bot\"";
        QTest::newRow("role's case") << "role" << "User" << "unknown value \"User\"";
        QTest::newRow("long role") << "role" << QString(99, u'x')
                                   << QStringLiteral("unknown value \"%1…\"").arg(QString(60, u'x'));
        QTest::newRow("either case") << "id" << id << "";
        QTest::newRow("null UUID") << "id" << "00000000-0000-0000-0000-000000000000" << "";
        for (const QString& bad :
             {QString(id).remove(u'-'), u'{' + id + u'}', u'{' + id.chopped(1), id + u'0',
              QString(id).replace(u'a', u'g'), QString(id).replace(3, 1, QChar(0xE9)), QString()})
            QTest::newRow(qPrintable(QStringLiteral("UUID ") + bad)) << "id" << bad << uuid.arg(bad);
        QTest::newRow("date") << "createdAt" << "yesterday"
                              << "expected a date like \"2026-11-15T20:25:47Z\", found \"yesterday\"";
        QTest::newRow("year 10000") << "createdAt" << "9999-12-31T23:59:59-01:00"
                                    << "expected a date like \"2026-11-15T20:25:47Z\", found "
                                       "\"9999-12-31T23:59:59-01:00\"";
    }
    void valuesAreReadStrictly()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, problem);
        QJsonObject message =
            QJsonDocument::fromJson(pretty(writeChatMessage, fullSession().messages.front())).object();
        message.insert(key, value);
        QCOMPARE(problemOf(decodeChatMessage, QJsonDocument(message).toJson()),
                 problem.isEmpty() ? QString() : key + QStringLiteral(": ") + problem);
    }

    void everyCaseHasItsText()
    {
        const auto texts = [](auto... cases) { return QStringList{rawValue(cases)...}.join(u' '); };
        const auto inOrder = [](auto cases) {
            QStringList all;
            for (const auto each : cases)
                all.append(rawValue(each));
            return all.join(u' ');
        };
        QCOMPARE(texts(ChatRole::System, ChatRole::User, ChatRole::Assistant),
                 QStringLiteral("system user assistant"));
        QCOMPARE(texts(AnswerBackend::Ollama, AnswerBackend::Remote), QStringLiteral("ollama remote"));
        QCOMPARE(texts(SearchSource::Off, SearchSource::Ollama, SearchSource::Brave, SearchSource::Provider),
                 QStringLiteral("off ollama brave provider"));
        QCOMPARE(inOrder(allCases<WorkContext>()), QStringLiteral("chat coding reasoning vision"));
        QCOMPARE(inOrder(allCases<ConnectionMode>()), QStringLiteral("thisMac sshTunnel direct"));
    }

    void aFileLooksTheSameEveryTime()
    {
        const ChatMessage message{.id = QUuid::fromString(u"0123abcd-89ab-cdef-0123-456789abcdef"),
                                  .role = ChatRole::User,
                                  .content = QStringLiteral("a/b \"ü\"\n"),
                                  .thinking = {},
                                  .createdAt = *fromIso8601("2026-11-15T21:25:47.9+01:00"),
                                  .backend = {},
                                  .duration = 2.0};
        QCOMPARE(pretty(writeChatMessage, message),
                 QByteArray("{\n"
                            "  \"backend\": \"\",\n"
                            "  \"content\": \"a/b \\\"ü\\\"\\n\",\n"
                            "  \"createdAt\": \"2026-11-15T20:25:47Z\",\n"
                            "  \"duration\": 2,\n"
                            "  \"id\": \"0123ABCD-89AB-CDEF-0123-456789ABCDEF\",\n"
                            "  \"role\": \"user\",\n"
                            "  \"thinking\": \"\"\n"
                            "}\n"));
    }

    void modelChoicesAreToldApart()
    {
        const QString model = QStringLiteral("m");
        const QSet<SessionModelChoice> choices{OllamaModelChoice{model}, OllamaModelChoice{model},
                                               RemoteModelChoice{RemoteProvider::Gemini, model},
                                               RemoteModelChoice{RemoteProvider::Claude, model}};
        QCOMPARE(choices.size(), 3);
    }

    void whatWouldNotLoadIsNotWritten()
    {
        ChatSession session = fullSession();
        session.temperature = std::numeric_limits<double>::quiet_NaN();
        QVERIFY_THROWS_EXCEPTION(Error, pretty(writeChatSession, session));
    }

    void serverIsNamed_data()
    {
        QTest::addColumn<ConnectionMode>("mode");
        QTest::addColumn<qint64>("port");
        QTest::addColumn<QString>("text"); // the ssh host or the direct URL
        QTest::addColumn<QString>("baseURL");
        QTest::addColumn<QString>("label");
        const auto row = [](ConnectionMode mode, qint64 port, const char* text, const char* base,
                            const char* label) {
            QTest::addRow("%d %s", int(mode), qPrintable(QString::fromUtf8(text).simplified()))
                << mode << port << QString::fromUtf8(text) << QString::fromUtf8(base)
                << QString::fromUtf8(label);
        };
        using enum ConnectionMode;
        row(ThisMac, 1, "http://x", "http://127.0.0.1:11434", "this Mac");
        row(SshTunnel, 0, " gpu \n", "http://127.0.0.1:1", "gpu");
        row(SshTunnel, 70000, "   ", "http://127.0.0.1:65535", "the SSH host");
        row(Direct, 1, " \thttps://box.example:8443/ollama\n", "https://box.example:8443/ollama",
            "box.example");
        row(Direct, 1, "http://[::1]:9", "http://[::1]:9", "::1");
        for (const char* bad : {"", "box", "box:11434", "ftp://box", "http://", "http:///path", "http://bo x",
                                "http://box:70000", "http://a\nb", "file:///etc"})
            row(Direct, 1, bad, "http://127.0.0.1:11434", "127.0.0.1");
    }
    void serverIsNamed()
    {
        QFETCH(ConnectionMode, mode);
        QFETCH(qint64, port);
        QFETCH(QString, text);
        const ConnectionSettings settings{.mode = mode,
                                          .sshHost = text,
                                          .sshUser = {},
                                          .localPort = port,
                                          .directURL = text,
                                          .sshIdentityFile = {}};
        QTEST(settings.baseURL().toString(), "baseURL");
        QTEST(settings.hostLabel(), "label");
    }

    void projectFolderIsFound_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folder"); // null: none
        const QString home = QDir::homePath();
        QTest::newRow("blank") << " \n" << QString();
        QTest::newRow("home") << " ~ " << home + u'/';
        QTest::newRow("below home") << "~/a b#%41/" << home + QStringLiteral("/a b#%41/");
        QTest::newRow("absolute") << "/srv/x" << "/srv/x/";
        QTest::newRow("two slashes") << "//host/x" << "/host/x/";
        QTest::newRow("tilde in a name") << "~x" << QDir::currentPath() + QStringLiteral("/~x/");
        QTest::newRow("like a resource") << ":/x" << QDir::currentPath() + QStringLiteral("/:/x/");
    }
    void projectFolderIsFound()
    {
        QFETCH(QString, path);
        QFETCH(QString, folder);
        ChatSession session;
        session.projectPath = path;
        const std::optional<QUrl> url = session.projectURL();
        QCOMPARE(url ? url->toLocalFile() : QString(), folder);
        QVERIFY(!url || url->isLocalFile());
    }
};

QTEST_GUILESS_MAIN(ConversationTypesTest)
#include "ConversationTypesTest.moc"
