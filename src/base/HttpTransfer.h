#pragma once

#include "base/HttpClient.h"
#include "base/StopWakeup.h"

#include <QTimer>

#include <curl/curl.h>

#include <array>
#include <exception>
#include <memory>
#include <stop_token>

namespace varnel {

class CurlSession;

/// One request on its way and its answer as it arrives. Destroying it ends the transfer.
class HttpTransfer
{
public:
    /// How much of a body may lie here unread, in bytes, before its socket is left alone: a reader that is
    /// slow holds nobody up until then, and one that has stopped costs no more than that.
    static constexpr qsizetype unreadLimit = 32 * 1024 * 1024;
    /// The same while it is held.
    static constexpr qsizetype heldLimit = 1024 * 1024;

    /// @param proxy where to connect through: nothing leaves it to the environment, empty means directly.
    HttpTransfer(std::shared_ptr<CurlSession> session, HttpRequest request,
                 const std::optional<QByteArray>& proxy, std::stop_token stop);
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;
    HttpTransfer(HttpTransfer&&) = delete;
    HttpTransfer& operator=(HttpTransfer&&) = delete;
    ~HttpTransfer();

    int status() const { return m_status; }
    QByteArray header(QByteArrayView name) const;
    /// "127.0.0.1 port 11434", for texts.
    QString peer() const;

    /// Waits for the head of the answer; throws what kept it from coming.
    static Task<void> head(std::shared_ptr<HttpTransfer> transfer);
    /// HttpResponse::next().
    static Task<std::optional<QByteArray>> next(std::shared_ptr<HttpTransfer> transfer);
    /// HttpResponse::hold().
    void hold(bool isHeld) { m_isHeld = isHeld; }

    /// Called by the session when libcurl is done with the transfer.
    void complete(CURLcode result);

private:
    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static int onProgress(void* transfer, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);
    static int onReadyToSend(void* transfer, char*, char*, int, int);

    void configure(const std::optional<QByteArray>& proxy);
    void configureRequest();
    void pinAddress();
    bool takeHeaderLine(QByteArrayView line);
    QByteArray takeReceived();
    void checkIdle();
    void fail(std::exception_ptr failure);
    void end();
    TransportError describe(CURLcode result) const;
    TransportError describeConnection(CURLcode result) const;
    QString systemReason() const;

    std::shared_ptr<CurlSession> m_session;
    HttpRequest m_request;
    std::stop_token m_stop;
    CURL* m_handle = nullptr;
    curl_slist* m_headerList = nullptr;
    curl_slist* m_connectTo = nullptr;
    std::array<char, CURL_ERROR_SIZE> m_errorText{};

    int m_status = 0;
    bool m_headComplete = false;
    bool m_headTooLong = false;
    bool m_bodyLimitReached = false;
    qsizetype m_headLength = 0;
    qint64 m_bodyLength = 0;
    std::vector<HttpHeader> m_headers;

    QByteArray m_received;
    bool m_isHeld = false;
    bool m_isPaused = false;
    bool m_finished = false;
    std::exception_ptr m_failure;
    int m_timesSent = 0;
    curl_off_t m_bytesSent = 0;

    std::chrono::steady_clock::time_point m_lastActivity;
    QTimer m_idleTimer;
    Wakeup m_wakeup;
    std::optional<StopHandler> m_onStop;
};

} // namespace varnel
