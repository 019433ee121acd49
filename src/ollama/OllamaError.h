#pragma once

#include "base/Error.h"

namespace varnel {

/// An Ollama server answered, and what it answered is a failure. A request that got no answer at all, or only
/// a part of one, is a TransportError instead.
class OllamaError : public Error
{
public:
    enum class Kind {
        Unreachable, ///< something else than Ollama answered
        Api,         ///< the server reported or produced a failure
        Interrupted, ///< the reply ended before the model was done
    };

    /// Its text begins "Ollama is not reachable. ", also when there is no detail to add.
    static OllamaError unreachable(const QString& detail);
    static OllamaError api(QString message);
    static OllamaError interrupted();
    /// The model was done and had said nothing.
    static OllamaError withoutReply();

    Kind kind() const noexcept { return m_kind; }

private:
    OllamaError(Kind kind, QString message)
        : Error(std::move(message))
        , m_kind(kind)
    {}

    Kind m_kind;
};

} // namespace varnel
