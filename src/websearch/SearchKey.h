#pragma once

#include "base/Environment.h"
#include "base/SecretStore.h"
#include "websearch/SearchPlan.h"

#include <QString>

#include <optional>

namespace varnel {

/// The key that a search service is used with, and where it was found.
struct SearchKey
{
    enum class Origin { Saved, Environment };

    /// Neither empty nor with white space around it, and fit for a header.
    QString value;
    Origin origin = Origin::Saved;
    /// The account or the variable that holds it.
    QString name;

    bool operator==(const SearchKey&) const = default;

    /// Whether it is the one that a sibling program of the same maker saved.
    bool isShared() const;
};

/// The saved key of a service, else the one in the environment; nothing if there is none. A key with a line
/// break or a NUL inside counts as none. Blocks as the store does; it never prompts.
std::optional<SearchKey> findSearchKey(SearchBackend backend, SecretStore& secrets,
                                       const Environment& environment);

} // namespace varnel
