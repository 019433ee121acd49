#include "store/SelfRunningFile.h"

#include <algorithm>
#include <array>

namespace varnel {

namespace {

/// Names, or names below each other, that mark a file wherever in its path they stand; folded.
constexpr std::array places{
    // git and ssh
    QLatin1String(".git"),
    QLatin1String("git~1"), // the short name of .git on file systems that have one
    QLatin1String(".gitconfig"),
    QLatin1String(".gitmodules"),
    QLatin1String(".gitattributes"),
    QLatin1String(".config/git"),
    QLatin1String(".githooks"),
    QLatin1String(".husky"),
    QLatin1String("lefthook.yml"),
    QLatin1String(".pre-commit-config.yaml"),
    QLatin1String(".ssh"),
    // shells
    QLatin1String(".profile"),
    QLatin1String(".bashrc"),
    QLatin1String(".bashrc.d"),
    QLatin1String(".bash_aliases"),
    QLatin1String(".bash_completion"),
    QLatin1String(".bash_profile"),
    QLatin1String(".bash_login"),
    QLatin1String(".bash_logout"),
    QLatin1String(".zshrc"),
    QLatin1String(".zshenv"),
    QLatin1String(".zprofile"),
    QLatin1String(".zlogin"),
    QLatin1String(".zlogout"),
    QLatin1String(".kshrc"),
    QLatin1String(".mkshrc"),
    QLatin1String(".shrc"),
    QLatin1String(".cshrc"),
    QLatin1String(".tcshrc"),
    QLatin1String(".login"),
    QLatin1String(".logout"),
    QLatin1String(".inputrc"),
    QLatin1String(".envrc"),
    QLatin1String(".config/fish"),
    QLatin1String(".config/zsh"),
    QLatin1String(".config/nushell"),
    QLatin1String(".config/elvish"),
    QLatin1String(".config/xonsh"),
    QLatin1String(".elvish"),
    QLatin1String(".xonshrc"),
    QLatin1String("profile.ps1"),
    QLatin1String("microsoft.powershell_profile.ps1"),
    QLatin1String("microsoft.powershellise_profile.ps1"),
    QLatin1String("microsoft.vscode_profile.ps1"),
    QLatin1String("profile.d"),
    // sessions, services and times
    QLatin1String("autostart"),
    QLatin1String("autostart-scripts"),
    QLatin1String(".xinitrc"),
    QLatin1String(".xprofile"),
    QLatin1String(".xsession"),
    QLatin1String(".xsessionrc"),
    QLatin1String(".pam_environment"),
    QLatin1String("environment.d"),
    QLatin1String("systemd/user"),
    QLatin1String("systemd/system"),
    QLatin1String("init.d"),
    QLatin1String("crontab"),
    QLatin1String("cron.d"),
    QLatin1String("cron.daily"),
    QLatin1String("cron.hourly"),
    QLatin1String("launchagents"),
    QLatin1String("launchdaemons"),
    QLatin1String("startupitems"),
    QLatin1String("programs/startup"),
    // build servers
    QLatin1String(".github/workflows"),
    QLatin1String(".github/actions"),
    QLatin1String(".gitea/workflows"),
    QLatin1String(".forgejo/workflows"),
    QLatin1String(".gitlab"),
    QLatin1String(".gitlab-ci.yml"),
    QLatin1String(".gitlab-ci.yaml"),
    QLatin1String(".circleci"),
    QLatin1String(".buildkite"),
    QLatin1String(".builds"),
    QLatin1String(".build.yml"),
    QLatin1String(".ci"),
    QLatin1String(".teamcity"),
    QLatin1String(".travis.yml"),
    QLatin1String(".cirrus.yml"),
    QLatin1String(".drone.yml"),
    QLatin1String(".woodpecker"),
    QLatin1String(".woodpecker.yml"),
    QLatin1String(".woodpecker.yaml"),
    QLatin1String(".appveyor.yml"),
    QLatin1String(".appveyor.yaml"),
    QLatin1String("appveyor.yml"),
    QLatin1String("appveyor.yaml"),
    QLatin1String(".semaphore"),
    QLatin1String("buildspec.yml"),
    QLatin1String("buildspec.yaml"),
    QLatin1String("bitrise.yml"),
    QLatin1String("bitrise.yaml"),
    QLatin1String("azure-pipelines.yml"),
    QLatin1String(".azure-pipelines"),
    QLatin1String("bitbucket-pipelines.yml"),
    QLatin1String("cloudbuild.yaml"),
    QLatin1String("jenkinsfile"),
    // editors that act on opening a folder or file
    QLatin1String(".vscode"),
    QLatin1String(".idea"),
    QLatin1String(".devcontainer"),
    QLatin1String(".devcontainer.json"),
    QLatin1String(".vimrc"),
    QLatin1String(".exrc"),
    QLatin1String(".nvimrc"),
    QLatin1String(".nvim.lua"),
    QLatin1String(".emacs"),
    QLatin1String(".emacs.d"),
    QLatin1String(".dir-locals.el"),
    // interpreters
    QLatin1String("sitecustomize.py"),
    QLatin1String("usercustomize.py"),
};

bool isInvisible(QChar character)
{
    return character.category() == QChar::Other_Format;
}

QString foldedName(QString name)
{
    name.removeIf(isInvisible);
    name = name.normalized(QString::NormalizationForm_KD)
               .toCaseFolded()
               .normalized(QString::NormalizationForm_KD);
    while (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' ')))
        name.chop(1);
    return name;
}

} // namespace

QString foldedPath(const QString& path)
{
    QStringList names = path.split(QLatin1Char('/'));
    std::ranges::transform(names, names.begin(), foldedName);
    return names.join(QLatin1Char('/'));
}

bool runsByItself(const QString& path)
{
    const QChar slash = QLatin1Char('/');
    const QString folded = slash + foldedPath(path) + slash;
    return std::ranges::any_of(
        places, [&folded, slash](QLatin1String place) { return folded.contains(slash + place + slash); });
}

} // namespace varnel
