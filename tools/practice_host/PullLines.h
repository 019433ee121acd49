#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace varnel::practice {

/// The lines of a pull's progress, one by one; nothing after the last.
/// @param install called when the pull succeeds, right before its last line.
std::function<std::optional<QByteArray>()> pullLines(const QString& model, std::function<void()> install);

} // namespace varnel::practice
