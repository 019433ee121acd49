#pragma once

#include "base/Clock.h"
#include "base/Environment.h"
#include "base/SecretStore.h"
#include "providers/chat/ImageConverter.h"
#include "store/LibraryLocation.h"
#include "tunnel/TunnelController.h"
#include "websearch/PageNetwork.h"

#include <chrono>
#include <memory>
#include <optional>

namespace varnel {

class DiagnosticsLog;
class Preferences;

/// What the model works with; all of it outlives the model.
struct AppServices
{
    Preferences& preferences;
    const Clock& clock;
    /// Shared, because a keyring that hangs is left behind rather than waited for.
    std::shared_ptr<SecretStore> secrets;
    const DiagnosticsLog& log;
    Environment environment = processEnvironment;
    /// Where conversations and the library are; the system's place if none is given.
    std::optional<LibraryLocation> location = std::nullopt;
    TunnelController::Programs programs = {};
    /// What turns images into a form that a provider reads; null if nothing does.
    ImageConverter* images = nullptr;
    /// Where pages are read from; the public network if null.
    PageNetwork* pages = nullptr;
    /// How long an Ollama server may send nothing in a turn.
    std::chrono::milliseconds stallTime = std::chrono::seconds(600);
};

} // namespace varnel
