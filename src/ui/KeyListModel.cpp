#include "ui/KeyListModel.h"

#include "websearch/SearchKeys.h"

namespace varnel {

namespace {

KeyRow providerRow(RemoteProvider provider)
{
    return {.name = displayName(provider),
            .group = KeyListModel::tr("Models"),
            .line = {},
            .note = {},
            .savingAccount = savingAccount(provider),
            .removableAccount = {},
            .problem = {}};
}

KeyRow searchRow(SearchBackend backend)
{
    return {.name = backend == SearchBackend::Ollama ? KeyListModel::tr("Ollama web search")
                                                     : KeyListModel::tr("Brave Search"),
            .group = KeyListModel::tr("Web search"),
            .line = {},
            .note = {},
            .savingAccount = searchKeyNames(backend).accounts.constFirst(),
            .removableAccount = {},
            .problem = {}};
}

void describe(KeyRow& row, const std::optional<ResolvedKey>& key)
{
    const auto* const saved = key ? std::get_if<KeychainOrigin>(&key->origin) : nullptr;
    if (!key)
        row.line = QStringLiteral("Not set");
    else if (saved)
        row.line = QStringLiteral("Keychain · ") + saved->account;
    else
        row.line =
            QStringLiteral("Environment variable ") + std::get<EnvironmentOrigin>(key->origin).variable;
    if (key && isSharedSearchKey(*key))
        row.note = QStringLiteral("Using Tavrin’s Brave key");
    else if (saved)
        row.removableAccount = saved->account; // the other program's is not ours to remove
}

/// What is known of every key, in the order of the rows. Throws Cancelled.
Task<std::vector<KeyRow>> readRows(CredentialWorker* credentials)
{
    std::vector<KeyRow> rows;
    for (const CredentialStatus& status : co_await credentials->statuses(Unlocking::MayPrompt)) {
        KeyRow row = providerRow(status.provider);
        row.line = status.line;
        row.removableAccount = status.account;
        rows.push_back(std::move(row));
    }
    for (const SearchBackend backend : {SearchBackend::Ollama, SearchBackend::Brave}) {
        KeyRow row = searchRow(backend);
        describe(row, co_await credentials->key(searchKeyNames(backend)));
        rows.push_back(std::move(row));
    }
    co_return rows;
}

} // namespace

KeyListModel::KeyListModel(AppModel& app, QObject* parent)
    : QAbstractListModel(parent)
    , m_app(app)
{
    for (const RemoteProvider provider : allRemoteProviders())
        m_rows.push_back(providerRow(provider));
    for (const SearchBackend backend : {SearchBackend::Ollama, SearchBackend::Brave})
        m_rows.push_back(searchRow(backend));
    connect(&app, &AppModel::credentialRevisionChanged, this, &KeyListModel::refresh);
}

int KeyListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant KeyListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const KeyRow& row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return row.name;
    case GroupRole:
        return row.group;
    case LineRole:
        return row.line;
    case NoteRole:
        return row.note;
    case RemovableRole:
        return !row.removableAccount.isEmpty();
    case ProblemRole:
        return row.problem;
    default:
        return {};
    }
}

QHash<int, QByteArray> KeyListModel::roleNames() const
{
    return {{NameRole, "name"}, {GroupRole, "group"},         {LineRole, "line"},
            {NoteRole, "note"}, {RemovableRole, "removable"}, {ProblemRole, "problem"}};
}

void KeyListModel::refresh()
{
    m_reading = followRefresh();
}

Task<void> KeyListModel::followRefresh()
{
    try {
        show(co_await readRows(&m_app.credentials()));
    } catch (const Cancelled&) {
        co_return; // a newer look is under way
    }
}

void KeyListModel::show(const std::vector<KeyRow>& rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        KeyRow row = rows[i];
        row.problem = m_rows[i].problem;
        if (row == m_rows[i])
            continue;
        // Row by row, so that what is being typed elsewhere stays.
        m_rows[i] = std::move(row);
        const QModelIndex changed = index(static_cast<int>(i));
        Q_EMIT dataChanged(changed, changed);
    }
}

bool KeyListModel::begin(int row)
{
    if (m_busy || row < 0 || row >= rowCount())
        return false;
    m_busy = true;
    Q_EMIT busyChanged();
    return true;
}

void KeyListModel::end(std::size_t row, const QString& problem)
{
    m_rows[row].problem = problem;
    const QModelIndex changed = index(static_cast<int>(row));
    Q_EMIT dataChanged(changed, changed);
    m_busy = false;
    Q_EMIT busyChanged();
    // Even after a failure: the key that was there before may be gone.
    m_app.noteCredentialChange();
}

void KeyListModel::save(int row, const QString& key)
{
    if (!key.trimmed().isEmpty() && begin(row))
        m_writing = followSaving(static_cast<std::size_t>(row), key);
}

Task<void> KeyListModel::followSaving(std::size_t row, QString key)
{
    QString problem;
    try {
        co_await m_app.credentials().save(m_rows[row].savingAccount, std::move(key));
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error&) {
        problem = QStringLiteral("A key could not be saved to the Keychain.");
    }
    end(row, problem);
}

void KeyListModel::remove(int row)
{
    if (data(index(row), RemovableRole).toBool() && begin(row))
        m_writing = followRemoval(static_cast<std::size_t>(row));
}

Task<void> KeyListModel::followRemoval(std::size_t row)
{
    QString problem;
    try {
        if (!co_await m_app.credentials().remove(m_rows[row].removableAccount))
            problem = tr("The key could not be removed from the Keychain.");
    } catch (const Cancelled&) {
        co_return;
    }
    end(row, problem);
}

} // namespace varnel
