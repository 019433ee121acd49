#pragma once

#include <QString>

#include <optional>

namespace varnel {

/// A model installed on an Ollama server.
struct OllamaModel
{
    QString name;
    std::optional<qint64> size; ///< bytes on the server's disk
    /// As the server writes it, for example "14.8B".
    std::optional<QString> parameterSize;

    bool operator==(const OllamaModel&) const = default;
};

} // namespace varnel
