#include "providers/RemoteProvider.h"
#include "providers/VarnelError.h"

#include <QTest>

using namespace varnel;

class CatalogueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void orderIsFixedAndRawValuesReadBack()
    {
        QStringList rawValues;
        QStringList ownSearch;
        for (const RemoteProvider provider : allRemoteProviders()) {
            rawValues.append(rawValue(provider));
            QVERIFY(remoteProviderFromRawValue(rawValue(provider)) == provider);
            QVERIFY(!suggestedModels(provider).isEmpty());
            QVERIFY(!credentialNames(provider).isEmpty());
            if (hasOwnSearch(provider))
                ownSearch.append(displayName(provider));
        }
        QCOMPARE(rawValues.join(u' '), QStringLiteral("gemini openai claude deepseek openrouter"));
        QCOMPARE(ownSearch.join(u' '), QStringLiteral("Gemini OpenAI Claude"));
        QCOMPARE(credentialNames(RemoteProvider::DeepSeek).first(), QStringLiteral("DEEPSEEK_API_TOKEN"));
        QVERIFY(!remoteProviderFromRawValue(u"Gemini"));
        QVERIFY(!remoteProviderFromRawValue(u""));
    }

    void errorsCarryTheirTexts()
    {
        QCOMPARE(VarnelError::missingKey(displayName(RemoteProvider::OpenRouter)).message(),
                 QStringLiteral("OpenRouter API key is not in the Keychain or the environment."));
        QCOMPARE(VarnelError::api(QStringLiteral("status 500")).message(), QStringLiteral("status 500"));
        const VarnelError disabled = VarnelError::passthroughDisabled();
        QCOMPARE(disabled.kind(), VarnelError::Kind::PassthroughDisabled);
        QCOMPARE(disabled.message(),
                 QStringLiteral("Remote passthrough is off. The next message stays on Ollama."));
    }
};

QTEST_GUILESS_MAIN(CatalogueTest)
#include "CatalogueTest.moc"
