#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace varnel {

/// A model of Ollama's public library that can be pulled.
struct OllamaLibraryHit
{
    /// The name to pull, with a size where the library offers several, for example "llama3.2:3b".
    QString name;
    /// One line about it; may be empty.
    QString summary;

    bool operator==(const OllamaLibraryHit&) const = default;
};

/// The models on a search page of the library, at most 24 and in the order of the page. A page that holds no
/// model in the markup we know gives none. Takes time linear in the length of the page, whatever it holds.
/// @param query what was searched for; the text behind its first ":" is the only size that is wanted.
std::vector<OllamaLibraryHit> parseLibraryPage(QStringView page, QStringView query);

} // namespace varnel
