// What a turn is made of: looking into whether it can be sent, and with what.
#include "engine/AppModelPrivate.h"

#include "base/Text.h"
#include "engine/PromptText.h"
#include "providers/VarnelError.h"
#include "providers/credentials/ModelFilter.h"
#include "store/LibraryTexts.h"
#include "store/ProjectFiles.h"
#include "websearch/SearchKeys.h"
#include "websearch/SearchPlan.h"

#include <algorithm>

namespace varnel {

namespace {

/// The keys that a turn may need.
struct TurnKeys
{
    QString provider;
    QString ollama;
    QString brave;
};

Task<QString> keyOf(CredentialWorker* credentials, KeyNames names, std::stop_token stop)
{
    const std::optional<ResolvedKey> key = co_await credentials->key(std::move(names), std::move(stop));
    co_return key ? key->key : QString();
}

/// Looks up only what this turn asks for: each look-up may ask the user to unlock the keyring.
Task<TurnKeys> findKeys(CredentialWorker* credentials, AnswerBackend answer, RemoteProvider provider,
                        SearchSource search, std::stop_token stop)
{
    TurnKeys keys;
    const bool isRemote = answer == AnswerBackend::Remote;
    if (isRemote) {
        const auto key = co_await credentials->providerKey(provider, stop);
        keys.provider = key ? key->key : QString();
    }
    if (isRemote && search == SearchSource::Provider && hasOwnSearch(provider))
        co_return keys;
    if (search == SearchSource::Ollama || search == SearchSource::Provider)
        keys.ollama = co_await keyOf(credentials, searchKeyNames(SearchBackend::Ollama), stop);
    if (search == SearchSource::Brave || (search == SearchSource::Provider && keys.ollama.isEmpty()))
        keys.brave = co_await keyOf(credentials, searchKeyNames(SearchBackend::Brave), stop);
    co_return keys;
}

/// Why a model cannot be sent an item; empty if it can.
QString unreadableReason(const ChatSession& session, const LibraryItem& item)
{
    if (!hasMedia(item))
        return {};
    const bool isPdf = item.kind == LibraryKind::Pdf;
    const bool reads = session.answerBackend == AnswerBackend::Remote
                           ? remoteModelReads(isPdf ? AttachmentKind::PdfDocuments : AttachmentKind::Images,
                                              session.remoteProvider, session.remoteModel)
                           : !isPdf && ollamaModelReadsImages(session.model);
    if (reads)
        return {};
    return QStringLiteral("%1 cannot read %2 (%3). Choose another model under Send with, or remove it.")
        .arg(session.answerBackend == AnswerBackend::Remote ? session.remoteModel : session.model, item.title,
             isPdf ? QStringLiteral("a PDF") : QStringLiteral("an image"));
}

/// Whether a prompt takes the same way in both.
bool isAnsweredAlike(const ChatSession& a, const ChatSession& b)
{
    if (a.answerBackend != b.answerBackend || a.search != b.search)
        return false;
    return a.answerBackend == AnswerBackend::Remote
               ? a.remoteProvider == b.remoteProvider && a.remoteModel == b.remoteModel
               : a.model == b.model;
}

bool isAmong(const std::vector<LibraryItem>& items, const LibraryItem& item)
{
    return std::any_of(items.begin(), items.end(),
                       [&item](const LibraryItem& other) { return other.id == item.id; });
}

struct AttachedFiles
{
    QStringList texts;
    std::vector<PromptMedia> media;
};

/// What the attachments say and are.
Task<AttachedFiles> readAttachments(Worker* worker, QString root, std::vector<LibraryItem> items,
                                    std::stop_token stop)
{
    co_return co_await worker->run(
        [root, items](const std::stop_token&) {
            AttachedFiles files;
            for (const LibraryItem& item : items) {
                files.texts.push_back(wellFormed(attachmentText(root, item)));
                if (std::optional<PromptMedia> media = mediaOf(root, item))
                    files.media.push_back(std::move(*media));
            }
            return files;
        },
        stop);
}

} // namespace

QString AppModel::unreadableReason(const LibraryItem& item) const
{
    const ChatSession* const selected = selectedSession();
    return selected ? varnel::unreadableReason(*selected, item) : QString();
}

std::vector<LibraryItem> AppModel::itemsOf(const std::vector<QUuid>& ids) const
{
    std::vector<LibraryItem> items;
    for (const QUuid& id : ids) {
        if (const LibraryItem* const item = libraryItem(id); item && item->isLive())
            items.push_back(*item);
    }
    return items;
}

std::vector<LibraryItem> AppModel::mediaItemsOf(const QString& content) const
{
    std::vector<LibraryItem> items;
    for (const PromptAttachment& attachment : promptParts(content).attachments) {
        const auto found =
            std::find_if(m_libraryItems.begin(), m_libraryItems.end(), [&](const LibraryItem& item) {
                return item.isLive() && item.relativePath && !attachment.mediaPath.isEmpty() &&
                       m_location.folder() + QLatin1Char('/') + *item.relativePath == attachment.mediaPath;
            });
        if (found != m_libraryItems.end())
            items.push_back(*found);
    }
    return items;
}

std::vector<LibraryItem> AppModel::attachedItems(const QString& content) const
{
    std::vector<LibraryItem> items = mediaItemsOf(content);
    // A text or a link is known by its title alone.
    for (const PromptAttachment& attachment : promptParts(content).attachments) {
        const auto found =
            std::find_if(m_libraryItems.begin(), m_libraryItems.end(), [&](const LibraryItem& item) {
                return item.isLive() && attachment.mediaPath.isEmpty() && item.kind == attachment.kind &&
                       item.title.simplified() == attachment.title.simplified() && !isAmong(items, item);
            });
        if (found != m_libraryItems.end())
            items.push_back(*found);
    }
    return items;
}

Task<PromptMaterial> AppModel::preparePrompt(PromptQuestion question, std::stop_token stop)
{
    const ChatSession& session = question.conversation;
    for (const LibraryItem& item : question.items) {
        if (const QString reason = varnel::unreadableReason(session, item); !reason.isEmpty())
            throw Error(reason);
    }
    const bool isRemote = session.answerBackend == AnswerBackend::Remote;
    const TurnKeys keys = co_await findKeys(&m_credentials, session.answerBackend, session.remoteProvider,
                                            session.search, stop);
    PromptMaterial material;
    material.plan = planSearch({.source = session.search,
                                .answerBackend = session.answerBackend,
                                .provider = session.remoteProvider,
                                .hasOllamaKey = !keys.ollama.isEmpty(),
                                .hasBraveKey = !keys.brave.isEmpty(),
                                .hasProviderKey = !keys.provider.isEmpty()});
    if (const auto* const blocked = std::get_if<SearchBlocked>(&material.plan))
        throw Error(blocked->message);
    if (isRemote && keys.provider.isEmpty())
        throw VarnelError::missingKey(displayName(session.remoteProvider));
    material.providerKey = keys.provider;
    if (const auto* const tools = std::get_if<SearchWithTools>(&material.plan)) {
        const bool isOllama = tools->backend == SearchBackend::Ollama;
        material.search = SearchService{.backend = tools->backend,
                                        .key = isOllama ? keys.ollama : keys.brave,
                                        .base = m_bases.url(isOllama ? ApiBase::OllamaWeb : ApiBase::Brave)};
        if (material.search->key.isEmpty())
            throw Error(missingSearchKeyMessage(tools->backend));
    }
    material.content = question.prompt;
    if (!question.items.empty()) {
        AttachedFiles files = co_await readAttachments(&m_worker, m_location.folder(), question.items, stop);
        material.media = std::move(files.media);
        if (!question.isFollowUp)
            material.content = promptContent(question.prompt, files.texts);
    }
    checkStillAsked(session);
    co_return material;
}

/// A look-up may have asked the user to unlock the keyring, and meanwhile they may have changed anything.
/// What was made ready for one model, with its key and what it can read, goes to no other.
void AppModel::checkStillAsked(const ChatSession& asked)
{
    const ChatSession* const now = session(asked.id);
    if (!now)
        throw Cancelled(); // removed while its prompt was made ready
    if (refusesPassthrough(asked.id))
        throw VarnelError::passthroughDisabled();
    if (!isAnsweredAlike(*now, asked))
        throw Error(tr("Nothing was sent, because the model or the search was changed before the prompt was "
                       "ready. Send it again to use what is chosen now."));
}

TurnRequest AppModel::turnRequest(const ChatSession& session, PromptMaterial material) const
{
    QString systemText = session.systemPrompt;
    if (const QString instruction = projectInstruction(session); !instruction.isEmpty())
        systemText =
            systemText.trimmed().isEmpty() ? instruction : systemText + QStringLiteral("\n\n") + instruction;
    // A reply of which nothing came before the program ended is nothing to a model.
    std::vector<ChatMessage> history = session.messages;
    std::erase_if(history, isEmptyReply);
    TurnRequest request{.question = {}, .search = std::move(material.search), .backend = {}};
    if (session.answerBackend == AnswerBackend::Remote) {
        ProviderTurn turn;
        turn.provider = session.remoteProvider;
        turn.model = session.remoteModel;
        turn.key = material.providerKey;
        turn.systemPrompt = systemText;
        turn.messages = providerMessages(history, std::move(material.media));
        turn.temperature = session.temperature;
        if (std::holds_alternative<NativeSearch>(material.plan))
            turn.search = ProviderSearch::Own;
        request.question = std::move(turn);
        request.backend = displayName(session.remoteProvider) + QStringLiteral(" · ") + session.remoteModel;
        return request;
    }
    request.question = OllamaQuestion{.baseURL = m_connection.baseURL(),
                                      .chat = {.model = session.model,
                                               .systemText = systemText,
                                               .history = std::move(history),
                                               .media = std::move(material.media),
                                               .temperature = session.temperature,
                                               .contextLength = session.contextLength,
                                               .keepAlive = session.keepAlive,
                                               .predictionLimit = {}}};
    request.backend = session.model;
    return request;
}

TurnServices AppModel::turnServices()
{
    return {.clock = m_services.clock,
            .pages = m_services.pages ? *m_services.pages : m_pages,
            .bases = m_bases,
            .images = m_services.images,
            .stallTime = m_services.stallTime};
}

} // namespace varnel
