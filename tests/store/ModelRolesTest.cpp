#include "store/ModelRoles.h"

#include <QTest>

using namespace varnel;

namespace {

OllamaModel model(const char* name, const char* parameterSize = nullptr)
{
    return {.name = QString::fromLatin1(name),
            .size = std::nullopt,
            .parameterSize =
                parameterSize == nullptr ? std::nullopt : std::optional(QString::fromLatin1(parameterSize))};
}

} // namespace

class ModelRolesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesTellRoles_data()
    {
        QTest::addColumn<QString>("roles"); // c, r, v and, for chat, t
        const auto row = [](const char* name, const char* roles) {
            QTest::newRow(name) << QString::fromLatin1(roles);
        };
        row("qwen2.5-coder:7b", "c");
        row("Codestral", "c");
        row("my-code", "c");
        row("code-llama", "c");
        row("codex", "t");
        row("deepseek-r1:14b", "r");
        row("R1", "r");
        row("r1r1/r1", "r");
        row("r10-model", "t");
        row("mr1x", "t");
        row("r1\xe4", "r");
        row("QwQ:32b", "r");
        row("llava:7b", "tv");
        row("qwen2.5vl", "tv");
        row("minicpm-v", "tv");
        row("deepseek-coder-thinking-vision", "crv");
    }
    void namesTellRoles()
    {
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        QString roles;
        for (const auto& [context, letter] :
             {std::pair(WorkContext::Coding, 'c'), std::pair(WorkContext::Reasoning, 'r'),
              std::pair(WorkContext::Chat, 't'), std::pair(WorkContext::Vision, 'v')}) {
            if (suits(context, name))
                roles += QLatin1Char(letter);
        }
        QTEST(roles, "roles");
    }

    void sizesAreRead_data()
    {
        QTest::addColumn<std::optional<double>>("count");
        const auto row = [](const char* text, std::optional<double> count) { QTest::newRow(text) << count; };
        row("7.6B", 7.6);
        row("135M", 0.135);
        row("100m", 0.1);
        row("50M", 50);
        row("99.9M", 99.9);
        row("llama3.2:3b", 3);
        row("1.2.3b", 2.3);
        row("8x7b", 7);
        row("1.b", std::nullopt);
        row("14 \t b", 14);
        row("3-b 2b", 2);
        row("tinyllama", std::nullopt);
        row("4k", std::nullopt);
        row("", std::nullopt);
    }
    void sizesAreRead() { QTEST(parameterCount(QString::fromLatin1(QTest::currentDataTag())), "count"); }

    void hostileNamesTakeLinearTime()
    {
        constexpr qsizetype length = 1'000'000;
        QCOMPARE(parameterCount(QString(length, u'1')), std::nullopt);
        QCOMPARE(parameterCount(QStringLiteral("1.").repeated(length)), std::nullopt);
        QCOMPARE(parameterCount(QStringLiteral("1 ").repeated(length)), std::nullopt);
    }

    void theLargestThatSuitsWins_data()
    {
        QTest::addColumn<WorkContext>("context");
        QTest::addColumn<std::vector<OllamaModel>>("installed");
        QTest::addColumn<QString>("status");
        using Models = std::vector<OllamaModel>;
        QTest::newRow("suited beats large")
            << WorkContext::Coding << Models{model("qwen2.5:32b"), model("qwen2.5-coder:7b")}
            << QStringLiteral("Coding · qwen2.5-coder:7b");
        QTest::newRow("nothing suits")
            << WorkContext::Chat << Models{model("qwen2.5-coder:7b"), model("deepseek-r1:8b")}
            << QStringLiteral("No chat model is installed. Using deepseek-r1:8b.");
        QTest::newRow("first of equals") << WorkContext::Chat << Models{model("a", "8B"), model("b", "8.0B")}
                                         << QStringLiteral("Chat · a");
        QTest::newRow("details before the name")
            << WorkContext::Chat << Models{model("a:70b", "7B"), model("b:8b")}
            << QStringLiteral("Chat · b:8b");
        QTest::newRow("useless details")
            << WorkContext::Chat << Models{model("b:8b"), model("a:70b", "unknown")}
            << QStringLiteral("Chat · a:70b");
        QTest::newRow("no models") << WorkContext::Vision << Models{}
                                   << QStringLiteral("No models are installed on this host.");
    }
    void theLargestThatSuitsWins()
    {
        QFETCH(WorkContext, context);
        QFETCH(std::vector<OllamaModel>, installed);
        QTEST(workContextStatus(context, bestModel(context, installed)), "status");
    }
};

QTEST_GUILESS_MAIN(ModelRolesTest)
#include "ModelRolesTest.moc"
