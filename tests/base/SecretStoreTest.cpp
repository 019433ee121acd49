#include "base/SecretStore.h"
#include "support/Keyring.h"
#include "support/MemorySecretStore.h"

#include <QTest>

#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;

namespace {

const QString account = QStringLiteral("varnel.ssh.password");
const QStringList attributes{QStringLiteral("service"), QStringLiteral("app.varnel"),
                             QStringLiteral("account"), account};

QByteArray searchAll(const Keyring& keyring)
{
    return keyring.secretTool(QStringList{QStringLiteral("search"), QStringLiteral("--all")} + attributes);
}

/// The text of the error that saving ends with.
QString saveFailure(SecretStore& store)
{
    try {
        store.save(account, QStringLiteral("value"));
    } catch (const SecretStoreError& error) {
        return error.message();
    }
    return {};
}

/// The address of a bus that takes connections and never answers.
class SilentBus
{
public:
    SilentBus()
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray path = m_folder.filePath(QStringLiteral("bus")).toUtf8();
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(m_socket, 8) != 0)
            throw std::runtime_error("the silent bus does not listen");
        m_variable.emplace("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
    }
    SilentBus(const SilentBus&) = delete;
    SilentBus& operator=(const SilentBus&) = delete;
    SilentBus(SilentBus&&) = delete;
    SilentBus& operator=(SilentBus&&) = delete;
    ~SilentBus() { ::close(m_socket); }

private:
    QTemporaryDir m_folder;
    int m_socket;
    std::optional<EnvironmentVariable> m_variable;
};

} // namespace

class SecretStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!keyringInstalled())
            QSKIP("dbus, gnome-keyring and libsecret-tools are needed");
    }

    void valuesComeBackExactly_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << QStringLiteral("correct horse");
        QTest::newRow("blanks") << QStringLiteral("  trailing blanks \t ");
        QTest::newRow("lines") << QStringLiteral("one\r\ntwo\n");
        QTest::newRow("unicode") << QStringLiteral(u"pässwörd 密码 🔑");
        QTest::newRow("byte order mark") << QStringLiteral(u"\ufeffmarked");
        QTest::newRow("empty") << QStringLiteral("");
        QTest::newRow("long") << QString(100000, QLatin1Char('x'));
    }
    void valuesComeBackExactly()
    {
        QFETCH(QString, value);
        const auto store = systemSecretStore();
        store->save(account, value);
        const std::optional<QString> read = store->read(account, Unlocking::Never);
        QVERIFY(read.has_value());
        QCOMPARE(*read, value);
        QCOMPARE(m_keyring->secretTool(QStringList{QStringLiteral("lookup")} + attributes), value.toUtf8());
    }

    void itemsAreSharedWithOtherTools()
    {
        const auto store = systemSecretStore();
        m_keyring->secretTool(
            QStringList{QStringLiteral("store"), QStringLiteral("--label=by hand")} + attributes, "by hand ");
        QCOMPARE(store->read(account, Unlocking::Never), std::optional(QStringLiteral("by hand ")));

        store->save(account, QStringLiteral("first"));
        store->save(account, QStringLiteral("second"));
        const QByteArray items = searchAll(*m_keyring);
        QCOMPARE(items.count("secret = "), 1);
        QVERIFY2(items.contains("label = Varnel: varnel.ssh.password\nsecret = second\n"), items.constData());

        QVERIFY(store->remove(account));
        QCOMPARE(store->read(account, Unlocking::MayPrompt), std::nullopt);
        QVERIFY(searchAll(*m_keyring).isEmpty());
        QVERIFY(store->remove(account)); // nothing there any more
    }

    void bytesThatAreNoTextReadAsNothing()
    {
        m_keyring->secretTool(
            QStringList{QStringLiteral("store"), QStringLiteral("--label=bytes")} + attributes, "caf\xe9");
        QCOMPARE(systemSecretStore()->read(account, Unlocking::Never), std::nullopt);
    }

    void lockedKeyringReadsAsNothing()
    {
        const auto store = systemSecretStore();
        store->save(account, QStringLiteral("value"));
        m_keyring->lock();
        QCOMPARE(store->read(account, Unlocking::Never), std::nullopt);
        // Nobody can be asked on this bus, so unlocking fails and nothing is changed.
        QCOMPARE(store->read(account, Unlocking::MayPrompt), std::nullopt);
        QVERIFY(saveFailure(*store).startsWith(QStringLiteral("Keychain save failed (")));
        QVERIFY(!store->remove(account));
    }

    void hangingServiceIsGivenUp()
    {
        const auto store = systemSecretStore();
        store->save(account, QStringLiteral("value"));
        m_keyring->setFrozen(true);
        QCOMPARE(store->read(account, Unlocking::Never), std::nullopt);
        m_keyring->setFrozen(false);
        QCOMPARE(store->read(account, Unlocking::Never), std::optional(QStringLiteral("value")));
    }

    void endOfTheBusDuringACallIsSurvived()
    {
        m_keyring->setFrozen(true);
        std::optional<QString> read = QStringLiteral("unread");
        std::jthread reader([&read] { read = systemSecretStore()->read(account, Unlocking::Never); });
        QTest::qWait(300); // enough for it to have connected
        m_keyring->endBus();
        reader.join();
        QCOMPARE(read, std::nullopt);
        QTest::qWait(300); // a library that ends the program would do so now
    }

    void hangingBusIsGivenUp()
    {
        const SilentBus bus;
        QCOMPARE(systemSecretStore()->read(account, Unlocking::Never), std::nullopt);
    }

    void noBusMeansNoSecrets()
    {
        const EnvironmentVariable nowhere("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        const auto store = systemSecretStore();
        QCOMPARE(store->read(account, Unlocking::Never), std::nullopt);
        QCOMPARE(saveFailure(*store), QStringLiteral("Keychain save failed (2)."));
    }

    void busWithoutServiceMeansNoSecrets()
    {
        const auto store = systemSecretStore();
        {
            const PrivateBus bus;
            QCOMPARE(store->read(account, Unlocking::Never), std::nullopt);
            QCOMPARE(saveFailure(*store), QStringLiteral("Keychain save failed (2)."));
        }
        store->save(account, QStringLiteral("on the other bus"));
        QVERIFY(store->read(account, Unlocking::Never).has_value());
    }

    void failedSaveKeepsTheOldValue()
    {
        MemorySecretStore store;
        store.save(account, QStringLiteral("old"));
        store.failingAdditions = 1;
        QCOMPARE(saveFailure(store), QStringLiteral("Keychain save failed (-34018)."));
        QCOMPARE(store.read(account, Unlocking::Never), std::optional(QStringLiteral("old")));

        store.locked = true;
        QCOMPARE(saveFailure(store), QStringLiteral("Keychain save failed (3)."));
        store.locked = false;
        QCOMPARE(store.read(account, Unlocking::Never), std::optional(QStringLiteral("old")));

        store.failingAdditions = 2; // not even the old one can be put back
        QCOMPARE(saveFailure(store), QStringLiteral("Keychain save failed (-34018)."));
        QCOMPARE(store.read(account, Unlocking::Never), std::nullopt);
    }

    void init() { m_keyring.emplace(); }
    void cleanup() { m_keyring.reset(); }

private:
    std::optional<Keyring> m_keyring;
};

QTEST_GUILESS_MAIN(SecretStoreTest)
#include "SecretStoreTest.moc"
