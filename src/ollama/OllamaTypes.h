#pragma once

#include "store/OllamaModel.h"

#include <QString>

#include <optional>

namespace varnel {

/// A model that an Ollama server holds in memory.
struct OllamaRunning
{
    QString name;
    std::optional<qint64> sizeVRAM; ///< bytes of accelerator memory

    bool operator==(const OllamaRunning&) const = default;
};

/// A piece of a streamed reply: text of the model's reasoning or of its answer, never of both.
struct ChatDelta
{
    enum class Kind { Thinking, Reply };

    Kind kind = Kind::Reply;
    QString text;

    bool operator==(const ChatDelta&) const = default;
};

} // namespace varnel
