#include "store/ProjectFiles.h"

#include "markdown/Markdown.h"

#include <algorithm>

namespace varnel {

namespace {

/// Without blanks and tabs on both sides; line breaks stay.
QStringView withoutBlanks(QStringView text)
{
    const auto isBlank = [](QChar character) {
        return character == QLatin1Char('\t') || character.category() == QChar::Separator_Space;
    };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

} // namespace

ProjectWriteError::ProjectWriteError(Kind kind, QString message)
    : Error(std::move(message))
    , m_kind(kind)
{}

ProjectWriteError ProjectWriteError::outsideRoot(const QString& relativePath)
{
    return {Kind::OutsideRoot, relativePath + QStringLiteral(" is outside the project directory.")};
}

ProjectWriteError ProjectWriteError::missingFolder()
{
    return {Kind::MissingFolder, QStringLiteral("Choose a project directory for this conversation first.")};
}

QString projectInstruction(const ChatSession& session)
{
    const std::optional<QUrl> folder = session.projectURL();
    if (!folder)
        return {};
    return QStringLiteral("The project directory for this conversation is ") + projectFolderPath(*folder) +
           QStringLiteral(
               ".\nWhen you create or change files, emit one fenced block per file. The fence info must be "
               "path: followed by a path relative to that directory. Example:\n\n"
               "```path:playbooks/site.yml\n---\n- hosts: all\n```\n\n"
               "Use subdirectories when the task needs a tree, such as roles/web/tasks/main.yml and "
               "inventory/hosts.yml. Never use an absolute path or .. . Explain the tree in prose if "
               "useful, and put every file you want written in its own path: fence.");
}

std::optional<QString> projectPathOfInfo(QStringView info)
{
    info = withoutBlanks(info);
    const qsizetype colon = info.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return std::nullopt;
    const QString key = info.first(colon).toString().toLower();
    const QStringView path = withoutBlanks(info.sliced(colon + 1));
    if (path.isEmpty() || path.contains(QLatin1String("../")) || path.startsWith(QLatin1Char('/')))
        return std::nullopt;
    // One word alone may be anything, a language for example.
    const bool isNamed = key == QLatin1String("path") || key == QLatin1String("file");
    if (!path.contains(QLatin1Char('/')) && !isNamed && !path.contains(QLatin1Char('.')))
        return std::nullopt;
    const QList<QStringView> names = path.split(QLatin1Char('/'));
    const bool isPlain = std::ranges::none_of(names, [](QStringView name) {
        return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..");
    });
    return isPlain ? std::optional(path.toString()) : std::nullopt;
}

std::vector<ProjectFile> projectFiles(QStringView reply)
{
    std::vector<ProjectFile> files;
    const QList<MarkdownCode> blocks = codeBlocks(reply);
    for (const MarkdownCode& block : blocks) {
        const std::optional<QString> path = projectPathOfInfo(block.info);
        if (!path)
            continue;
        QString contents = block.text;
        if (!contents.isEmpty() && !contents.endsWith(QLatin1Char('\n')))
            contents += QLatin1Char('\n');
        files.push_back({.relativePath = *path, .contents = std::move(contents)});
    }
    return files;
}

QString projectFolderPath(const QUrl& folder)
{
    QString path = folder.toLocalFile();
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

QString projectDirectoryStatus(const QString& projectPath)
{
    if (projectPath.trimmed().isEmpty())
        return QStringLiteral("Project directory cleared");
    return QStringLiteral("Project directory ") + projectPath;
}

QString projectWriteStatus(std::size_t count, const QUrl& folder)
{
    const QString path = projectFolderPath(folder);
    const QString name = path.size() > 1 ? path.sliced(path.lastIndexOf(QLatin1Char('/')) + 1) : path;
    return QStringLiteral("Wrote ") + QString::number(count) +
           (count == 1 ? QStringLiteral(" file in ") : QStringLiteral(" files in ")) + name;
}

QString noProjectFilesStatus()
{
    return QStringLiteral("This reply has no project files.");
}

QString projectWriteLogLine(const QUrl& folder)
{
    return QStringLiteral("project write ") + projectFolderPath(folder);
}

} // namespace varnel
