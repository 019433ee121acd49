// Conversations such as people have them, for the benchmarks.
#pragma once

#include "store/SessionList.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>

namespace varnel::bench {

inline constexpr std::array words{"the",        "model",
                                  "answers",    "with",
                                  "a",          "configuration",
                                  "file",       "that",
                                  "holds",      "every",
                                  "value",      "and",
                                  "returns",    "`std::vector`",
                                  "(see",       "below)",
                                  "because",    "memory",
                                  "größer",     "naïve",
                                  "\"quoted\"", "if",
                                  "const",      "path\\to",
                                  "number",     "of",
                                  "tokens",     "per",
                                  "second,",    "which",
                                  "is",         "why.",
                                  "日本語",     "🙂",
                                  "—",          "implements",
                                  "loops",      "over",
                                  "lines:",     "done."};

inline QString text(QRandomGenerator& random, int length)
{
    QString result;
    int column = 0;
    while (result.size() < length) {
        // Rare ones are rare: most of what is written is plain.
        const bool isRare = random.bounded(8) == 0;
        const QString word =
            QString::fromUtf8(words[std::size_t(random.bounded(isRare ? int(words.size()) : 12))]);
        result += word;
        column += int(word.size()) + 1;
        if (column > 72) {
            result += random.bounded(5) == 0 ? QStringLiteral("\n\n") : QStringLiteral("\n    ");
            column = 0;
        } else {
            result += u' ';
        }
    }
    return result;
}

inline ChatMessage message(QRandomGenerator& random, ChatRole role)
{
    const bool isReply = role == ChatRole::Assistant;
    return {.id = QUuid::createUuid(),
            .role = role,
            .content = text(random, isReply ? 200 + random.bounded(4000) : 20 + random.bounded(400)),
            .thinking = isReply && random.bounded(3) == 0 ? text(random, random.bounded(2000)) : QString(),
            .createdAt = *fromIso8601("2026-03-18T12:00:00Z"),
            .backend = isReply ? QStringLiteral("Ollama qwen2.5:14b") : QString(),
            .duration = isReply ? std::optional(random.generateDouble() * 60) : std::nullopt};
}

/// Conversations whose file is about this long, in as many conversations as are asked for.
inline SessionList conversations(double mebibytes, int count)
{
    QRandomGenerator random(20261121);
    // A pair of messages is some 3.1 kB in the file.
    const int pairs = std::max(1, int(mebibytes * 1024 * 1024 / 3100 / count));
    SessionList sessions;
    for (int i = 0; i < count; ++i) {
        ChatSession session;
        session.id = QUuid::createUuid();
        session.title = text(random, 30);
        session.model = QStringLiteral("qwen2.5:14b");
        session.keepAlive = QStringLiteral("5m");
        session.createdAt = session.updatedAt = *fromIso8601("2026-03-18T12:00:00Z");
        for (int pair = 0; pair < pairs; ++pair) {
            session.messages.push_back(message(random, ChatRole::User));
            session.messages.push_back(message(random, ChatRole::Assistant));
        }
        sessions.append(std::move(session));
    }
    return sessions;
}

} // namespace varnel::bench
