#pragma once

#include "ollama/PullStream.h"

#include <QString>

#include <chrono>
#include <deque>
#include <optional>

namespace varnel {

/// How far a pull has come, from what the server says of it.
class PullProgress
{
public:
    explicit PullProgress(QString model)
        : m_model(std::move(model))
    {}

    /// @param now of a clock that only moves forward.
    void take(const StatusChunk& chunk, std::chrono::steady_clock::time_point now);

    /// One line: "Pulling llama3.2:3b… 35 % · 1.2 GB of 3.4 GB · 24 MB/s · 1 min 32 s left", as far as it is
    /// known; the server's own word while nothing is counted.
    QString text() const;
    /// From 0 to 1, of the file that is being fetched; nothing while none is.
    std::optional<double> share() const;

private:
    struct Sample
    {
        std::chrono::steady_clock::time_point time;
        qint64 completed;
    };

    /// Bytes a second over the last few seconds; nothing until that can be told.
    std::optional<double> rate() const;

    QString m_model;
    QString m_status;
    qint64 m_completed = 0;
    qint64 m_total = 0;
    std::deque<Sample> m_samples;
};

} // namespace varnel
