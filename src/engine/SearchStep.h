#pragma once

#include <QString>

namespace varnel {

/// A step of the web tools within a turn.
struct SearchStep
{
    enum class Kind { Search, Read };

    Kind kind = Kind::Search;
    /// The query, or the address.
    QString subject;

    bool operator==(const SearchStep&) const = default;
};

} // namespace varnel
