#include "e2e/WindowFlow.h"
#include "support/Await.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// A conversation leaves the window and comes back to it through the dialog for files that stands in where
/// the desktop has none.
class ExportWindowTest : public WindowFlow
{
    Q_OBJECT

    /// Opens the dialog by an entry of the menu; the keyboard is in its list of files.
    bool ask(const char* entry, const char* dialog)
    {
        return m_window->press("Menu") && m_window->press(entry) &&
               m_window->shows(QStringLiteral("dialog | %1 | focused").arg(QLatin1String(dialog))) &&
               m_window->showsNoMore(QStringLiteral("menu item"));
    }
    /// Presses the button of the dialog that takes the file.
    bool accept(const char* button)
    {
        if (!m_window->tabTo(QStringLiteral("push button | ") + QLatin1String(button)))
            return false;
        m_window->key("space");
        return true;
    }
    QString path(const char* name) const
    {
        return m_window->program().folder() + QLatin1Char('/') + QLatin1String(name);
    }
    bool isSaved(const QString& file)
    {
        return m_window->shows(QStringLiteral("status bar | Saved ") + file);
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = makeWindow(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(openWindow());
        m_window->type(QStringLiteral("Tell me of lighthouses"));
        m_window->key("Return");
        QVERIFY(m_window->shows(QStringLiteral("push button | Regenerate")));
    }

    void aTypedNameIsTheNameOfTheFile()
    {
        constexpr QPoint nameOfTheFile(505, 524);
        QVERIFY(ask("Export as Markdown…", "Save"));
        m_window->display().click(nameOfTheFile);
        m_window->key("ctrl+a");
        m_window->type(QStringLiteral("talk #1.md"));
        QVERIFY(accept("Save"));
        QVERIFY(isSaved(path("talk #1.md")));
        const QByteArray text = m_window->stored(QStringLiteral("talk #1.md"));
        QVERIFY2(text.startsWith("# Tell me of lighthouses\n\n## You · "), text.constData());
        QVERIFY2(text.contains("\n\nThis is a practice reply; no real model wrote it. You wrote:\n\n"),
                 text.constData());
    }

    void aDocumentHasTheNameOfTheConversation()
    {
        QVERIFY(ask("Export as PDF…", "Save"));
        QVERIFY(accept("Save"));
        QVERIFY(isSaved(path("Tell me of lighthouses.pdf")));
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("not installed: pdftotext; scripts/setup does");
        QProcess reader;
        reader.start(QStringLiteral("pdftotext"),
                     {QStringLiteral("-layout"), path("Tell me of lighthouses.pdf"), QStringLiteral("-")});
        QVERIFY(waitUntil([&] { return reader.state() == QProcess::NotRunning; }));
        const QString text = QString::fromUtf8(reader.readAllStandardOutput());
        QVERIFY2(text.contains(QLatin1String("This is a practice reply; no real model wrote it.")),
                 qPrintable(text));
    }

    void whatWasExportedIsImportedAgain()
    {
        QVERIFY(ask("Export as JSON…", "Save"));
        QVERIFY(accept("Save"));
        QVERIFY(isSaved(path("Tell me of lighthouses.json")));
        QCOMPARE(m_window->conversations().size(), 1);
        QVERIFY(ask("Import a conversation…", "Import a conversation"));
        // Of what is in the profile, by name, one thing only comes after the file.
        m_window->key("Down", 8);
        m_window->key("Up");
        m_window->key("Return");
        QVERIFY(waitUntil([this] { return m_window->conversations().size() == 2; }));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(ExportWindowTest)
#include "ExportWindowTest.moc"
