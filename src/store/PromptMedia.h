#pragma once

#include <QByteArray>
#include <QString>

namespace varnel {

/// An attachment that is sent along with a prompt.
struct PromptMedia
{
    /// The MIME type, for example "image/png".
    QString mime;
    QByteArray data;

    bool operator==(const PromptMedia&) const = default;
};

} // namespace varnel
