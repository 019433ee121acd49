#pragma once

#include "base/Worker.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <curl/curl.h>

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>

namespace varnel {

class HttpTransfer;

/// libcurl's multi interface, driven by the event loop of the thread it lives on.
class CurlSession : public QObject
{
public:
    /// @param certificateAuthorities a PEM file in place of the system's trust store; empty for the system's.
    explicit CurlSession(QByteArray certificateAuthorities);
    CurlSession(const CurlSession&) = delete;
    CurlSession& operator=(const CurlSession&) = delete;
    CurlSession(CurlSession&&) = delete;
    CurlSession& operator=(CurlSession&&) = delete;
    ~CurlSession() override;

    const QByteArray& certificateAuthorities() const { return m_certificateAuthorities; }

    /// Starts a transfer; the handle's private pointer is its HttpTransfer.
    void add(CURL* handle);
    /// Ends a transfer, finished or not; never called from inside a callback of libcurl.
    void remove(CURL* handle);

    /// What the desktop's settings named for a host.
    struct KnownProxy
    {
        QByteArray proxy;
        std::chrono::steady_clock::time_point asked;
    };
    /// By scheme and host; asked again after a minute, because networks change.
    std::map<QString, KnownProxy> knownProxies;
    Worker proxyLookup;

private:
    struct Watch
    {
        QSocketNotifier* read = nullptr;
        QSocketNotifier* write = nullptr;
    };

    static int onSocket(CURL* handle, curl_socket_t socket, int what, void* session, void* watch);
    static int onTimer(CURLM* multi, long milliseconds, void* session);

    void watch(curl_socket_t socket, int what);
    QSocketNotifier* notifier(QSocketNotifier*& slot, curl_socket_t socket, QSocketNotifier::Type type,
                              int action);
    void act(curl_socket_t socket, int action);

    QByteArray m_certificateAuthorities;
    CURLM* m_multi;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Watch> m_watches;
};

} // namespace varnel
