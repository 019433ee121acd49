#pragma once

#include <QString>

#include <optional>

namespace varnel {

/// Why a file cannot be read as INI text, in a few words such as "line 3 has an open quotation mark"; nothing
/// if it can, or if there is no file.
std::optional<QString> whyNotIni(const QString& file);

/// Makes an empty file that only the user can read, with its folder, unless it is there already. Throws Error
/// when that fails.
void createPrivateFile(const QString& file);

} // namespace varnel
