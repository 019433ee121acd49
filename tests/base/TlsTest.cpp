#include "base/HttpClient.h"
#include "support/Await.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

namespace {

Task<int> statusOf(HttpClient& http, QUrl url, QByteArray pinnedAddress = {})
{
    HttpRequest request;
    request.url = std::move(url);
    request.pinnedAddress = std::move(pinnedAddress);
    const HttpResponse response = co_await http.send(std::move(request), {});
    co_return response.status();
}

} // namespace

/// Certificates are checked against real OpenSSL: a server of its own, a key made for the occasion.
class TlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        const QString key = m_folder.filePath(QStringLiteral("key.pem"));
        m_certificate = m_folder.filePath(QStringLiteral("certificate.pem"));
        QProcess make;
        make.start(QStringLiteral("openssl"),
                   {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                    QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                    QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                    QStringLiteral("-subj"), QStringLiteral("/CN=varnel test"), QStringLiteral("-addext"),
                    QStringLiteral("subjectAltName=IP:127.0.0.1,DNS:pinned.test"), QStringLiteral("-days"),
                    QStringLiteral("2"), QStringLiteral("-keyout"), key, QStringLiteral("-out"),
                    m_certificate});
        QVERIFY(waitUntil([&] { return make.state() == QProcess::NotRunning; }));
        QCOMPARE(make.exitCode(), 0);

        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.start(QStringLiteral("openssl"),
                       {QStringLiteral("s_server"), QStringLiteral("-accept"), QStringLiteral("127.0.0.1:0"),
                        QStringLiteral("-key"), key, QStringLiteral("-cert"), m_certificate,
                        QStringLiteral("-www")});
        QByteArray output;
        QRegularExpressionMatch match;
        QVERIFY(waitUntil([&] {
            output += m_server.readAll();
            match =
                QRegularExpression(QStringLiteral("ACCEPT [^\n]*:(\\d+)\n")).match(QString::fromUtf8(output));
            return match.hasMatch();
        }));
        m_port = match.captured(1).toInt();
    }

    void cleanupTestCase()
    {
        m_server.kill();
        waitUntil([this] { return m_server.state() == QProcess::NotRunning; });
    }

    void onlyTrustedCertificatesOfThatNameAreTaken()
    {
        const QUrl url(QStringLiteral("https://127.0.0.1:%1/").arg(m_port));
        HttpClient trusting({.certificateAuthorities = m_certificate.toUtf8()});
        QCOMPARE(await(statusOf(trusting, url)), 200);

        HttpClient plain;
        QString message;
        try {
            await(statusOf(plain, url));
        } catch (const TransportError& error) {
            QCOMPARE(error.kind(), TransportError::Kind::Insecure);
            message = error.message();
        }
        QVERIFY2(
            message.startsWith(
                QStringLiteral("The certificate of 127.0.0.1 port %1 could not be verified: ").arg(m_port)),
            qPrintable(message));

        QUrl otherName = url;
        otherName.setHost(QStringLiteral("localhost"));
        QVERIFY_THROWS_EXCEPTION(TransportError, await(statusOf(trusting, otherName)));

        // A pinned address changes nothing of whose certificate it has to be.
        otherName.setHost(QStringLiteral("pinned.test"));
        QCOMPARE(await(statusOf(trusting, otherName, "127.0.0.1")), 200);
        otherName.setHost(QStringLiteral("other.test"));
        QVERIFY_THROWS_EXCEPTION(TransportError, await(statusOf(trusting, otherName, "127.0.0.1")));
    }

private:
    QTemporaryDir m_folder;
    QString m_certificate;
    QProcess m_server;
    int m_port = 0;
};

QTEST_GUILESS_MAIN(TlsTest)
#include "TlsTest.moc"
