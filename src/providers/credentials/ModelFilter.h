#pragma once

#include "providers/RemoteProvider.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace varnel {

/// What a turn carries, which decides the models that may receive it.
enum class AttachmentKind {
    Everything,   ///< no restriction
    Images,       ///< images
    PdfDocuments, ///< PDF documents
};

/// An entry of the picker of models.
struct ModelOffer
{
    QString model;
    /// Nothing for a model of the Ollama server.
    std::optional<RemoteProvider> provider;
    bool chosen = false;

    bool operator==(const ModelOffer&) const = default;
};

/// Whether an Ollama model can be sent images, as far as its name tells.
bool ollamaModelReadsImages(const QString& model);

/// Whether a provider's model can be sent what a turn carries, as far as its name tells.
bool remoteModelReads(AttachmentKind kind, RemoteProvider provider, const QString& model);

/// The models that may receive a turn: the installed ones of the Ollama server, then the suggested ones of
/// the available providers.
std::vector<ModelOffer> modelsFor(AttachmentKind kind, const QStringList& installedModels,
                                  const std::vector<RemoteProvider>& available);

} // namespace varnel
