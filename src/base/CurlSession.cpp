#include "base/CurlSession.h"

#include "base/HttpTransfer.h"

#include <mutex>
#include <new>

namespace varnel {

static void initialiseLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

CurlSession::CurlSession(QByteArray certificateAuthorities)
    : m_certificateAuthorities(std::move(certificateAuthorities))
    , m_multi((initialiseLibrary(), curl_multi_init()))
{
    if (!m_multi)
        throw std::bad_alloc();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlSession::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlSession::onTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
}

CurlSession::~CurlSession()
{
    // Transfers own a share of the session, so none is left here; closing the kept connections calls back.
    curl_multi_cleanup(m_multi);
}

void CurlSession::add(CURL* handle)
{
    curl_multi_add_handle(m_multi, handle);
}

void CurlSession::remove(CURL* handle)
{
    curl_multi_remove_handle(m_multi, handle);
}

int CurlSession::onSocket(CURL*, curl_socket_t socket, int what, void* session, void*)
{
    static_cast<CurlSession*>(session)->watch(socket, what);
    return 0;
}

int CurlSession::onTimer(CURLM*, long milliseconds, void* session)
{
    QTimer& timer = static_cast<CurlSession*>(session)->m_timer;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(std::chrono::milliseconds(milliseconds));
    return 0;
}

QSocketNotifier* CurlSession::notifier(QSocketNotifier*& slot, curl_socket_t socket,
                                       QSocketNotifier::Type type, int action)
{
    if (!slot) {
        slot = new QSocketNotifier(socket, type, this);
        connect(slot, &QSocketNotifier::activated, this, [this, socket, action] { act(socket, action); });
    }
    return slot;
}

void CurlSession::watch(curl_socket_t socket, int what)
{
    if (what == CURL_POLL_REMOVE) {
        const auto found = m_watches.find(socket);
        if (found == m_watches.end())
            return;
        // This may run inside the notifier's own signal, so it is switched off now and deleted later.
        for (QSocketNotifier* const old : {found->second.read, found->second.write}) {
            if (old) {
                old->setEnabled(false);
                old->deleteLater();
            }
        }
        m_watches.erase(found);
        return;
    }
    Watch& watch = m_watches[socket];
    const bool wantsRead = what == CURL_POLL_IN || what == CURL_POLL_INOUT;
    const bool wantsWrite = what == CURL_POLL_OUT || what == CURL_POLL_INOUT;
    if (wantsRead || watch.read)
        notifier(watch.read, socket, QSocketNotifier::Read, CURL_CSELECT_IN)->setEnabled(wantsRead);
    if (wantsWrite || watch.write)
        notifier(watch.write, socket, QSocketNotifier::Write, CURL_CSELECT_OUT)->setEnabled(wantsWrite);
}

void CurlSession::act(curl_socket_t socket, int action)
{
    int running = 0;
    curl_multi_socket_action(m_multi, socket, action, &running);
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode result = message->data.result;
        char* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        reinterpret_cast<HttpTransfer*>(transfer)->complete(result);
    }
}

} // namespace varnel
