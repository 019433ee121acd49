#include "store/ProjectFiles.h"

#include "store/SelfRunningFile.h"

#include <QDir>
#include <QTest>

using namespace varnel;

class ProjectFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void infoStringsNamePaths_data()
    {
        QTest::addColumn<QString>("info");
        QTest::addColumn<QString>("path"); // null: none
        const auto row = [](const char* info, const char* path = nullptr) {
            QTest::newRow(info) << QString::fromLatin1(info) << QString::fromLatin1(path);
        };
        row("path: src/app.py", "src/app.py");
        row(" \tPATH:src/app.py ", "src/app.py");
        row("File:Makefile", "Makefile");
        row("js:app");
        row("js:app.js", "app.js");
        row("text:notes/list", "notes/list");
        row(":a/b", "a/b");
        row("path");
        row("path:");
        row("path: ");
        row("path:/etc/hosts");
        row("path:../x");
        row("path:a/../x");
        row("path:..");
        row("path:a/..");
        row("path:a../x");
        row("path:a//b");
        row("path:a/");
        row("path:a/./b");
        row("path:a:b", "a:b");
        row("path:~/x", "~/x"); // refused when it is written
    }
    void infoStringsNamePaths()
    {
        QFETCH(QString, info);
        QFETCH(QString, path);
        QCOMPARE(projectPathOfInfo(info).value_or(QString()), path);
    }

    void repliesGiveFiles()
    {
        const QString reply = QStringLiteral("Here:\n\n```path:a.txt\nhi\n```\n```py\nno file\n```\n"
                                             "- ~~~path: b/c.py\n  x\n\n  ~~~\n> ```path:a.txt\n> ```\n"
                                             "    path:indented.txt\n\n````path:d.md\n```path:e\n```\n````\n"
                                             "```path:cut.txt\nthe reply ends here");
        const std::vector<ProjectFile> expected{
            {.relativePath = QStringLiteral("a.txt"), .contents = QStringLiteral("hi\n")},
            {.relativePath = QStringLiteral("b/c.py"), .contents = QStringLiteral("x\n")},
            {.relativePath = QStringLiteral("a.txt"), .contents = QString()},
            {.relativePath = QStringLiteral("d.md"), .contents = QStringLiteral("```path:e\n```\n")},
            {.relativePath = QStringLiteral("cut.txt"), .contents = QStringLiteral("the reply ends here\n")}};
        QCOMPARE(projectFiles(reply), expected);
    }

    void textsNameTheFolder()
    {
        ChatSession session;
        session.projectPath = QStringLiteral("  ");
        QCOMPARE(projectInstruction(session), QString());
        QCOMPARE(projectDirectoryStatus(session.projectPath), QStringLiteral("Project directory cleared"));
        session.projectPath = QStringLiteral("~/site/");
        QVERIFY(projectInstruction(session).startsWith(
            QStringLiteral("The project directory for this conversation is %1/site.\nWhen")
                .arg(QDir::homePath())));
        QCOMPARE(projectWriteStatus(3, *session.projectURL()), QStringLiteral("Wrote 3 files in site"));
        QCOMPARE(projectWriteStatus(1, QUrl(QStringLiteral("file:///"))),
                 QStringLiteral("Wrote 1 file in /"));
        QCOMPARE(projectWriteLogLine(*session.projectURL()),
                 QStringLiteral("project write %1/site").arg(QDir::homePath()));
    }

    void filesThatRunByThemselvesAreKnown_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("runs");
        const auto row = [](const char* path, bool runs) {
            QTest::newRow(path) << QString::fromUtf8(path) << runs;
        };
        row(".git/hooks/pre-commit", true);
        row("sub/.GIT/config", true);
        row(".g\xe2\x80\x8cit/config", true); // a zero-width character that one file system ignores
        row(".git. /config", true);
        row("GIT~1/config", true);
        row("a/.\xc5\xbfsh/authorized_keys", true); // a long s, which folds to s
        row(".Bashrc", true);
        row(".config/autostart/x.desktop", true);
        row("Library/LaunchAgents/x.plist", true);
        row(".github/Workflows/ci.yml", true);
        row(".gitlab-ci.yml", true);
        row("JenkinsFile", true);
        row(".vscode/tasks.json", true);
        row(".bashrc.d/x", true);
        row("Documents/PowerShell/Microsoft.PowerShell_profile.ps1", true);
        row(".config/elvish/rc.elv", true);
        row(".semaphore/semaphore.yml", true);
        row("sub/buildspec.yml", true);
        row(".appveyor.yaml", true);
        row("build.ps1", false);
        row(".gitignore", false);
        row("git/hooks/x", false);
        row(".github/README.md", false);
        row("src/profile.py", false);
        row("a.git/x", false);
    }
    void filesThatRunByThemselvesAreKnown()
    {
        QFETCH(QString, path);
        QTEST(runsByItself(path), "runs");
    }
};

QTEST_GUILESS_MAIN(ProjectFilesTest)
#include "ProjectFilesTest.moc"
