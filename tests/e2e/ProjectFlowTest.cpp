#include "e2e/WindowFlow.h"
#include "practice_host/ReplyTexts.h"
#include "store/ProjectFiles.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace varnel;
using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// The files of a reply, from the preview to the disk and back.
class ProjectFlowTest : public WindowFlow
{
    Q_OBJECT

    const QByteArray m_readme = "# What stood here before\n";

    QString folder() const { return m_window->program().folder() + QStringLiteral("/work"); }
    /// What a file of the project holds; nothing if it is not there.
    std::optional<QByteArray> contents(const QString& name) const
    {
        QFile file(folder() + QLatin1Char('/') + name);
        return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
    }
    bool openPreview()
    {
        return m_window->press("Write files") &&
               m_window->shows(QStringLiteral("dialog | Write project files"));
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = makeWindow("practice-project:24b"); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(QDir().mkpath(folder()));
        QFile readme(folder() + QStringLiteral("/README.md"));
        QVERIFY(readme.open(QIODevice::WriteOnly) && readme.write(m_readme) == m_readme.size());
        readme.close();
        QVERIFY(openWindow());
    }

    void theFolderIsChosenInTheDialog()
    {
        QVERIFY(m_window->press("Project"));
        QVERIFY(m_window->press("Choose a folder…"));
        QVERIFY(m_window->shows(QStringLiteral("dialog | Project folder")));
        m_window->key("Down", 8); // by name it is the last of the profile
        QVERIFY(m_window->tabTo(QStringLiteral("push button | Open")));
        m_window->key("space");
        QVERIFY(m_window->shows(QStringLiteral("push button | Project work")));
    }

    void theFilesArePreviewedAndWritten()
    {
        m_window->type(QStringLiteral("Greet me"));
        m_window->key("Return");
        QVERIFY(openPreview());
        QVERIFY(m_window->shows(QStringLiteral("label | Into ") + folder()));
        QVERIFY(m_window->shows(QStringLiteral("check box | Write README.md | focusable checked")));
        QVERIFY(m_window->press("Write README.md"));
        QVERIFY(m_window->shows(QStringLiteral("push button | Write 2 files")));
        QVERIFY(m_window->press("Write README.md"));
        QVERIFY(m_window->shows(QStringLiteral("list item | Removed: # What stood here before")));
        QVERIFY(m_window->press("Write 3 files"));
        QVERIFY(m_window->showsNoMore(QStringLiteral("dialog")));
        const std::vector<ProjectFile> files = projectFiles(projectReply());
        QCOMPARE(files.size(), std::size_t(3));
        for (const ProjectFile& file : files)
            QVERIFY(waitUntil(
                [&] { return contents(file.relativePath) == std::optional(file.contents.toUtf8()); }));
    }

    void whatWasOverwrittenIsPutBack()
    {
        QVERIFY(openPreview());
        QVERIFY(m_window->press("Restore"));
        QVERIFY(waitUntil([this] { return contents(QStringLiteral("README.md")) == m_readme; }));
        QVERIFY(m_window->shows(QStringLiteral("list item | Removed: # What stood here before")));
        QVERIFY(m_window->press("Cancel"));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(ProjectFlowTest)
#include "ProjectFlowTest.moc"
